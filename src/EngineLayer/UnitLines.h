#pragma once

#include "platform/Lines.h"

namespace EngineLayer
{

/** GPIO lines that the engine drives, by their unit numbers. */
enum class UnitLine : int { startOutput1 = 32856, startOutput2 = 32771, videoDecoderPower = 32772 };

/** Makes the line an output and drives it high. A line that cannot be had is logged by the platform. */
inline void driveHigh(UnitLine line)
{
    constexpr int outputFunction = 32;
    Platform::GpioFunc::setPinFunc(static_cast<int>(line), outputFunction);
    Platform::GpioFunc::writePin(static_cast<int>(line), 1);
}

} // namespace EngineLayer
