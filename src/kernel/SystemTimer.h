#pragma once

#include "kernel/ComponentIds.h"

#include <juce_events/juce_events.h>

namespace Kernel
{

/**
    Numbered timers of a component. Every expiry is posted to the owner as MSG_SYS_TIMER with the timer id, so that it
   is handled on the owner's group thread. Timers repeat until they are stopped; times are in milliseconds. Starting and
    stopping is allowed from any thread.
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

    void timerCallback(int timerId) override;

private:
    const ComponentId owner;
    const juce::int32 timerPage;
};

} // namespace Kernel
