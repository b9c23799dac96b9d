#include "EngineLayer/channel/RemoteSessionManager.h"
#include "bench/simulation/Allocations.h"
#include "bench/simulation/Promises.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Pool.h"

#include <algorithm>
#include <map>
#include <numeric>

namespace Simulation
{

namespace
{

/** Nobody is to be so late that more wait for him; it is what the channel takes for busy. */
constexpr std::size_t longestQueue = 256;

std::string longQueue;

std::string queuesAreShort(SimulatedUnit&, const Since&)
{
    return longQueue;
}

void watchQueues(SimulatedUnit& unit)
{
    unit.lookout.messages.add(
        [](Kernel::SystemTask& component, const Kernel::SystemMessage& message)
        {
            const auto waiting = Kernel::SystemEngine::getInstance()->countQueued(message.receiver);
            if (waiting > longestQueue && longQueue.empty())
                longQueue = std::to_string(waiting) + " messages wait for " + component.getGroupName().toStdString();
        });
}

/** What each pool has to spare, and what is known to be on loan at rest. */
std::vector<Platform::PoolSize> poolSizes()
{
    auto pools = Platform::ListedPool::all();
    for (auto& pool : pools)
        if (const std::string_view name = pool.name; name == "messages") // the threads have some of these at hand
            pool.spare = static_cast<std::size_t>(Kernel::MessagePool::size());
        else if (name == "channel messages")
            pool.spare += EngineLayer::RemoteSessionManager::getInstance()->getCounts().waiting;
    return pools;
}

/** An object that is taken at work is there before or made, and comes back: no pool has fewer than at an earlier rest. */
std::string poolsAreWhole(SimulatedUnit&, const Since&)
{
    static std::map<std::string, std::size_t> most;
    for (const auto& [name, spare, capacity] : poolSizes())
    {
        const auto before = std::min(most[name], capacity);
        if (spare < before)
            return "of the " + std::string(name) + " " + std::to_string(before) + " were there, now " +
                   std::to_string(spare);
        most[name] = spare;
    }
    return {};
}

/** Of so many rests the memory's course is looked at: the median of how it changes from any of them to any later one. */
constexpr std::size_t manyRests = 60;
constexpr std::size_t firstRests = 30; ///< pictures are kept at hand, queues grow to the size that they need
constexpr double mostBlocks = 2.0;     ///< a rest: more pictures and texts come to be kept as more is seen of the unit
constexpr double mostBytes = 512.0;

double slope(std::span<const std::int64_t> values)
{
    std::vector<double> slopes;
    for (std::size_t i = 0; i < values.size(); ++i)
        for (std::size_t j = i + 1; j < values.size(); ++j)
            slopes.push_back(static_cast<double>(values[j] - values[i]) / static_cast<double>(j - i));
    const auto middle = slopes.begin() + static_cast<std::ptrdiff_t>(slopes.size() / 2);
    std::ranges::nth_element(slopes, middle);
    return *middle;
}

std::string memoryIsLevel(SimulatedUnit&, const Since&)
{
    static std::vector<std::int64_t> bytes, blocks;
    const auto now = engineAllocations();
    bytes.push_back(now.bytes);
    blocks.push_back(now.blocks);
    if (bytes.size() < firstRests + manyRests)
        return {};
    const auto rise = [](const auto& values) { return slope(std::span(values).last(manyRests)); };
    if (rise(blocks) > mostBlocks || rise(bytes) > mostBytes)
        return "from rest to rest " + std::to_string(rise(blocks)) + " blocks and " + std::to_string(rise(bytes)) +
               " bytes more";
    return {};
}

constexpr Promise all[] {
    { "no queue becomes long", queuesAreShort, false, watchQueues },
    { "what is taken from a pool comes back", poolsAreWhole, true },
    { "memory does not grow", memoryIsLevel, true },
};

} // namespace

std::span<const Promise> poolPromises()
{
    return all;
}

} // namespace Simulation
