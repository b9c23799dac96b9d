#pragma once

#include "kernel/MessageIds.h"
#include "kernel/SystemMessage.h"

#include <map>
#include <mutex>

namespace Kernel
{

/**
    The start of each timer that runs. Every expiry carries it along, as it may outlive the timers, and counts only for
    the start that it belongs to. Any thread.
*/
class TimerStarts : public juce::ReferenceCountedObject
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

    /** True for an expiry of a start that does not count any more. */
    static bool isStale(const SystemMessage& message)
    {
        if (message.id != MSG_SYS_TIMER)
            return false;
        const auto* starts = payloadAs<TimerStarts>(message.payload);
        return starts == nullptr || starts->of(message.arg1) != message.arg2;
    }

private:
    mutable std::mutex lock;
    std::map<int, juce::int32> running;
    juce::int32 last = none;
};

} // namespace Kernel
