#pragma once

#include "platform/devices/Lines.h"

namespace Platform
{

/** GPIO lines that the engine drives, by their unit numbers. */
enum UnitLine : int {
    remoteTransmitLine = 32768, ///< high while the unit writes to the wired remote's shared bus
    output2Line = 32771,        ///< both outputs are high while the unit is on
    videoDecoderLine = 32772,
    dspStartLine = 32778,
    output1Line = 32856
};

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
