#pragma once

#include "bench/panel/LineButton.h"

namespace BenchPanel
{

/** Words that say a line to the console as a button does, and do not look like one until the mouse or the keys are there. */
class QuietButton : public LineButton
{
public:
    using LineButton::LineButton;

protected:
    void paintWords(juce::Graphics& g) override = 0;

private:
    void paint(juce::Graphics& g) override
    {
        const auto& colours = Look::of(*this).colours;
        const bool isFocused = hasKeyboardFocus(false);
        if (isFocused || isMouseOver())
            Look::plate(g, getLocalBounds(), colours.button, isFocused ? colours.accent : colours.buttonEdge);
        paintWords(g);
    }
};

} // namespace BenchPanel
