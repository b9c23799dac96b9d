#pragma once

#include "bench/simulation/SimulatedUnit.h"

#include <istream>

namespace Simulation
{

/** Something that happens in a world, one of the table in Actions.cpp. */
struct Action
{
    const char* name;
    /** What is done, as a line for `carryOut`; empty for nothing. */
    std::string (*choose)(const SimulatedUnit& unit, Chance& chance);
};
const Action* findAction(const std::string& name);
/** The lines that end every fault. */
std::vector<std::string> endsOfFaults(SimulatedUnit& unit);

/** What happens, and how often: a text of lines, each `NAME NUMBERS` or `WEIGHT ACTION`. */
struct World
{
    std::string name;
    std::chrono::milliseconds shortestPause { 0 }, longestPause { 1000 };
    int actionsToRest = 30; ///< then everything is put right and comes to rest
    ProgramHabits habits;
    Scheduler::Load load;
    std::vector<std::pair<int, const Action*>> actions; ///< with their weights

    /** Empty on success, else what is wrong with it. */
    std::string read(std::istream& text);
    const Action& choose(Chance& chance) const;
};

} // namespace Simulation
