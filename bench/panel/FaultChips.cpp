#include "bench/panel/FaultChips.h"

#include <algorithm>

namespace BenchPanel
{

FaultChips::FaultChips(Desk& deskToUse)
    : juce::Component("Active faults")
    , desk(deskToUse)
{
}

void FaultChips::show(const std::vector<Bench::ActiveFault>& faultsToShow)
{
    const auto isSame = [](const Bench::ActiveFault& one, const Bench::ActiveFault& other)
    { return one.what == other.what && one.cure == other.cure; };
    if (std::ranges::equal(faults, faultsToShow, isSame))
        return;
    faults = faultsToShow;
    chips.clear();
    for (const auto& [what, cure] : faults)
    {
        auto& chip =
            *chips.emplace_back(std::make_unique<LineButton>(desk, juce::String(what) + "   x", ButtonLines { cure }));
        chip.setTitle("End: " + juce::String(what));
        chip.setTone(LineButton::Tone::alarm);
        addAndMakeVisible(chip);
    }
    resized();
}

void FaultChips::resized()
{
    constexpr int gap = Look::grid, around = 4 * Look::grid;
    const auto font = Look::font(Look::bodySize);
    auto left = getLocalBounds();
    for (auto& chip : chips)
    {
        // What does not fit is narrowed, so that every fault can be taken away.
        const auto others = static_cast<int>(&chips.back() - &chip);
        constexpr int least = 48;
        const auto most = left.getWidth() - others * (least + gap);
        chip->setBounds(
            left.removeFromLeft(std::clamp(font.getStringWidth(chip->getName()) + around, 0, std::max(most, 0))));
        left.removeFromLeft(gap);
    }
}

} // namespace BenchPanel
