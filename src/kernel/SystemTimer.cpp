#include "kernel/SystemTimer.h"

#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"

namespace Kernel
{

/** The start of each timer that runs. Every expiry carries it along, as it may outlive the timers. */
class SystemTimer::Starts : public juce::ReferenceCountedObject
{
public:
    static constexpr juce::int32 none = 0;

    void begin(int timerId)
    {
        const std::lock_guard guard(lock);
        running[timerId] = ++last;
    }
    void end(int timerId)
    {
        const std::lock_guard guard(lock);
        running.erase(timerId);
    }
    juce::int32 of(int timerId) const
    {
        const std::lock_guard guard(lock);
        const auto found = running.find(timerId);
        return found == running.end() ? none : found->second;
    }

private:
    mutable std::mutex lock;
    std::map<int, juce::int32> running;
    juce::int32 last = none;
};

SystemTimer::SystemTimer(ComponentId timerOwner, juce::int32 handlerPage)
    : owner(timerOwner)
    , timerPage(handlerPage)
    , starts(new Starts)
{
}

SystemTimer::~SystemTimer() = default;

void SystemTimer::startTimer(int timerId, int intervalMs)
{
    // Stopped first: the framework reads the interval of a running timer on its own thread, and what runs out until
    // then belongs to the start before.
    MultiTimer::stopTimer(timerId);
    starts->begin(timerId);
    MultiTimer::startTimer(timerId, intervalMs);
}

void SystemTimer::stopTimer(int timerId)
{
    starts->end(timerId);
    MultiTimer::stopTimer(timerId);
}

void SystemTimer::timerCallback(int timerId)
{
    if (const auto start = starts->of(timerId); start != Starts::none)
        postHandlerMessage(owner, timerPage, MSG_SYS_TIMER, timerId, start, starts.get());
}

bool SystemTimer::isStale(const SystemMessage& message)
{
    if (message.id != MSG_SYS_TIMER)
        return false;
    const auto* starts = payloadAs<Starts>(message.payload);
    return starts == nullptr || starts->of(message.arg1) != message.arg2;
}

} // namespace Kernel
