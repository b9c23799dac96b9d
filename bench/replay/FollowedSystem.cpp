// What is left of the machine.
#include "bench/replay/Follower.h"
#include "platform/base/System.h"
#include "platform/base/Threads.h"

#include <atomic>

namespace Platform
{

namespace
{

constexpr juce::uint32 fullVolume = 0xFFFFFFFF;
std::atomic<juce::uint32> waveOutVolume { fullVolume };

} // namespace

juce::Result writeRegistryValue(const juce::String&, const juce::String&, juce::uint32)
{
    return juce::Result::ok();
}

void setWaveOutVolume(juce::uint32 volume)
{
    waveOutVolume = volume;
}

juce::uint32 getWaveOutVolume()
{
    return waveOutVolume;
}

void installExceptionHook() {}

void guardStack() {}

void enterThread(const juce::String&) {}

bool requestRealtimePriority()
{
    return false;
}

std::optional<juce::uint32> getUniqueId()
{
    const auto id = recorded(Step::uniqueId, [] { return std::int64_t(); });
    return id < 0 ? std::nullopt : std::optional(static_cast<juce::uint32>(id));
}

juce::uint32 getTickCount()
{
    using namespace std::chrono;
    return static_cast<juce::uint32>(floor<milliseconds>(Clock::now().time_since_epoch()).count());
}

} // namespace Platform
