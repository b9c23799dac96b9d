#pragma once

#include "bench/simulation/SimulatedUnit.h"

#include <span>
#include <string>
#include <vector>

namespace Simulation
{

/** What has been since the unit was at rest before. */
struct Since
{
    Bench::Place begin;
    bool hadFaults = false; ///< so that the engine may have waited for what did not come
};

/** Something that always holds. */
struct Promise
{
    const char* name;
    /** Empty while it is kept, else what is wrong. */
    std::string (*check)(SimulatedUnit& unit, const Since& since);
    bool atRestOnly; ///< else after every step
};

const std::vector<Promise>& promises();

// By their subject, each in a file of promises/.
std::span<const Promise> barPromises();
std::span<const Promise> mutePromises();
std::span<const Promise> networkPromises();
std::span<const Promise> pagePromises();
std::span<const Promise> programPromises();
std::span<const Promise> remotePromises();
std::span<const Promise> soundPromises();
std::span<const Promise> sourcePromises();
std::span<const Promise> storePromises();

/** Nothing more will happen by itself. */
bool isAtRest(const SimulatedUnit& unit);

} // namespace Simulation
