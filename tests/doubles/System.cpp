#include "platform/base/System.h"

#include "doubles/SystemDouble.h"
#include "platform/base/Threads.h"

#include <mutex>

namespace Platform
{

namespace
{

constexpr juce::uint32 fullVolume = 0xFFFFFFFF;

struct State
{
    juce::uint32 waveOutVolume = fullVolume;
    juce::uint32 ticks = 0;
    bool followsClock = false;
    std::optional<juce::uint32> uniqueId;
};

std::mutex mutex;
State state;

} // namespace

juce::Result writeRegistryValue(const juce::String&, const juce::String&, juce::uint32)
{
    return juce::Result::ok();
}

void setWaveOutVolume(juce::uint32 volume)
{
    const std::scoped_lock lock(mutex);
    state.waveOutVolume = volume;
}

juce::uint32 getWaveOutVolume()
{
    const std::scoped_lock lock(mutex);
    return state.waveOutVolume;
}

void installExceptionHook() {}

void guardStack() {}

void enterThread(const juce::String&) {}

bool requestRealtimePriority()
{
    return false;
}

void doubles::SystemDouble::reset()
{
    const std::scoped_lock lock(mutex);
    state = {};
}

std::optional<juce::uint32> getUniqueId()
{
    const std::scoped_lock lock(mutex);
    return state.uniqueId;
}

void doubles::SystemDouble::setUniqueId(juce::uint32 id)
{
    const std::scoped_lock lock(mutex);
    state.uniqueId = id;
}

juce::uint32 getTickCount()
{
    const std::scoped_lock lock(mutex);
    using namespace std::chrono;
    if (state.followsClock)
        return static_cast<juce::uint32>(floor<milliseconds>(Clock::now().time_since_epoch()).count());
    return state.ticks;
}

void doubles::SystemDouble::followClock()
{
    const std::scoped_lock lock(mutex);
    state.followsClock = true;
}

void doubles::SystemDouble::advanceTicks(juce::uint32 milliseconds)
{
    const std::scoped_lock lock(mutex);
    state.ticks += milliseconds;
}

} // namespace Platform
