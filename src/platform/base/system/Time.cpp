#include "platform/base/Time.h"

#include <juce_events/juce_events.h>
#include <thread>

namespace Platform
{

Clock::time_point Clock::now()
{
    return std::chrono::steady_clock::now();
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
    void timerCallback(int timerId) override { owner.timerCallback(timerId); }

    Platform::MultiTimer& owner;
};

MultiTimer::MultiTimer()
    : backend(std::make_unique<Backend>(*this))
{
}

MultiTimer::~MultiTimer() = default;

void MultiTimer::startTimer(int timerId, int intervalMs)
{
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
