#pragma once

#include <functional>
#include <juce_core/juce_core.h>

namespace Platform::doubles
{

/**
    What a test sees and does at the other end of the serial ports. A port is known by the name it was opened with; what
    was written to a name stays readable after it was closed. Any thread.
*/
struct SerialPortDouble
{
    /** Forgets everything written and every fault; ports that are open stay open. */
    static void reset();

    static bool isOpen(const juce::String& name);
    /** Of the latest opening, also a failed one; 0 when there was none. */
    static int getBaudRate(const juce::String& name);
    /** Called inside every successful opening, when bytes can be received already. */
    static void onOpen(const juce::String& name, std::function<void()> observer);

    /** Everything written to the port since the last `takeWritten`. */
    static juce::MemoryBlock takeWritten(const juce::String& name);

    /** The device is away: opening fails, and a port that is open awaits it. */
    static void failOpen(const juce::String& name, bool fails);
    /** Each write takes at most this many bytes; 0 makes writes fail, a negative number lifts the limit. */
    static void limitWrites(const juce::String& name, int bytesPerWrite);

    /** Called with the bytes taken of each write, on the writing thread; must not use the ports itself. */
    static void onWrite(const juce::String& name, std::function<void(const juce::MemoryBlock&)> observer);

    /** Delivers bytes on the calling thread, as one read would. False when nobody has the port open. */
    static bool receive(const juce::String& name, const void* data, int length);
};

} // namespace Platform::doubles
