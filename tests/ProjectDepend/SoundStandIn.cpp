// Records what is played until the platform does.
#include "platform/Sound.h"
#include "platform/doubles/SoundDouble.h"

#include <mutex>

namespace
{

std::mutex lock;
std::vector<juce::String> calls;

} // namespace

bool Platform::PlaySound(const juce::String& file)
{
    const std::lock_guard guard(lock);
    calls.push_back(file);
    return true;
}

std::vector<juce::String> Platform::doubles::SoundDouble::takeCalls()
{
    const std::lock_guard guard(lock);
    return std::exchange(calls, {});
}
