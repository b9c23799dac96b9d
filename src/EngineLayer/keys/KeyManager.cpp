#include "EngineLayer/keys/KeyManager.h"

#include "EngineApi/Bars.h"
#include "EngineApi/DeviceStatus.h"
#include "EngineApi/Favourites.h"
#include "EngineApi/HostLink.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "EngineApi/Settings.h"
#include "EngineApi/SystemState.h"
#include "EngineApi/WiredRemote.h"
#include "EngineLayer/autotest/AutoTestFrame.h"
#include "EngineLayer/devices/DspNotices.h"
#include "EngineLayer/devices/UnitOutputs.h"
#include "dsp/AudioServices.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "lowlayer/BytePool.h"
#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/base/System.h"
#include "platform/config/Configuration.h"
#include "platform/record/Recorder.h"
#include "platform/settings/SetupIndex.h"

#include <algorithm>

namespace EngineLayer
{

using namespace EngineApi;

namespace
{

constexpr Platform::Log logger { "EngineLayer/KeyManager", "KeyManager" };

Platform::Counter keysDropped { "keys.dropped",
                                "keys that came faster than they were acted on, and frames that carry no whole key" };

constexpr juce::uint32 repeatMs = 60;
constexpr int readBackMs = 300;

// Settings.
constexpr int unitOnSetting = 7;
/** The remote's brightest level and the setting's highest value. */
constexpr int brightest = 15;
constexpr int dimmerSteps = 11;

Dsp::ACService* audio()
{
    auto* chips = Provided<Dsp::ChipManager>::get();
    return chips != nullptr ? &chips->getACService() : nullptr;
}

/** On purpose without a notice: the unit goes on or off, and no bar is to tell of it but one that tells of a mute. */
void setMute(bool mute)
{
    if (auto* service = audio(); service != nullptr && service->isMute() != mute)
        service->toggleMute(false);
    if (!mute)
        withdrawMute();
}

void toFavoriteBar(juce::int32 id, juce::int32 arg1 = 0, juce::int32 arg2 = 0)
{
    if (auto* bar = Provided<FavoriteBar>::get())
        bar->postMessage(id, arg1, arg2, nullptr);
}

} // namespace

KeyManager::KeyManager()
{
    hostKeys.countLossesIn(keysDropped);
    remoteKeys.countLossesIn(keysDropped);
}

juce::String KeyManager::getKeyName(int value)
{
    return keyName(value);
}

bool KeyManager::acceptMessage(const Kernel::SystemMessage& message)
{
    // Keys are taken at once, so that a flood meets the bound of their queue; it is their turn that waits.
    const bool waits =
        message.id == msgNextHostKey || (message.id == Kernel::MSG_HOST_EVENT && message.arg1 != EVENT_KEY);
    return !waits || !isSystemBusy();
}

void KeyManager::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload)
{
    switch (id)
    {
    case Kernel::MSG_HOST_EVENT:
        hostEvent(arg1, payload);
        break;
    case Kernel::MSG_WIRED_REMOTE_KEY:
        enqueue(remoteKeys, { arg1, arg2 }, msgNextRemoteKey);
        break;
    case msgNextHostKey:
        takeTurn(hostKeys, msgNextHostKey);
        break;
    case msgNextRemoteKey:
        takeTurn(remoteKeys, msgNextRemoteKey);
        break;
    case Kernel::MSG_KEY_RETURN_NEXT:
        if (arg1 == 1)
            returnOnNextKey = true;
        break;
    default:
        break;
    }
}

void KeyManager::hostEvent(int command, const Kernel::Payload& payload)
{
    const auto bytes = LowLayer::bytesOf(payload);
    switch (command)
    {
    case EVENT_KEY:
        if (bytes.size() >= 2)
            enqueue(hostKeys, { bytes[0], bytes[1] }, msgNextHostKey);
        else if (++keysDropped; !std::exchange(shortFrameReported, true))
            logger().error("a key of the MCU has fewer than 2 bytes; such keys are dropped");
        break;
    case EVENT_AUTOTEST_INFO:
        if (const auto frame = AutoTestFrame::parse(bytes))
            autoTest.handle(*frame);
        break;
    case EVENT_GET_DEVICE_ID:
        compareDeviceId(bytes);
        break;
    default:
        break;
    }
    LowLayer::recycleBytes(payload);
}

void KeyManager::enqueue(KeyQueue& queue, KeyEvent key, juce::int32 turn)
{
    // One turn is on its way as long as a key waits.
    if (queue.isEmpty())
        Kernel::postSystemMessage(Kernel::keyManagerId, turn, 0, 0);
    if (queue.push(key) && queue.getDropped() == 1)
        logger().error("keys come faster than they are acted on; the oldest are dropped");
}

void KeyManager::takeTurn(KeyQueue& queue, juce::int32 turn)
{
    if (queue.isEmpty())
        return;
    const auto key = queue.front();
    queue.pop();
    if (!queue.isEmpty())
        Kernel::postSystemMessage(Kernel::keyManagerId, turn, 0, 0);
    handleKey(key.origin, key.value);
}

bool KeyManager::isRepeat(int value) const
{
    const auto isSoon = [this] { return Platform::getTickCount() - lastKeyTime < repeatMs; };
    return value == lastKey && Platform::recorded(Platform::Step::timeCome, isSoon);
}

void KeyManager::handleKey(int origin, int value)
{
    if (Platform::CorvaneConfig::isSystemDebug())
        logger().debug("key %d %s from %d", value, getKeyName(value).toRawUTF8(), origin);
    // A release is never a repeat: a program that misses it believes the key held for ever.
    if (origin != originRelease && isRepeat(value))
        return;
    const auto unit = situation();
    if (origin == originRelease)
        return act(ProgramKey { unit.normalApp, KEY_RELEASE });
    carryOut(noticesOfKey(value, unit));
    if (std::exchange(returnOnNextKey, false))
        value = KEY_RETURN;
    carryOut(actionsOfKey(origin, value, unit));
    lastKey = value;
    lastKeyTime = Platform::getTickCount();
}

KeySituation KeyManager::situation() const
{
    KeySituation unit;
    unit.frontPage = getFrontShow();
    unit.frontApp = appTypeOfPage(unit.frontPage);
    unit.normalPage = getNormalSource();
    unit.normalApp = appTypeOfPage(unit.normalPage);
    unit.poweredOn = powerOn;
    unit.lowBatteryAlert = isLowBatteryAlert();
    unit.zone2On = getSettingInt(Platform::zone2OnSetting) == 1;
    if (const auto* bar = Provided<VolumeBar>::get())
        unit.volumeBarShown = bar->isShown();
    unit.favourite = favourite;
    if (const auto* bar = Provided<FavoriteBar>::get())
    {
        unit.favouritesShown = bar->isShown();
        unit.favouritesBarIndex = bar->getCurrentIndex();
        unit.favouriteStored = bar->isStored(favourite);
    }
    unit.favouritePage = getFavouritePage(favourite);
    unit.lastSourcePage = getLastSourcePage();
    return unit;
}

void KeyManager::carryOut(const KeyActions& actions)
{
    for (const auto& action : actions)
        std::visit([this](const auto& each) { act(each); }, action);
}

void KeyManager::act(KeyStep step)
{
    switch (step)
    {
    case KeyStep::toggleMute:
        // The unit's mute is the DSP's: nothing else of this platform silences every source.
        if (auto* service = audio())
            service->toggleMute(true);
        break;
    case KeyStep::hideFavourites:
        toFavoriteBar(Kernel::MSG_FAVOURITES_HIDE);
        break;
    case KeyStep::emptySlotNotice:
        toFavoriteBar(Kernel::MSG_FAVOURITES_EMPTY_SLOT);
        break;
    case KeyStep::lowBatteryAlertOff:
        setLowBatteryAlert(false);
        break;
    case KeyStep::closeVolumeBar:
        if (auto* bar = Provided<VolumeBar>::get())
            bar->postMessage(MSG_BAR_CLOSE, 0, 0, nullptr);
        break;
    }
}

void KeyManager::act(const ProgramKey& action)
{
    if (action.appType != Pubhead::AppUnknown)
        sendRemoteMessage(action.appType, RMSG_KEY, action.key, action.argument);
}

void KeyManager::act(const PageKey& action)
{
    postToPage(action.page, Kernel::MSG_APP_KEY, action.key, action.argument);
}

void KeyManager::act(const FavouriteMessage& action)
{
    favourite = action.favourite;
    if (action.appType != Pubhead::AppUnknown)
        sendRemoteMessage(action.appType, favouriteMessageOf(action.appType), action.mode, action.favourite);
}

void KeyManager::act(const SelectFavourite& action)
{
    favourite = action.favourite;
    toFavoriteBar(Kernel::MSG_FAVOURITES_SELECT, action.favourite, action.cameraInFront ? 1 : 0);
}

void KeyManager::act(const PowerSwitch& action)
{
    setMute(!action.on);
    if (auto* remote = Provided<WiredRemote>::get())
        remote->setDimmer(action.on ? getSettingInt(Platform::dimmerLevelSetting) * brightest / dimmerSteps : 0);
    powerOn = action.on;
    driveOutputs(action.on);
    setSettingInt(unitOnSetting, action.on ? 1 : 0, true, Pubhead::AppUnknown);
}

void KeyManager::act(const PowerRequest& action)
{
    sendCommand(EVENT_KEY, { 0, action.on ? KEY_POWER_ON : KEY_POWER_OFF, 0 });
}

void KeyManager::act(const VolumeStep& action)
{
    auto* service = audio();
    if (service == nullptr)
        return;
    if (action.steps > 0)
        service->volumeUp(action.steps);
    else
        service->volumeDown(-action.steps);
}

void KeyManager::act(const ShowPage& action)
{
    requestShowPage(action.page, true);
}

void KeyManager::act(const KeyLog& action)
{
    Platform::Log("EngineLayer/KeyManager", action.tag)().info(action.text);
}

void KeyManager::setDeviceId(const DeviceId& id)
{
    deviceId = id;
    sendCommand(EVENT_SET_DEVICE_ID, { id[0], id[1], id[2] });
    startTimer(readBackMs);
}

void KeyManager::timerCallback()
{
    stopTimer();
    sendCommand(EVENT_GET_DEVICE_ID);
}

void KeyManager::compareDeviceId(std::span<const std::uint8_t> answer) const
{
    constexpr std::size_t shortestAnswer = 2;
    if (answer.size() < shortestAnswer)
        return;
    const bool saved = std::ranges::equal(answer, deviceId);
    logger().info("device id %s", saved ? "saved" : "differs from what was set");
}

} // namespace EngineLayer
