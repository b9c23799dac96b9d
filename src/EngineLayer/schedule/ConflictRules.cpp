#include "EngineLayer/schedule/ConflictRules.h"

namespace EngineLayer
{

namespace
{

/** A page of this band mixes with what it would silence; one of exactly `alwaysMixes` also with what would silence it.
 */
constexpr std::int32_t firstMixing = 40, lastMixing = 49, alwaysMixes = 40;

bool bothRear(const ScheduleInfo& page, const ScheduleInfo& other)
{
    return page.isRear && other.isRear;
}

bool differentZones(const ScheduleInfo& page, const ScheduleInfo& other)
{
    return page.isRear != other.isRear;
}

} // namespace

bool shareAudioChannel(const ScheduleInfo& page, const ScheduleInfo& other)
{
    return page.audioChannel == other.audioChannel && page.audioChannel != noAudioChannel;
}

void applyVideoRule(ScheduleInfo& page, ScheduleInfo& other)
{
    if (bothRear(page, other))
        return;
    page.states.videoState = PageStates::held;
    if (!differentZones(page, other))
        other.states.videoState = PageStates::notHeld;
}

void applyPlayRule(ScheduleInfo& page, ScheduleInfo& other)
{
    if (differentZones(page, other))
        return;
    auto set = [&](PageStates::Play pagePlay, PageStates::Play otherPlay)
    {
        page.states.playState = pagePlay;
        other.states.playState = otherPlay;
    };
    if (bothRear(page, other))
    {
        if (other.playLevel <= page.playLevel)
            set(PageStates::playing, PageStates::stopped);
    }
    else if (other.playLevel < page.playLevel)
    {
        if (page.playLevel >= firstMixing && page.playLevel <= lastMixing)
            set(PageStates::mixed, PageStates::mixed);
        else
            set(PageStates::playing, PageStates::stopped);
    }
    else if (other.playLevel == alwaysMixes)
        set(PageStates::mixed, PageStates::mixed);
    else
        page.states.playState = PageStates::stopped;
}

void applyAudioRule(ScheduleInfo& page, ScheduleInfo& other)
{
    auto set = [&](PageStates::Channel pageAudio, PageStates::Channel otherAudio)
    {
        page.states.audioState = pageAudio;
        other.states.audioState = otherAudio;
    };
    if (bothRear(page, other))
        return;
    if (differentZones(page, other))
    {
        if (!shareAudioChannel(page, other))
            page.states.audioState = PageStates::held;
        else if (other.audioLevel < page.audioLevel)
            set(PageStates::held, PageStates::notHeld);
        else
            page.states.audioState = PageStates::notHeld;
    }
    else if (page.states.playState == PageStates::mixed && other.states.playState == PageStates::mixed)
        set(PageStates::held, PageStates::held);
    else
        set(PageStates::held, PageStates::notHeld);
}

} // namespace EngineLayer
