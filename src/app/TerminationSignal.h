#pragma once

#include <juce_events/juce_events.h>

/** Turns SIGTERM and SIGINT into a request to quit on the message thread, so that the normal shut-down runs. */
class TerminationSignal
{
public:
    TerminationSignal();
    ~TerminationSignal();

private:
    JUCE_DECLARE_NON_COPYABLE(TerminationSignal)
};
