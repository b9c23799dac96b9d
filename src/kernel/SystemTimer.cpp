#include "kernel/SystemTimer.h"

#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"

namespace Kernel
{

SystemTimer::SystemTimer(ComponentId timerOwner, juce::int32 handlerPage)
    : owner(timerOwner)
    , timerPage(handlerPage)
    , starts(new TimerStarts)
{
}

SystemTimer::~SystemTimer() = default;

void SystemTimer::startTimer(int timerId, int intervalMs)
{
    // Stopped first: the framework reads the interval of a running timer on its own thread. What ran out until then
    // belongs to the start before, also when its callback comes only now.
    MultiTimer::stopTimer(timerId);
    starts->begin(timerId, intervalMs);
    MultiTimer::startTimer(timerId, intervalMs);
}

void SystemTimer::stopTimer(int timerId)
{
    starts->end(timerId);
    MultiTimer::stopTimer(timerId);
}

void SystemTimer::timerCallback(int timerId)
{
    if (!starts->isTooEarly(timerId))
        expire(timerId);
}

void SystemTimer::expire(int timerId)
{
    if (const auto start = starts->of(timerId); start != TimerStarts::none)
        postHandlerMessage(owner, timerPage, MSG_SYS_TIMER, timerId, start, starts.get());
}

} // namespace Kernel
