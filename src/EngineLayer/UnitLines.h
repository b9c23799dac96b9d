#pragma once

#include "platform/Lines.h"

namespace EngineLayer
{

/** GPIO lines that the engine drives, by their unit numbers. */
enum class UnitLine : int {
    startOutput1 = 32856, ///< both are high while the unit is on
    startOutput2 = 32771,
    videoDecoderPower = 32772,
    remoteTransmit = 32768 ///< high while the unit writes to the wired remote's shared bus
};

/** Makes the line an output and drives it. A line that cannot be had is logged by the platform. */
inline void drive(UnitLine line, bool high)
{
    constexpr int outputFunction = 32;
    Platform::GpioFunc::setPinFunc(static_cast<int>(line), outputFunction);
    Platform::GpioFunc::writePin(static_cast<int>(line), high ? 1 : 0);
}

/** Both lines that are high while the unit is on; they supply the Bluetooth module and the USB hub, too. */
inline void driveOutputs(bool on)
{
    drive(UnitLine::startOutput1, on);
    drive(UnitLine::startOutput2, on);
}

inline void driveHigh(UnitLine line)
{
    drive(line, true);
}

} // namespace EngineLayer
