#include "bench/simulation/Promises.h"
#include "bench/text/Names.h"

namespace Simulation
{

namespace
{

std::string runsOnce(SimulatedUnit& unit, const Since&)
{
    const auto twice = unit.programs.runningTwice();
    return twice.empty() ? "" : std::string(Pubhead::appTypeName(twice.front())) + " runs twice";
}

constexpr Promise all[] {
    { "a program runs once", runsOnce, false },
};

} // namespace

std::span<const Promise> programPromises()
{
    return all;
}

} // namespace Simulation
