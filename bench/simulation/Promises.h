#pragma once

#include "bench/simulation/SimulatedUnit.h"

#include <span>
#include <string>
#include <vector>

namespace Simulation
{

/** At rest nothing has happened by itself for so long. */
constexpr std::chrono::seconds quietTime { 1 };

/** What has been since the unit was at rest before. */
struct Since
{
    Bench::Place begin;
    std::optional<Clock::time_point> powerOffAt {}; ///< when the microcontroller has asked for it
};

/** Something that always holds. */
struct Promise
{
    const char* name;
    /** Empty while it is kept, else what is wrong. */
    std::string (*check)(SimulatedUnit& unit, const Since& since);
    bool atRestOnly; ///< else after every step
    /** Before the unit begins, for what has to be seen while it happens; null for nothing. */
    void (*watch)(SimulatedUnit& unit) = nullptr;
};

const std::vector<Promise>& promises();

/** What a promise keeps in mind from one step to the next; one for each kind, as there is one unit for a process. */
template <typename Kind>
Kind& only()
{
    static Kind instance;
    return instance;
}
/** The `watch` of a promise whose kind has one. */
template <typename Kind>
void watchWith(SimulatedUnit& unit)
{
    only<Kind>().watch(unit);
}

// By their subject, each in a file of promises/.
std::span<const Promise> barPromises();
std::span<const Promise> channelPromises();
std::span<const Promise> linkPromises();
std::span<const Promise> mutePromises();
std::span<const Promise> networkPromises();
std::span<const Promise> pagePromises();
std::span<const Promise> poolPromises();
std::span<const Promise> powerOffPromises();
std::span<const Promise> programPromises();
std::span<const Promise> remotePromises();
std::span<const Promise> requestPromises();
std::span<const Promise> soundPromises();
std::span<const Promise> sourcePromises();
std::span<const Promise> storePromises();
std::span<const Promise> timerPromises();

/** Nothing more will happen by itself. */
bool isAtRest(const SimulatedUnit& unit);

} // namespace Simulation
