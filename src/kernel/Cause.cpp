#include "kernel/Cause.h"

namespace Kernel
{

namespace
{

constexpr std::array kindNames { "none", "bytes", "key", "source switch", "network command" };
constexpr std::array stageNames { "order", "page", "sound", "answer" };
static_assert(kindNames.size() == Cause::NUM_OF_KINDS && stageNames.size() == Cause::NUM_OF_STAGES);

struct Times
{
    Platform::Histogram histogram;
    std::atomic<Platform::Clock::time_point> last {}; ///< the cause that got here last
};
std::array<std::array<Times, Cause::NUM_OF_STAGES>, Cause::NUM_OF_KINDS> allTimes;

} // namespace

thread_local constinit Cause Cause::own;

const char* Cause::kindName(Kind kind)
{
    return kindNames[kind];
}

const char* Cause::stageName(Stage stage)
{
    return stageNames[stage];
}

void Cause::reached(Stage stage) const
{
    if (kind <= bytes)
        return;
    auto& times = allTimes[kind][stage];
    if (times.last.exchange(begin, std::memory_order_relaxed) == begin)
        return;
    times.histogram.add(std::chrono::duration_cast<Platform::Histogram::Duration>(Platform::Clock::now() - begin));
}

const Platform::Histogram& Cause::times(Kind kind, Stage stage)
{
    return allTimes[kind][stage].histogram;
}

} // namespace Kernel
