#pragma once

#include <juce_core/juce_core.h>
#include <vector>

namespace Platform::doubles
{

/** The loudspeaker of a test. Any thread. */
struct SoundDouble
{
    static void reset();

    /** The name of every PlaySound since the last take, in order; "" stopped what played. */
    static std::vector<juce::String> takeCalls();
    /** The file that plays now, "" when none does. */
    static juce::String getPlaying();
    /** As with a sound output that hangs: PlaySound does not return while it is held. */
    static void hold(bool held);
};

} // namespace Platform::doubles
