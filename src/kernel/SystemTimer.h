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
    explicit SystemTimer(ComponentId timerOwner)
        : owner(timerOwner)
    {
    }

    void timerCallback(int timerId) override;

private:
    ComponentId owner;
};

} // namespace Kernel
