#pragma once

/** What the microcontroller reports of the boat's supply. */
namespace ApplicationLayer
{

struct SupplyVoltage
{
    static constexpr double lowVolts = 10.5;

    /** Low below the limit, not low above it; at the limit nothing changes. */
    static constexpr bool isLow(bool wasLow, double volts) { return wasLow ? volts <= lowVolts : volts < lowVolts; }
};

} // namespace ApplicationLayer
