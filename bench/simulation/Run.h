#pragma once

#include "bench/simulation/Plan.h"
#include "bench/simulation/World.h"

namespace Simulation
{

/** What is told of a run. */
struct Report
{
    bool whole = false;         ///< the whole journal is printed
    std::size_t lastEvents = 0; ///< so much of it is, when a promise breaks
    std::string trace {};       ///< the file for a trace of the last life; "" for none
};

struct Result
{
    std::string broken; ///< the promise, and what is wrong; empty when all were kept
    Plan plan;          ///< what was done, from the first life to the last
    int lives = 0;
    std::uint64_t steps = 0;                 ///< of the last life
    std::chrono::duration<double> inLife {}; ///< time of the last life
    std::chrono::duration<double> simulated {};

    /** Without what was wrong. */
    std::string promise() const { return broken.substr(0, broken.find(':')); }
};

/**
    One unit from its first start on. Each life, up to a cut of the power, is a process of its own, as the engine's state
    is the process's; the unit's folder is kept. A life that ends by a signal breaks the promise "it lives".
*/
Result run(const World& world, std::uint64_t seed, Clock::duration length, const Report& report);
Result run(const World& world, std::uint64_t seed, const Plan& plan, const Report& report);

/** What the build packs for the engine, and the worlds. */
std::string resources();

} // namespace Simulation
