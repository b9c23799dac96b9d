#include "platform/sound/Sound.h"

#include "doubles/SoundDouble.h"
#include "platform/base/Threads.h"

#include <mutex>
#include <utility>

namespace Platform
{

namespace
{

struct State
{
    std::vector<juce::String> calls;
    juce::String playing;
    bool held = false;
};

std::mutex mutex;
Condition released;
State state;

} // namespace

bool PlaySound(const juce::String& file)
{
    std::unique_lock lock(mutex);
    released.wait(lock, [] { return !state.held; });
    state.calls.push_back(file);
    state.playing = file;
    return file.isNotEmpty();
}

void releaseSound()
{
    const std::scoped_lock lock(mutex);
    state.playing.clear();
}

namespace doubles
{

void SoundDouble::reset()
{
    const std::scoped_lock lock(mutex);
    state = {};
}

std::vector<juce::String> SoundDouble::takeCalls()
{
    const std::scoped_lock lock(mutex);
    return std::exchange(state.calls, {});
}

juce::String SoundDouble::getPlaying()
{
    const std::scoped_lock lock(mutex);
    return state.playing;
}

void SoundDouble::hold(bool held)
{
    const std::scoped_lock lock(mutex);
    state.held = held;
    released.notify();
}

} // namespace doubles

} // namespace Platform
