#pragma once

#include <juce_core/juce_core.h>
#include <vector>

namespace Platform::doubles
{

/** The operating system of a test: what was asked of it, and what it answers. Any thread. */
struct SystemDouble
{
    struct RegistryWrite
    {
        juce::String key;
        juce::String name;
        juce::uint32 value;
        bool operator==(const RegistryWrite&) const = default;
    };

    static void reset();

    /** Every successful write since `reset`, in order. */
    static std::vector<RegistryWrite> getRegistryWrites();
    /** What writes fail with from now on; "" lets them succeed. */
    static void failRegistry(const juce::String& error);

    static bool isExceptionHookInstalled();

    /** None after `reset`. */
    static void setUniqueId(juce::uint32 id);

    /** The clock stands still until it is moved; 0 after `reset`. */
    static void advanceTicks(juce::uint32 milliseconds);
};

} // namespace Platform::doubles
