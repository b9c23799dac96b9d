#pragma once

#include "kernel/TimerStarts.h"
#include "platform/base/Time.h"

#include <juce_events/juce_events.h>

namespace Kernel
{

/**
    Numbered timers of a component. Every expiry is posted to the owner as MSG_SYS_TIMER, with the timer's id and the
    number of its start, and is handled on the owner's group thread. An expiry that is on its way when its timer is
    stopped or started anew is dropped. Timers repeat until they are stopped; times are in milliseconds. Any thread.
*/
class SystemTimer : public Platform::MultiTimer
{
public:
    /** With a page, the expiries go to that page's handler in the owner. */
    explicit SystemTimer(ComponentId timerOwner, juce::int32 handlerPage = -1);
    ~SystemTimer() override;

    /** Starting one that runs begins its period anew. */
    void startTimer(int timerId, int intervalMs);
    void stopTimer(int timerId);

    void timerCallback(int timerId) override;
    /** Posts the expiry now, whether its time has come or not. */
    void expire(int timerId);

private:
    const ComponentId owner;
    const juce::int32 timerPage;
    const juce::ReferenceCountedObjectPtr<TimerStarts> starts;
};

} // namespace Kernel
