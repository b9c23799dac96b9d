#pragma once

#include "bench/program/PageContent.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace BenchProgram
{

/** A page's picture, made of simple lines in one colour, fitted into a square. */
void drawPageIcon(juce::Graphics& g, int page, juce::Rectangle<float> area, juce::Colour colour);

/** The same for a key of the keypad. */
void drawKeyIcon(juce::Graphics& g, KeypadKey key, juce::Rectangle<float> area, juce::Colour colour);

/** The colour that a page is known by. */
juce::Colour pageColour(int page);

} // namespace BenchProgram
