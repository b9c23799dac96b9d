#pragma once

#include "kernel/MessageIds.h"
#include "kernel/SystemMessage.h"
#include "platform/base/Threads.h"
#include "platform/base/Time.h"

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

    void begin(int timerId, int intervalMs)
    {
        const std::lock_guard guard(lock);
        running[timerId] = { ++last, Platform::Clock::now() + std::chrono::milliseconds(intervalMs) / 2 };
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
        return found == running.end() ? none : found->second.number;
    }
    /** Whether what expires now is the start before this one. */
    bool isTooEarly(int timerId) const
    {
        const std::lock_guard guard(lock);
        const auto found = running.find(timerId);
        return found != running.end() && !Platform::hasCome(found->second.earliest);
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
    struct Start
    {
        juce::int32 number;
        Platform::Clock::time_point earliest;
    };
    std::map<int, Start> running;
    juce::int32 last = none;
};

} // namespace Kernel
