#include "EngineLayer/devices/DspNotices.h"

#include "EngineApi/Bars.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Settings.h"
#include "EngineApi/WiredRemote.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Shared.h"
#include "platform/settings/SetupIndex.h"

namespace EngineLayer
{

namespace
{

using EngineApi::Provided;

constexpr int muteZone = 3; ///< stands for the mute in volume messages
constexpr int firstZone = 1;

/** The wired remote shows volume and mute in its second row. */
constexpr int remoteRow = 1;
constexpr int volumeColumn = 1;
constexpr int muteColumn = 11;
constexpr int remoteTextMs = 2000;
constexpr int cancelRestore = -1;

Platform::Shared<bool> muteAnnounced { false };

void tellVolumeBar(int zone, int value)
{
    if (auto* bar = Provided<EngineApi::VolumeBar>::get())
        bar->postMessage(Kernel::MSG_VOLUME_SHOW, zone, value, nullptr);
}

void tellNetwork(int zone, int value)
{
    Kernel::postSystemMessage(Kernel::navicoManagerId, Kernel::MSG_NAVICO_DEVICE_STATE, zone, value);
}

} // namespace

void announceVolume(int zone, int volume, bool show)
{
    if (show)
        tellVolumeBar(zone, volume);
    tellNetwork(zone, volume);
    auto* remote = Provided<EngineApi::WiredRemote>::get();
    if (!show || remote == nullptr)
        return;
    const auto zoneText =
        zone == firstZone ? juce::String("Zone1") : EngineApi::getSettingString(Platform::zone2NameSetting);
    remote->clearRow(remoteRow);
    remote->showText(remoteRow, volumeColumn, zoneText + " Vol." + juce::String(volume), true);
    // Last of all: whoever ends it meanwhile would leave the text there.
    remote->restoreAfter(remoteTextMs);
}

void announceMute(bool mute)
{
    muteAnnounced = mute;
    tellVolumeBar(muteZone, mute ? 1 : 0);
    tellNetwork(muteZone, mute ? 1 : 0);
    auto* remote = Provided<EngineApi::WiredRemote>::get();
    if (remote == nullptr)
        return;
    if (!mute)
    {
        remote->showLasting(remoteRow, muteColumn, {});
        remote->restore();
        return;
    }
    if (remote->isRestorePending())
    {
        remote->restoreAfter(cancelRestore);
        remote->clearRow(remoteRow);
    }
    remote->showLasting(remoteRow, muteColumn, " Mute");
}

void withdrawMute()
{
    if (muteAnnounced)
        announceMute(false);
}

} // namespace EngineLayer
