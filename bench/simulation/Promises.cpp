#include "bench/simulation/Promises.h"

#include "EngineApi/Programs.h"
#include "EngineApi/SystemState.h"
#include "kernel/SystemEngine.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace Simulation
{

namespace
{

constexpr const char* groupNames[] { "GeneralHighGroup", "SystemGroup", "GeneralNormalGroup", "GeneralLowGroup" };

constexpr std::array subjects { programPromises, pagePromises, sourcePromises,  soundPromises, storePromises,
                                remotePromises,  mutePromises, networkPromises, barPromises };

} // namespace

const std::vector<Promise>& promises()
{
    static const std::vector<Promise> all = []
    {
        std::vector<Promise> each;
        for (const auto subject : subjects)
            std::ranges::copy(subject(), std::back_inserter(each));
        return each;
    }();
    return all;
}

bool isAtRest(const SimulatedUnit& unit)
{
    const auto& engine = *Kernel::SystemEngine::getInstance();
    return !EngineApi::isSystemBusy() && !EngineApi::isPageChanging() && unit.programs.areIdle() &&
           std::ranges::none_of(groupNames, [&](const char* name) { return engine.findGroup(name)->hasMessages(); });
}

} // namespace Simulation
