// The clock is that of the recording, and its timers expire when they did.
#include "bench/replay/Follower.h"
#include "platform/base/Threads.h"
#include "platform/base/Time.h"

#include <set>

namespace Platform
{

using Replay::Follower;
using Replay::Scheduler;

Clock::time_point Clock::now()
{
    return Scheduler::get().now();
}

bool hasCome(Clock::time_point)
{
    return recorded(Step::timeCome, [] { return false; });
}

std::chrono::milliseconds timeOfDay()
{
    return Follower::get().timeOfDay();
}

void sleepFor(std::chrono::milliseconds duration)
{
    Follower::get().sleep(duration);
}

struct MultiTimer::Backend
{
    std::int64_t number = 0;
    std::map<int, int> intervals; ///< of those that run
};

MultiTimer::MultiTimer()
    : backend(std::make_unique<Backend>())
{
}

MultiTimer::~MultiTimer()
{
    Follower::get().reached.timers.erase(backend->number);
}

void MultiTimer::startTimer(int timerId, int intervalMs)
{
    const auto number = recorded(
        Step::timerStart, [] { return std::int64_t(); }, timerId, intervalMs);
    if (backend->number != 0 && backend->number != number)
        Follower::get().differ("another timer");
    backend->number = number;
    Follower::get().reached.timers[number] = this;
    backend->intervals[timerId] = std::max(1, intervalMs);
}

void MultiTimer::stopTimer(int timerId)
{
    backend->intervals.erase(timerId);
}

bool MultiTimer::isTimerRunning(int timerId) const
{
    return backend->intervals.contains(timerId);
}

int MultiTimer::getTimerInterval(int timerId) const
{
    const auto found = backend->intervals.find(timerId);
    return found == backend->intervals.end() ? 0 : found->second;
}

bool isMessageThread()
{
    return Scheduler::get().messageThread().isCurrent();
}

void callOnMessageThread(std::function<void()> call)
{
    const RecordedSection section(Step::callPosted);
    Follower::get().reached.calls.push_back(std::move(call));
}

} // namespace Platform
