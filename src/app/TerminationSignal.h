#pragma once

#include <juce_events/juce_events.h>

/**
    Turns SIGTERM and SIGINT into a request to quit on the message thread, so that the normal shut-down runs. They are
    caught from `catchEarly` to the end of the process: a request that comes while it starts is heard when it has
    started, and one that comes while it ends changes nothing.
*/
class TerminationSignal
{
public:
    /** Once, in main. */
    static void catchEarly();

    TerminationSignal();
    ~TerminationSignal();

private:
    JUCE_DECLARE_NON_COPYABLE(TerminationSignal)
};
