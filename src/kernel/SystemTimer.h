#pragma once

#include "kernel/ComponentIds.h"

#include <juce_events/juce_events.h>
#include <map>

namespace Kernel
{

/**
    Numbered timers of a component. Every expiry is posted to the owner as MSG_SYS_TIMER with the timer's id and the
   number of its start, so that it is handled on the owner's group thread. Timers repeat until they are stopped; times
   are in milliseconds. Starting and stopping is allowed from any thread.
*/
class SystemTimer : public juce::MultiTimer
{
public:
    /** With a page the expiries go to that page's handler inside the owner. */
    explicit SystemTimer(ComponentId timerOwner, juce::int32 handlerPage = -1)
        : owner(timerOwner)
        , timerPage(handlerPage)
    {
    }

    /** Starting one that runs begins its period anew. */
    void startTimer(int timerId, int intervalMs);
    /** Whether the expiry with this number of a start is the running timer's: not one that was on its way to the owner
     * when the timer was stopped or started anew. */
    bool isCurrent(int timerId, juce::int32 start) const;

    void timerCallback(int timerId) override;

private:
    juce::int32 startOf(int timerId) const;

    const ComponentId owner;
    const juce::int32 timerPage;
    juce::CriticalSection startsLock;
    std::map<int, juce::int32> starts; ///< how often each timer was started
};

} // namespace Kernel
