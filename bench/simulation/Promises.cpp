#include "bench/simulation/Promises.h"

#include "EngineApi/Programs.h"
#include "EngineApi/SystemState.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace Simulation
{

namespace
{

constexpr std::array subjects { programPromises, pagePromises,  sourcePromises,   soundPromises, storePromises,
                                remotePromises,  mutePromises,  networkPromises,  barPromises,   requestPromises,
                                linkPromises,    timerPromises, powerOffPromises, poolPromises,  channelPromises };

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
    return !EngineApi::isSystemBusy() && !EngineApi::isPageChanging() && unit.programs.areIdle() &&
           std::ranges::none_of(taskGroups(), [](const auto* group) { return group->hasMessages(); });
}

} // namespace Simulation
