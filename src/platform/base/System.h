#pragma once

#include <juce_core/juce_core.h>
#include <memory>
#include <optional>

/** What the operating system gives: driver settings, time zone, output volume, faults, clock. */
namespace Platform
{

/**
    Writes a driver setting, one file a value: key "\Drivers\AppleAccessory\" names its folders below the registry path.
    On failure nothing is written and the error is the line to print, without its end: "RegOpenKeyEx  failure 13" when
    the folder cannot be made, "111  RegOpenKeyEx  failure 13" when it cannot be written into, with the system's error
    number.
*/
juce::Result writeRegistryValue(const juce::String& key, const juce::String& name, juce::uint32 value);

/**
    Makes this the only engine of its unit while the object lives; however the process ends, the system frees the lock.
    The lock is the file "engine.lock" in the registry folder, which no factory reset empties; only its owner can open
    it, and a link in its place is not followed.
*/
class InstanceLock
{
public:
    virtual ~InstanceLock() = default;

    /**
        Null when another engine of this unit holds the lock. Without a folder for the file there is no lock (logged).
    */
    static std::unique_ptr<InstanceLock> take();
    /**
        The same, but makes neither folder nor file: where there is none, no engine runs. Null also when this user may
        not open it, and so cannot tell.
    */
    static std::unique_ptr<InstanceLock> takeExisting();
};

/**
    This process and its children use the zone's standard offset all year. Once, before any other thread runs: it
    changes the environment, which others read without a lock.
*/
void disableDaylightSaving();

/**
    Gain of the default wave output: left in the low 16 bits, right in the high; 0xFFFF is full, as at start. Any
    thread.
*/
void setWaveOutVolume(juce::uint32 volume);
juce::uint32 getWaveOutVolume();

/**
    Any fault (SEGV, BUS, FPE, ILL, ABRT, std::terminate) ends the process through the normal exit path with status 0,
    after one line and a backtrace on standard error and in the log. A second fault, or an exit that takes longer than
    two seconds, leaves at once with status 0. Once, early; an overflow of the stack is caught on the calling thread and
    on those that `guardStack` was called on. Does nothing in sanitizer builds, which report faults themselves.
*/
void installExceptionHook();

/**
    Asks for a low real-time priority for the calling thread, which neither threads nor programs that it starts inherit;
    false when the system does not allow it.
*/
bool requestRealtimePriority();

/** The first 32 bits of the machine's unique id; none when it has no id. Any thread. */
std::optional<juce::uint32> getUniqueId();

/** Milliseconds of a clock that only moves forward; wraps after 49 days. Any thread. */
juce::uint32 getTickCount();

} // namespace Platform
