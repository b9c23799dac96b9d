#include "EngineLayer/schedule/ConflictRules.h"

namespace EngineLayer
{

namespace
{

/**
    A page of this band mixes with what it would silence; one of exactly `alwaysMixes` also with what would silence it.
*/
constexpr std::int32_t firstMixing = 40, lastMixing = 49, alwaysMixes = 40;

bool bothRear(const EngineApi::ScheduleInfo& page, const EngineApi::ScheduleInfo& other)
{
    return page.isRear && other.isRear;
}

bool differentZones(const EngineApi::ScheduleInfo& page, const EngineApi::ScheduleInfo& other)
{
    return page.isRear != other.isRear;
}

} // namespace

bool shareAudioChannel(const EngineApi::ScheduleInfo& page, const EngineApi::ScheduleInfo& other)
{
    return page.audioChannel == other.audioChannel && page.audioChannel != Dsp::noAudioChannel;
}

void applyVideoRule(EngineApi::ScheduleInfo& page, EngineApi::ScheduleInfo& other)
{
    if (bothRear(page, other))
        return;
    page.states.videoState = EngineApi::PageStates::held;
    if (!differentZones(page, other))
        other.states.videoState = EngineApi::PageStates::notHeld;
}

void applyPlayRule(EngineApi::ScheduleInfo& page, EngineApi::ScheduleInfo& other)
{
    if (differentZones(page, other))
        return;
    auto set = [&](EngineApi::PageStates::Play pagePlay, EngineApi::PageStates::Play otherPlay)
    {
        page.states.playState = pagePlay;
        other.states.playState = otherPlay;
    };
    if (bothRear(page, other))
    {
        if (other.playLevel <= page.playLevel)
            set(EngineApi::PageStates::playing, EngineApi::PageStates::stopped);
    }
    else if (other.playLevel < page.playLevel)
    {
        if (page.playLevel >= firstMixing && page.playLevel <= lastMixing)
            set(EngineApi::PageStates::mixed, EngineApi::PageStates::mixed);
        else
            set(EngineApi::PageStates::playing, EngineApi::PageStates::stopped);
    }
    else if (other.playLevel == alwaysMixes)
        set(EngineApi::PageStates::mixed, EngineApi::PageStates::mixed);
    else
        page.states.playState = EngineApi::PageStates::stopped;
}

void applyAudioRule(EngineApi::ScheduleInfo& page, EngineApi::ScheduleInfo& other)
{
    auto set = [&](EngineApi::PageStates::Channel pageAudio, EngineApi::PageStates::Channel otherAudio)
    {
        page.states.audioState = pageAudio;
        other.states.audioState = otherAudio;
    };
    if (bothRear(page, other))
        return;
    if (differentZones(page, other))
    {
        if (!shareAudioChannel(page, other))
            page.states.audioState = EngineApi::PageStates::held;
        else if (other.audioLevel < page.audioLevel)
            set(EngineApi::PageStates::held, EngineApi::PageStates::notHeld);
        else
            page.states.audioState = EngineApi::PageStates::notHeld;
    }
    else if (page.states.playState == EngineApi::PageStates::mixed &&
             other.states.playState == EngineApi::PageStates::mixed)
        set(EngineApi::PageStates::held, EngineApi::PageStates::held);
    else
        set(EngineApi::PageStates::held, EngineApi::PageStates::notHeld);
}

} // namespace EngineLayer
