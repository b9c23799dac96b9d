#pragma once

#include <juce_core/juce_core.h>

/** How every thread of the unit begins, and how one ends that is asked to. */
namespace Platform
{

/**
    The first thing that a thread of the unit does: the system knows it by this name from here on, of which it keeps 15
    bytes, and an overflow of its stack is a fault like any other.
*/
void enterThread(const juce::String& name);

/** The second half of it, for a thread that the toolkit has started. Costs nothing when it is done already. */
void guardStack();

/**
    Waits for a thread that was asked to end and woken, no longer than the limit. False when it still runs: it is never
    killed, as that could take the whole process along, and whatever it may touch has to stay.
*/
bool awaitEnd(juce::Thread& thread, int limitMs = 200);

/** Whether `awaitEnd` was in vain for any thread. The process then ends without taking anything down. Any thread. */
bool hasStragglers();

} // namespace Platform
