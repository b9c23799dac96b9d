#pragma once

#include "dsp/AudioChannel.h"
#include "kernel/ComponentIds.h"
#include "platform/base/Pubhead.h"

/** The words of the engine for screen and sound: sources, channels, actions, and the table of pages. */
namespace EngineApi
{

// clang-format off
enum SourceId : std::int32_t
{
    SRC_TUNER, SRC_DISC, SRC_CDC, SRC_MISC, SRC_NAVI, SRC_AUX_REAR, SRC_DVBT, SRC_SD, SRC_SAT_XM, SRC_IPOD, SRC_USB,
    SRC_CAMERA, SRC_AUX_FRONT, SRC_BT_AUDIO, SRC_SAT_SIRIUS, SRC_HDRADIO, SRC_INTERNET, SRC_AV_OFF, SRC_TUNER_ISR,
    SRC_HDRADIO_ISR, SRC_BT_PHONE, SRC_PANDORA, SRC_HDMI, SRC_WIFI,
    NUM_OF_SOURCES ///< no source
};
// clang-format on

// clang-format off
enum VideoChannel : std::int32_t
{
    eVideoWince, eVideoDisc, eVideoCamera, eVideoAux1, eVideoAux2, eVideoDVBT, eVideoAVOff, eVideoHDMI, eVideoDVR,
    eVideoWifi,
    noVideoChannel ///< never counts as a shared channel
};
// clang-format on

/** What a request asks of a page. */
enum class AppAction : std::int32_t {
    None,
    ToRun,  ///< bring the page to the front and make it play
    ToPlay, ///< play without raising it
    ToShow, ///< raise it without taking the sound
    ToHide, ///< take it off the screen
    ToStop
};

/** What one order asks of one page. */
enum class SwitchType : std::int32_t {
    Unknown,
    ToRun,         ///< enter the running set
    ToStop,        ///< leave it
    ToChange,      ///< stay with new states
    ToShowTopLevel ///< come to the top without other change
};

/** Exact names for log lines; "" for a value outside the enumeration. The page and program names are in Pubhead. */
const char* sourceName(int source);
const char* videoChannelName(int channel);
const char* actionName(int action);
const char* switchTypeName(int type);
const char* programStateName(int state);

/** The four states of a page in one schedule. */
struct PageStates
{
    static constexpr std::int32_t notShown = 125;
    enum Play : std::int32_t { playing = 1, mixed = 2, stopped = 3 };
    enum Channel : std::int32_t { held = 1, notHeld = 2 };

    std::int32_t showState = notShown; ///< 1 is the top page, 2, 3 ... lie behind it, 125 is not shown
    std::int32_t playState = stopped;
    std::int32_t audioState = notHeld;
    std::int32_t videoState = notHeld;

    bool operator==(const PageStates&) const = default;
};

/** How a page takes part in scheduling; set once by its handler. */
struct PageScheduleConfig
{
    /** A level that does not compete for its resource. */
    static constexpr std::int32_t noCompetition = 10;

    Kernel::ComponentId ownerId = 0; ///< application task that owns the page
    std::int32_t page = Pubhead::NUM_OF_PAGES;
    std::int32_t appType = Pubhead::AppUnknown;
    std::int32_t source = NUM_OF_SOURCES;
    std::int32_t subSource = 23; ///< separates audio and video variants of one source; 23 = none
    bool isSourcePage = false;   ///< at the front it is remembered as the last source page
    bool isNormalSource = false; ///< normal sources exclude each other
    bool isRear = false;         ///< belongs to the rear zone, which holds at most one page
    std::int32_t audioChannel = Dsp::eAudioAVOff;
    std::int32_t videoChannel = eVideoAVOff;
    std::int32_t showLevel = 0, playLevel = 0, videoLevel = 0, audioLevel = 0; ///< the higher level wins a conflict
    PageStates initialStates {};
};

/** The configuration of a page that an application registers; null for a page that exists only as a number. */
const PageScheduleConfig* pageScheduleConfig(int page);

} // namespace EngineApi
