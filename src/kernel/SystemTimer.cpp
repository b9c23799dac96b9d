#include "kernel/SystemTimer.h"

#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"

namespace Kernel
{

void SystemTimer::startTimer(int timerId, int intervalMs)
{
    // Stopped first: the framework reads the interval of a running timer on its own thread, and what runs out until
    // then belongs to the start before.
    stopTimer(timerId);
    {
        const juce::ScopedLock guard(startsLock);
        ++starts[timerId];
    }
    MultiTimer::startTimer(timerId, intervalMs);
}

bool SystemTimer::isCurrent(int timerId, juce::int32 start) const
{
    return isTimerRunning(timerId) && start == startOf(timerId);
}

juce::int32 SystemTimer::startOf(int timerId) const
{
    const juce::ScopedLock guard(startsLock);
    const auto found = starts.find(timerId);
    return found == starts.end() ? 0 : found->second;
}

void SystemTimer::timerCallback(int timerId)
{
    postHandlerMessage(owner, timerPage, MSG_SYS_TIMER, timerId, startOf(timerId));
}

} // namespace Kernel
