#pragma once

#include "bench/simulation/SimulatedUnit.h"

namespace Simulation
{

/**
    Does to the unit what a line of the console says, as far as it can be done in simulated time. Empty on success,
    else what is wrong with the line. What cannot be done at the moment, such as ending a program that does not run, is
    nothing.
*/
std::string carryOut(SimulatedUnit& unit, const std::string& line);

/** Nothing of the unit lives on; done by whoever runs it. */
constexpr const char* powerCut = "power cut";
constexpr const char* powerOff = "mcu power-off";

} // namespace Simulation
