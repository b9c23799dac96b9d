#pragma once

#include "bench/program/PageLayout.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace BenchProgram
{

/** What every page shows beside its content. */
struct PageFrame
{
    int page;
    bool dark; ///< the colours of the night
    juce::String clock;
    juce::String ids;             ///< in small, of page and program; for who looks for a fault
    juce::Rectangle<int> pressed; ///< under the finger
};

/** Paints one page once. */
class PagePainter
{
public:
    PagePainter(juce::Graphics& graphics, const PageFrame& frameToPaint, const PageLayout& whereItIs,
                const PageContent& whatItShows);

    void paint();

private:
    using Area = juce::Rectangle<int>;

    void paintFoot();
    void paintIds();
    void paintTexts();
    void paintTiles();
    void paintKeypad();
    void paintRows();
    void paintLevels();
    void paintCurve();
    void paintLevel(const Level& level, Area area);
    /** Of a level: what is between its value and its name; the bar's track; the height of a position on that. */
    static Area withoutTexts(Area level);
    static juce::Rectangle<float> trackOf(Area level);
    static float heightOn(juce::Rectangle<float> track, const Level& level, float position);
    void paintSign(Area area, bool plus);
    void paintPicture();
    void paintButtons();
    void paintPlate(Area area, float corner, float border);

    void fillTile(Area area);
    void outlineTile(Area area);
    void paintButton(Area area, const juce::String& label, bool lit);
    void write(const juce::String& text, Area area, juce::Justification place, int lines = 1);
    /** Writes both in one line, the second at its right end in the other colour; it takes at most half of the line. */
    void writePair(const juce::String& text, juce::Font textFont, juce::Colour textColour, const juce::String& end,
                   juce::Font endFont, juce::Colour endColour, Area area);
    juce::Colour ink(float strength) const;
    juce::Colour card() const;

    juce::Graphics& g;
    const PageFrame& frame;
    const PageLayout& layout;
    const PageContent& content;
    const juce::Colour colour; ///< of the page
    const juce::Colour accent; ///< the same, to be read on the background
    const juce::Colour lit;    ///< the same, below white letters
};

} // namespace BenchProgram
