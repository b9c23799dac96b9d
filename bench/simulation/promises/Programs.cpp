#include "EngineApi/Programs.h"
#include "bench/simulation/Promises.h"
#include "bench/text/Names.h"

namespace Simulation
{

namespace
{

std::string runsOnce(SimulatedUnit& unit, const Since&)
{
    const auto twice = unit.programs.runningTwice();
    return !twice ? "" : std::string(Pubhead::appTypeName(*twice)) + " runs twice";
}

std::string connectedAreKnown(SimulatedUnit& unit, const Since&)
{
    for (const int appType : Bench::allApps())
        if (const bool known = EngineApi::isAppConnected(appType); known != unit.programs.isConnected(appType))
            return std::string(Pubhead::appTypeName(appType)) +
                   (known ? " counts as connected" : " is connected, and does not count as such");
    return {};
}

constexpr Promise all[] {
    { "a program runs once", runsOnce, false },
    { "the engine knows which programs are connected", connectedAreKnown, true },
};

} // namespace

std::span<const Promise> programPromises()
{
    return all;
}

} // namespace Simulation
