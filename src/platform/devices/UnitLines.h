#pragma once

namespace Platform
{

/** GPIO lines that the engine drives, by their unit numbers. */
enum class UnitLine : int {
    startOutput1 = 32856, ///< both are high while the unit is on
    startOutput2 = 32771,
    videoDecoderPower = 32772,
    remoteTransmit = 32768 ///< high while the unit writes to the wired remote's shared bus
};

} // namespace Platform
