#pragma once

#include "kernel/ComponentIds.h"

namespace Kernel
{

/** Whose handler the calling thread runs: who asks, when somebody is asked for something. */
struct Actor
{
    ComponentId component = noComponent; ///< none outside of the groups' threads
    juce::int32 page = -1;               ///< whose handler it is within an application task; -1 for the task itself

    static const Actor& current() { return own; }
    /** "RadioApplication (mbFM)"; "the system" for none. */
    juce::String name() const;

private:
    friend class TaskGroup;
    static thread_local constinit Actor own;
};

} // namespace Kernel
