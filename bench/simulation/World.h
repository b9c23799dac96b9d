#pragma once

#include "bench/simulation/SimulatedUnit.h"

#include <istream>

namespace Simulation
{

/** Something that happens in a world, one of the table in Actions.cpp. */
struct Action
{
    const char* name;
    /** What it did, for the journal. */
    std::string (*run)(SimulatedUnit& unit, Chance& chance);
    bool isFault; ///< the engine may then have to wait for what does not come
};
const Action* findAction(const std::string& name);
/** Ends every fault that an action has begun. */
void endFaults(SimulatedUnit& unit);

/** What happens, and how often: a text of lines, each `NAME NUMBERS` or `WEIGHT ACTION`. */
struct World
{
    std::string name;
    std::chrono::milliseconds shortestPause { 0 }, longestPause { 1000 };
    int actionsToRest = 30; ///< then everything is put right and comes to rest
    ProgramHabits habits;
    std::vector<std::pair<int, const Action*>> actions; ///< with their weights

    /** Empty on success, else what is wrong with it. */
    std::string read(std::istream& text);
    const Action& choose(Chance& chance) const;
};

} // namespace Simulation
