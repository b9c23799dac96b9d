#pragma once

#include <juce_core/juce_core.h>

namespace Platform::doubles
{

/** The operating system of a test: what was asked of it, and what it answers. Any thread. */
struct SystemDouble
{
    static void reset();

    /** None after `reset`. */
    static void setUniqueId(juce::uint32 id);

    /** The clock stands still until it is moved; 0 after `reset`. */
    static void advanceTicks(juce::uint32 milliseconds);
    /** It is the platform's clock instead, until `reset`. */
    static void followClock();
};

} // namespace Platform::doubles
