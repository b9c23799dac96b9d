#pragma once

#include "EngineApi/Catalogue.h"
#include "platform/base/CommandLine.h"

#include <vector>

namespace EngineApi
{

/** One queued request for a page. */
struct RequestInfo
{
    std::int32_t page = Pubhead::NUM_OF_PAGES;
    AppAction action = AppAction::None;
    bool autoSwitch = false; ///< raised by the system rather than by the user
    std::uint32_t number {}; ///< under which it is remembered; 0 for none

    /** The second argument of MSG_SCHEDULE_REQUEST: action in the low 16 bits, auto-switch in bits 16 to 23. */
    std::int32_t toArgument() const { return static_cast<std::int32_t>(action) | (autoSwitch ? 1 : 0) << 16; }
    static RequestInfo fromArguments(std::int32_t page, std::int32_t argument)
    {
        return { page, static_cast<AppAction>(argument & 0xffff), (argument & 0xff0000) != 0, 0 };
    }
};

/** Status of MSG_SCHEDULE_RESULT. */
enum ScheduleStatus : std::int32_t {
    scheduleDone = 1,    ///< carried out completely
    scheduleRefused = 2, ///< refused, or nothing to do
    scheduleQueued = 3,  ///< waits behind another request
    scheduleFailed = 4   ///< no handler, or the switch failed or timed out
};

/** One page's state inside one schedule; the scheduler's lists share the records. */
struct ScheduleInfo : public juce::ReferenceCountedObject
{
    using Ptr = juce::ReferenceCountedObjectPtr<ScheduleInfo>;

    std::int32_t page = Pubhead::NUM_OF_PAGES;
    std::int32_t showLevel = 0, playLevel = 0, videoLevel = 0, audioLevel = 0;
    PageStates states {};
    bool isSourcePage = false, isNormalSource = false, isRear = false;
};

/** Where an order is on its way. */
enum class OrderProgress : std::int32_t { notSent = 0, sent = 1, finished = 2 };

/** One order to one page. */
struct AppStateSwitch : public juce::ReferenceCountedObject
{
    using Ptr = juce::ReferenceCountedObjectPtr<AppStateSwitch>;

    std::int32_t page = Pubhead::NUM_OF_PAGES;
    SwitchType switchType = SwitchType::Unknown;
    PageStates states {};
    OrderProgress progress = OrderProgress::notSent;
    Platform::AppCommandLine::Ptr commandLine; ///< for the page's program; null = none
    bool succeeded = false;
};

/** The channel change of one schedule; its end is reported as page NUM_OF_PAGES. */
struct AppResourceSwitch : public juce::ReferenceCountedObject
{
    using Ptr = juce::ReferenceCountedObjectPtr<AppResourceSwitch>;

    std::int32_t frontAudioChannel = Dsp::eAudioAVOff;
    std::int32_t frontVideoChannel = eVideoCamera;
    std::int32_t rearAudioChannel = Dsp::eAudioAVOff;
    std::int32_t rearVideoChannel = eVideoAVOff;
    bool mix = false;
    bool trigger = false;
    std::int32_t source = NUM_OF_SOURCES;
    OrderProgress progress = OrderProgress::notSent;
    bool succeeded = false;
};

} // namespace EngineApi
