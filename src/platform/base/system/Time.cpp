#include "platform/base/Time.h"

#include "platform/record/Recorder.h"

#include <atomic>
#include <juce_events/juce_events.h>
#include <thread>

namespace Platform
{

Clock::time_point Clock::now()
{
    return std::chrono::steady_clock::now();
}

bool hasCome(Clock::time_point time)
{
    return recorded(Step::timeCome, [=] { return Clock::now() >= time; });
}

std::chrono::milliseconds timeOfDay()
{
    return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch());
}

void sleepFor(std::chrono::milliseconds duration)
{
    std::this_thread::sleep_for(duration);
}

struct MultiTimer::Backend : juce::MultiTimer
{
    explicit Backend(Platform::MultiTimer& timerOwner)
        : owner(timerOwner)
    {
    }
    void timerCallback(int timerId) override
    {
        recordStep(Step::timer, number, timerId);
        owner.timerCallback(timerId);
    }

    Platform::MultiTimer& owner;
    std::int64_t number = 0; ///< in a recording; of one that has been started
};

MultiTimer::MultiTimer()
    : backend(std::make_unique<Backend>(*this))
{
}

MultiTimer::~MultiTimer() = default;

void MultiTimer::startTimer(int timerId, int intervalMs)
{
    static std::atomic<std::int64_t> lastNumber { 0 };
    if (backend->number == 0)
        backend->number = ++lastNumber;
    recordStep(Step::timerStart, timerId, intervalMs, backend->number);
    backend->startTimer(timerId, intervalMs);
}

void MultiTimer::stopTimer(int timerId)
{
    backend->stopTimer(timerId);
}

bool MultiTimer::isTimerRunning(int timerId) const
{
    return backend->isTimerRunning(timerId);
}

int MultiTimer::getTimerInterval(int timerId) const
{
    return backend->getTimerInterval(timerId);
}

} // namespace Platform
