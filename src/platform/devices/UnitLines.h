#pragma once

#include "platform/devices/Lines.h"

#include <array>
#include <string>
#include <vector>

namespace Platform
{

/** GPIO lines that the engine drives, by their unit numbers. All are outputs, and active when high. */
enum UnitLine : int {
    remoteTransmitLine = 32768,
    output2Line = 32771,
    videoDecoderLine = 32772,
    dspStartLine = 32778,
    output1Line = 32856
};

struct UnitLineInfo
{
    UnitLine line;
    const char* use; ///< what hangs on it, and when it is high
};

/** Every one of them. */
inline constexpr std::array<UnitLineInfo, 5> unitLines { {
    { remoteTransmitLine, "transmitter of the wired remote's bus, high while the unit writes to it" },
    { output2Line, "output 2, high while the unit is on" },
    { videoDecoderLine, "power of the video decoder, high from the start on" },
    { dspStartLine, "start of the DSP, high from its boot on" },
    { output1Line, "output 1, high while the unit is on" },
} };

/**
    What does not fit together in `gpio_lines`, a sentence each: a line of the unit that it lacks, unless the chip is
    simulated, and a line that nothing drives.
*/
std::vector<std::string> lineProblems();

/**
    Makes the line an output and drives it. A line that cannot be had is logged. It may take a second: only for the
    thread of a device.
*/
inline void drive(UnitLine line, bool high)
{
    constexpr int outputFunction = 32;
    GpioFunc::setPinFunc(line, outputFunction);
    GpioFunc::writePin(line, high ? 1 : 0);
}

} // namespace Platform
