#include "bench/panel/FaultChips.h"

#include "bench/panel/Row.h"

#include <algorithm>

namespace BenchPanel
{

namespace
{

/** Of the link, whose area it is, for the most part: then the words leave that out. */
juce::String wordsOf(const Bench::ActiveFault& fault)
{
    return juce::String(fault.what).replaceFirstOccurrenceOf("mcu ", "");
}

} // namespace

/** A fault, and an x that is always seen. */
class FaultChips::Chip : public LineButton
{
public:
    using LineButton::LineButton;

private:
    void paintWords(juce::Graphics& g) override
    {
        constexpr int crossWidth = 2 * Look::grid;
        constexpr float narrowest = 0.7f;
        auto area = getLocalBounds().reduced(Look::grid, 0);
        g.setColour(Look::of(*this).colours.ink);
        g.setFont(Look::font(Look::smallSize));
        g.drawText("x", area.removeFromRight(crossWidth), juce::Justification::centredRight, false);
        g.drawFittedText(getName(), area.withTrimmedRight(Look::grid), juce::Justification::centredLeft, 1, narrowest);
    }
};

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
            chips.push_back(std::make_unique<Chip>(desk, "", ButtonLines { fault.cure }));
            chips.back()->setTone(LineButton::Tone::alarm);
            addAndMakeVisible(*chips.back());
        }
    }
    faults = faultsToShow;
    for (std::size_t i = 0; i < faults.size(); ++i)
    {
        chips[i]->setLabel(wordsOf(faults[i]));
        chips[i]->setTitle("End: " + juce::String(faults[i].what));
    }
    resized();
}

void FaultChips::resized()
{
    const auto font = Look::font(Look::smallSize);
    layOutRow(chips, font, getLocalBounds().withWidth(std::min(getWidth(), widthOfRow(chips, font))));
}

} // namespace BenchPanel
