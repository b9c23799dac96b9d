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
    using Fault = Bench::ActiveFault;
    if (std::ranges::equal(faults, faultsToShow, {}, &Fault::what, &Fault::what))
        return;
    // A chip stays the same, to be clicked, while the count in its words goes down.
    if (!std::ranges::equal(faults, faultsToShow, {}, &Fault::cure, &Fault::cure))
    {
        chips.clear();
        for (const auto& fault : faultsToShow)
        {
            chips.push_back(std::make_unique<LineButton>(desk, "", ButtonLines { fault.cure }));
            chips.back()->setTone(LineButton::Tone::alarm);
            addAndMakeVisible(*chips.back());
        }
    }
    faults = faultsToShow;
    for (std::size_t i = 0; i < faults.size(); ++i)
    {
        const juce::String what(faults[i].what);
        chips[i]->setLabel(what + "   x");
        chips[i]->setTitle("End: " + what);
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
