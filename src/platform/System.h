#pragma once

#include <juce_core/juce_core.h>

/** What else the unit's operating system gave: driver settings, time zone, output volume, faults. */
namespace Platform
{

/** Writes a driver setting: key "\Drivers\AppleAccessory\", one file a value. Empty on success, else the failed step's error. */
juce::Result writeRegistryValue(const juce::String& key, const juce::String& name, juce::uint32 value);

/** This process and its children use the zone's standard offset all year. */
void disableDaylightSaving();

/** Gain of the default wave output; 0xFFFFFFFF is full on both channels. */
void setWaveOutVolume(juce::uint32 volume);

/** Any fault ends the process through the normal exit path with status 0, after one line and a backtrace. Once, early. */
void installExceptionHook();

/** Asks for a low real-time priority for the calling thread; false when the system does not allow it. */
bool requestRealtimePriority();

} // namespace Platform
