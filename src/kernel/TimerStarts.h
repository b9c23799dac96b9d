#pragma once

#include "kernel/MessageIds.h"
#include "kernel/SystemMessage.h"
#include "platform/base/Threads.h"

#include <map>
#include <mutex>

namespace Kernel
{

/**
    The number of the last start of each running timer. Every expiry carries the number of its start and is dropped when
    that is not the last one. Expiries may outlive the timers, so they share this object. Any thread.
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

    /** True for an expiry of a timer that has been stopped or started anew since. */
    static bool isStale(const SystemMessage& message)
    {
        if (message.id != MSG_SYS_TIMER)
            return false;
        const auto* starts = payloadAs<TimerStarts>(message.payload);
        return starts == nullptr || starts->of(message.arg1) != message.arg2;
    }

private:
    Platform::Mutex lock;
    std::map<int, juce::int32> running;
    juce::int32 last = none;
};

} // namespace Kernel
