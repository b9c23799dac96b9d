#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace BenchProgram
{

/** What the camera at the stern sees by day or by night, with the guide lines of the helm. */
void drawCameraScene(juce::Graphics& g, juce::Rectangle<float> area, bool night);

} // namespace BenchProgram
