#include "bench/panel/Area.h"

namespace BenchPanel
{

Area::Area(Desk& deskToUse, const juce::String& headingToShow)
    : juce::Component(headingToShow)
    , desk(deskToUse)
{
    setFocusContainerType(FocusContainerType::none);
}

juce::Rectangle<int> Area::content() const
{
    return getLocalBounds().withTrimmedTop(getName().isEmpty() ? 0 : Look::headingHeight);
}

void Area::paint(juce::Graphics& g)
{
    const auto& look = Look::of(*this);
    g.setColour(look.colours.dim);
    g.setFont(Look::font(Look::smallSize, true));
    g.drawText(getName().toUpperCase(), getLocalBounds().removeFromTop(Look::headingHeight),
               juce::Justification::centredLeft);
}

} // namespace BenchPanel
