#pragma once

#include <juce_core/juce_core.h>

/** How every thread of the unit begins, and how one ends that is asked to. */
namespace Platform
{

/**
    The first call of every thread: gives it a name, of which the system keeps 15 bytes, and makes an overflow of its
    stack a fault like any other.
*/
void enterThread(const juce::String& name);

/** Only the part for the stack, for a thread that the framework has started. A second call does nothing. */
void guardStack();

/**
    Waits, at most `limitMs`, for a thread that was asked to end and woken. False when it still runs: it is never
    killed, as that could end the whole process, and all that it may use must stay.
*/
bool awaitEnd(juce::Thread& thread, int limitMs = 200);

/** Whether `awaitEnd` has failed for any thread; the process then exits without taking anything down. Any thread. */
bool hasStragglers();

} // namespace Platform
