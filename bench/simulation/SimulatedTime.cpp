#include "bench/simulation/Scheduler.h"
#include "platform/base/Threads.h"
#include "platform/base/Time.h"

namespace Platform
{

using Simulation::Scheduler;

Clock::time_point Clock::now()
{
    return Scheduler::get().now();
}

bool hasCome(Clock::time_point time)
{
    return Clock::now() >= time;
}

std::chrono::milliseconds timeOfDay()
{
    // Any day will do, but always the same.
    constexpr std::chrono::milliseconds firstDay = std::chrono::hours(24) * 20'000;
    return firstDay + std::chrono::floor<std::chrono::milliseconds>(Clock::now().time_since_epoch());
}

void sleepFor(std::chrono::milliseconds duration)
{
    auto& scheduler = Scheduler::get();
    const auto end = scheduler.now() + duration;
    while (scheduler.now() < end)
        scheduler.wait(end);
}

struct MultiTimer::Backend
{
};

MultiTimer::MultiTimer() = default;

MultiTimer::~MultiTimer()
{
    Scheduler::get().stopTimers(*this);
}

void MultiTimer::startTimer(int timerId, int intervalMs)
{
    Scheduler::get().startTimer(*this, timerId, intervalMs);
}

void MultiTimer::stopTimer(int timerId)
{
    Scheduler::get().stopTimer(*this, timerId);
}

bool MultiTimer::isTimerRunning(int timerId) const
{
    return Scheduler::get().timerInterval(*this, timerId) != 0;
}

int MultiTimer::getTimerInterval(int timerId) const
{
    return Scheduler::get().timerInterval(*this, timerId);
}

bool isMessageThread()
{
    return Scheduler::get().messageThread().isCurrent();
}

void callOnMessageThread(std::function<void()> call)
{
    Scheduler::get().messageThread().post(std::move(call));
}

} // namespace Platform
