#pragma once

#include "bench/dsp/DspMemory.h"

#include <string>

namespace Bench
{

/**
    Draws what the words in the DSP's memory do to sound from 20 Hz to 20 kHz, as a PNG of 1500 x 1240 points: above
    each equaliser beside the user's nominal curve, below each output with all gains. Needs no display; `fontFolder`
    holds DejaVuSans.ttf and DejaVuSans-Bold.ttf. Empty on success, else what failed.
*/
std::string plotDsp(const DspMemory& memory, const std::string& fontFolder, const std::string& file);

} // namespace Bench
