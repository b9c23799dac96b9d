#pragma once

#include "bench/simulation/Plan.h"
#include "bench/simulation/World.h"

namespace Simulation
{

/** How one life of a unit went: from its start to its end, or until its power was cut. */
struct Outcome
{
    std::string broken; ///< the promise, and what is wrong; empty when all were kept
    bool cut = false;   ///< its power was cut before the time was over
    std::uint64_t steps = 0;
    Clock::duration simulated { 0 };
};

/** Told of each deed before it is done. */
using Witness = std::function<void(const Deed& deed)>;

/** Lets the world happen for so long. The unit has been started. */
Outcome live(SimulatedUnit& unit, const World& world, Chance& chance, Clock::duration length, const Witness& witness);
/** Does what the plan says, up to the first cut of the power, and lets the unit come to rest if there is none. */
Outcome live(SimulatedUnit& unit, const Plan& plan, const Witness& witness);

} // namespace Simulation
