#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace BenchPanel
{

/**
    Colours, sizes and types of the panel, by day and by night. Everything lies on a grid of 4 points. Message thread.
*/
class Look : public juce::LookAndFeel_V4
{
public:
    struct Palette
    {
        juce::Colour window, bar, plate, edge, well, button, buttonEdge, ink, dim, accent, good, warning, bad, lit,
            alarm;
    };

    explicit Look(const Palette& paletteToUse);

    static const Palette day, night;
    /** The one that the component is drawn with. */
    static const Look& of(const juce::Component& component);

    const Palette colours;

    static constexpr int grid = 4;
    static constexpr int headingHeight = 20;
    static constexpr float corner = 6.0f;

    // The scale of type, in points of the panel.
    static constexpr float smallSize = 14.0f, bodySize = 16.0f, titleSize = 20.0f, largeSize = 24.0f;
    static juce::Font font(float size, bool bold = false);
    /** How many a text takes in this width; none for an empty one. */
    static int lineCount(const juce::Font& font, const juce::String& text, int width, int most);

    /** A plate with a thin edge: buttons, panes. */
    static void plate(juce::Graphics& g, juce::Rectangle<int> area, juce::Colour fill, juce::Colour edge);

    void drawTooltip(juce::Graphics& g, const juce::String& text, int width, int height) override;
    juce::Rectangle<int> getTooltipBounds(const juce::String& text, juce::Point<int> at,
                                          juce::Rectangle<int> parent) override;
    juce::Font getPopupMenuFont() override { return font(bodySize); }
};

} // namespace BenchPanel
