#include "EngineApi/Catalogue.h"

#include "EngineApi/Remote.h"

#include <algorithm>

namespace EngineApi
{

namespace
{

using namespace Pubhead;
using enum Dsp::AudioChannel;

constexpr std::array sourceNames { "SRC_TUNER",    "SRC_DISC",     "SRC_CDC",       "SRC_MISC",      "SRC_NAVI",
                                   "SRC_AUX_REAR", "SRC_DVBT",     "SRC_SD",        "SRC_SAT_XM",    "SRC_IPOD",
                                   "SRC_USB",      "SRC_CAMERA",   "SRC_AUX_FRONT", "SRC_BT_AUDIO",  "SRC_SAT_SIRIUS",
                                   "SRC_HDRADIO",  "SRC_INTERNET", "SRC_AV_OFF",    "SRC_TUNER_ISR", "SRC_HDRADIO_ISR",
                                   "SRC_BT_PHONE", "SRC_PANDORA",  "SRC_HDMI",      "SRC_WIFI",      "NUM_OF_SOURCES" };
static_assert(sourceNames.size() == NUM_OF_SOURCES + 1);

constexpr std::array videoChannelNames { "eVideoWince", "eVideoDisc",  "eVideoCamera", "eVideoAux1", "eVideoAux2",
                                         "eVideoDVBT",  "eVideoAVOff", "eVideoHDMI",   "eVideoDVR",  "eVideoWifi" };
static_assert(videoChannelNames.size() == noVideoChannel);

constexpr std::array actionNames { "None", "ToRun", "ToPlay", "ToShow", "ToHide", "ToStop" };
static_assert(actionNames.size() == static_cast<std::size_t>(AppAction::ToStop) + 1);

constexpr std::array switchTypeNames { "Unknown", "ToRun", "ToStop", "ToChange", "ToShowTopLevel" };
static_assert(switchTypeNames.size() == static_cast<std::size_t>(SwitchType::ToShowTopLevel) + 1);

constexpr std::array programStateNames { "kDisconnect", "kStarting", "kConnected", "kDead", "kClosing" };
static_assert(programStateNames.size() == kClosing + 1);

/** What kind of page it is; only these combinations exist. */
enum class Kind { screen, sourceScreen, normalSource, rear };

struct Levels
{
    std::int32_t show, play, video, audio;
};

constexpr auto none = PageScheduleConfig::noCompetition;
constexpr Levels screenOnly { 20, none, none, none };
constexpr Levels cameraLevels { 20, none, 20, none };
constexpr Levels phoneLevels { 20, 60, none, 30 };
constexpr Levels sourceLevels { 20, 20, 20, 20 };

constexpr PageScheduleConfig entry(std::int32_t page, Kernel::ComponentId owner, std::int32_t appType,
                                   std::int32_t source, std::int32_t subSource, Kind kind, std::int32_t audio,
                                   std::int32_t video, Levels levels)
{
    PageScheduleConfig config;
    config.ownerId = owner;
    config.page = page;
    config.appType = appType;
    config.source = source;
    config.subSource = subSource;
    config.isSourcePage = kind != Kind::screen;
    config.isNormalSource = kind == Kind::normalSource;
    config.isRear = kind == Kind::rear;
    config.audioChannel = audio;
    config.videoChannel = video;
    config.showLevel = levels.show;
    config.playLevel = levels.play;
    config.videoLevel = levels.video;
    config.audioLevel = levels.audio;
    return config;
}

/** A screen that plays nothing: menus, settings and the like. */
constexpr PageScheduleConfig screen(std::int32_t page, Kernel::ComponentId owner, std::int32_t appType)
{
    return entry(page, owner, appType, NUM_OF_SOURCES, PageScheduleConfig {}.subSource, Kind::screen, eAudioWince,
                 eVideoWince, screenOnly);
}

constexpr PageScheduleConfig source(std::int32_t page, Kernel::ComponentId owner, std::int32_t appType,
                                    std::int32_t sourceId, std::int32_t subSource, std::int32_t audio,
                                    std::int32_t video = eVideoWince, Kind kind = Kind::normalSource)
{
    return entry(page, owner, appType, sourceId, subSource, kind, audio, video, sourceLevels);
}

constexpr std::array pages {
    screen(mbMainMenu, Kernel::mainMenuApplicationId, AppMainMenu),
    screen(mbSetup, Kernel::setupApplicationId, AppSetup),
    screen(mbStandby, Kernel::generalApplicationId, AppStandby),
    screen(mbEQ, Kernel::generalApplicationId, AppEQ),
    screen(mbAntitheft, Kernel::generalApplicationId, AppAntitheft),

    entry(mbBTPhone, Kernel::bluetoothApplicationId, AppBluetooth, SRC_BT_PHONE, 21, Kind::sourceScreen, eAudioBT,
          eVideoWince, phoneLevels),
    entry(mbCamera, Kernel::generalApplicationId, AppCamera, SRC_CAMERA, 12, Kind::sourceScreen, eAudioWince,
          eVideoCamera, cameraLevels),

    source(mbBTAudio, Kernel::bluetoothApplicationId, AppBluetooth, SRC_BT_AUDIO, 14, eAudioBTAudio),
    source(mbFM, Kernel::radioApplicationId, AppRadio, SRC_TUNER, 0, eAudioFM),
    source(mbAM, Kernel::radioApplicationId, AppRadio, SRC_TUNER, 0, eAudioAM),
    source(mbWB, Kernel::radioApplicationId, AppRadio, SRC_TUNER, 0, eAudioWB),
    source(mbUSBAudio, Kernel::usbApplicationId, AppUSB, SRC_USB, 10, eAudioWince),
    source(mbUSBVideo, Kernel::usbApplicationId, AppUSB, SRC_USB, 11, eAudioWince),
    source(mbiPodAudio, Kernel::iPodApplicationId, AppiPod, SRC_IPOD, 8, eAudioWince, eVideoAux2),
    source(mbiPodVideo, Kernel::iPodApplicationId, AppiPod, SRC_IPOD, 9, eAudioWince, eVideoAux2),
    source(mbiPodPandora, Kernel::iPodApplicationId, AppPandora, SRC_PANDORA, 22, eAudioPandora),
    // The satellite tuner sits on the input that carries the name of its predecessor.
    source(mbSirius, Kernel::siriusApplicationId, AppSirius, SRC_SAT_SIRIUS, 7, eAudioXM),
    source(mbAuxin1, Kernel::auxInApplicationId, AppAuxIn, SRC_AUX_FRONT, 13, eAudioAux1, eVideoAux1),
    source(mbAuxin2, Kernel::auxInApplicationId, AppAuxIn, SRC_AUX_REAR, 4, eAudioAux2, eVideoAux2),
    source(mbAVOff, Kernel::generalApplicationId, AppStandby, SRC_AV_OFF, 18, eAudioAVOff, eVideoAVOff),

    source(mbReariPod, Kernel::iPodApplicationId, AppiPod, SRC_IPOD, 9, eAudioWince, eVideoAux2, Kind::rear),
    source(mbRearAV1, Kernel::auxInApplicationId, AppAuxIn, SRC_AUX_FRONT, 13, eAudioAux1, eVideoAux1, Kind::rear),
    source(mbRearAV2, Kernel::auxInApplicationId, AppAuxIn, SRC_AUX_REAR, 4, eAudioAux2, eVideoAux2, Kind::rear),
};

} // namespace

const char* sourceName(int source)
{
    return nameIn(sourceNames, source);
}

const char* videoChannelName(int channel)
{
    return nameIn(videoChannelNames, channel);
}

const char* actionName(int action)
{
    return nameIn(actionNames, action);
}

const char* switchTypeName(int type)
{
    return nameIn(switchTypeNames, type);
}

const char* programStateName(int state)
{
    return nameIn(programStateNames, state);
}

const PageScheduleConfig* pageScheduleConfig(int page)
{
    const auto found = std::ranges::find(pages, page, &PageScheduleConfig::page);
    return found == pages.end() ? nullptr : &*found;
}

} // namespace EngineApi
