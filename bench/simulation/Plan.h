#pragma once

#include <chrono>
#include <istream>
#include <string>
#include <vector>

namespace Simulation
{

/** Something that is done to the unit, as a line of the console. */
struct Deed
{
    std::chrono::milliseconds pause { 0 }; ///< before it
    int steps = 0;                         ///< of the scheduler, after the pause, in the middle of something
    std::string line;                      ///< none for a pause alone

    bool operator==(const Deed&) const = default;
};

/** The line of a deed that lets the unit come to rest, which takes the pause or longer. */
constexpr const char* rest = "rest";

using Plan = std::vector<Deed>;

/** As a scenario that the console plays as well. What the console cannot do, steps, is a remark to it. */
std::string scenarioOf(const Plan& plan);
/** The other way round. Empty on success, else what is wrong with it. */
std::string readScenario(std::istream& text, Plan& plan);

} // namespace Simulation
