#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace BenchProgram
{

/** A page's picture, made of simple lines in one colour, fitted into a square. */
void drawPageIcon(juce::Graphics& g, int page, juce::Rectangle<float> area, juce::Colour colour);

/** The colour that a page is known by. */
juce::Colour pageColour(int page);

} // namespace BenchProgram
