#pragma once

#include "bench/simulation/World.h"

namespace Simulation
{

/** How one run of a world went. */
struct Outcome
{
    std::string broken; ///< the promise, and what is wrong; empty when all were kept
    std::uint64_t steps = 0;
    Clock::duration simulated { 0 };
};

/** Lets the world happen for so long. The unit has been started. */
Outcome live(SimulatedUnit& unit, const World& world, Clock::duration length);

} // namespace Simulation
