#pragma once

#include <juce_core/juce_core.h>

namespace Platform
{

/**
    Plays a sound file in a loop on the default output, in place of one that plays; an empty name stops it. Its gain is
    the wave-out volume (System.h), also when that changes meanwhile. Without a sound card it is logged once that
    nothing can be heard, and nothing else happens; a file that cannot be read is logged, and what played has ended. A
    file may last three minutes at 44.1 kHz. True when it plays now. Opens the device, with a thread of its own, for as
    long as it plays, and waits for that. Any thread.
*/
bool PlaySound(const juce::String& file);

/** Whether the file can be played. Any thread. */
juce::Result checkSoundFile(const juce::String& file);

/** Opens the default output and closes it again; its name, or why nothing can be heard. Any thread. */
juce::Result checkSoundCard(juce::String& name);

/** Stops what plays and closes the device. At the end of the process, before the message loop is gone. */
void releaseSound();

} // namespace Platform
