#pragma once

#include "dsp/akm/BootTable.h"

#include <juce_core/juce_core.h>

/** The files that the DSP is loaded with, in `dsp/` of the resource path. Any thread. */
namespace Dsp
{

juce::File imageFolder();

/** Empty, with the reason, when the file is not what the DSP takes. */
juce::MemoryBlock readImage(const Image& image, juce::String& problem);

/** What the build makes has the right form, no content, and ends with this: a DSP of this machine must never run it. */
inline constexpr std::string_view standInMark = "stand-in image.";
bool isStandIn(const juce::MemoryBlock& image);

/** Which images are stand-ins and where the maker's belong, as a part of a sentence; "" when none is. */
juce::String standInProblem();

} // namespace Dsp
