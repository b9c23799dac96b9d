#include "ApplicationLayer/setup/SetupApplication.h"

#include "ApplicationLayer/setup/SettingEffects.h"
#include "ApplicationLayer/setup/SetupHandler.h"
#include "ApplicationLayer/setup/SupplyVoltage.h"
#include "EngineApi/Bars.h"
#include "EngineApi/DeviceStatus.h"
#include "EngineApi/HostLink.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "EngineApi/WiredRemote.h"
#include "EngineLayer/system/SystemInfo.h"
#include "kernel/ComponentRegistration.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "lowlayer/BytePool.h"
#include "platform/base/Logger.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SysInfoItems.h"

namespace ApplicationLayer
{

using namespace EngineApi;
using Pubhead::AppSetup;
using Pubhead::AppUnknown;

namespace
{

const Kernel::ComponentRegistration registration { Kernel::setupApplicationId,
                                                   []() -> Kernel::SystemTask* { return new SetupApplication; } };

constexpr Platform::Log logger { "ApplicationLayer/SetupApplication", "SetupApplication" };

/** Private message: arg1 the setting. */
constexpr juce::int32 settingMessage = 1;

/** arg1 of RMSG_SETTING_NOTIFY. */
constexpr juce::int32 valueNotice = Platform::setupValue;

/** The names that the microcontroller knows for the AUX input; the first is the one that it has by itself. */
constexpr const char* auxNames[] = { "AUX", "TV", "Media", "MP3", "NAV" };

constexpr std::size_t reportBytes = 2;
constexpr int triggerBit = 1;
constexpr int lightsBit = 2;

void sendAuxName()
{
    const auto name = getSettingString(Platform::auxNameSetting);
    for (int index = 1; index < static_cast<int>(std::size(auxNames)); ++index)
        if (name == auxNames[index])
            return sendCommand(EVENT_RENAME_AUXIN, { index });
}

DimmerSettings dimmerSettings()
{
    return { getSettingInt(Platform::dimmerModeSetting), getSettingInt(Platform::dayLevelSetting),
             getSettingInt(Platform::nightLevelSetting) };
}

void sendDimmer(int level)
{
    sendCommand(EVENT_LED_LCD_DIMMER, { Dimmer::toMcu(level), Dimmer::toMcu(level) });
}

} // namespace

SetupApplication::SetupApplication()
    : ApplicationTask({ new SetupHandler })
{
}

void SetupApplication::initialize()
{
    ApplicationTask::initialize();
    addSettingListener(this);
}

void SetupApplication::onRelease()
{
    removeSettingListener(this);
    ApplicationTask::onRelease();
}

void SetupApplication::handleOwnMessage(const Kernel::SystemMessage& message)
{
    switch (message.id)
    {
    case settingMessage:
        changes.remove(message.arg1, AppUnknown);
        return settingChanged(message.arg1);
    case Kernel::MSG_SYS_READY:
        return sendAuxName();
    case Kernel::MSG_HOST_EVENT:
        hostEvent(message.arg1, LowLayer::bytesOf(message.payload));
        return LowLayer::recycleBytes(message.payload);
    default:
        return;
    }
}

bool SetupApplication::acceptsKey(int index, int)
{
    return isAppConnected(AppSetup) || mattersWithoutSetup(index);
}

void SetupApplication::onSettingChanged(int index, int)
{
    if (changes.add(index, AppUnknown))
        Kernel::postSystemMessage(getId(), settingMessage, index, 0);
}

void SetupApplication::settingChanged(int index)
{
    switch (index)
    {
    case Platform::auxNameSetting:
        sendAuxName();
        break;
    case Platform::lowBatterySetting:
        if (lowVoltage)
            switchAlertOn();
        break;
    case Platform::dimmerModeSetting:
        dimmerModeChosen();
        break;
    case Platform::dimmerLevelSetting:
        dimmerMoved();
        break;
    default:
        applySetting(index);
        break;
    }
    if (auto value = formatSetting(index))
        sendRemoteMessage(AppSetup, RMSG_SETTING_NOTIFY, valueNotice, index, std::move(value));
}

void SetupApplication::hostEvent(juce::int32 command, Bytes data)
{
    const bool dimmer = command == EVENT_LED_LCD_DIMMER;
    if (!dimmer && command != EVENT_VOLTAGE_VALUES)
        return;
    const juce::String text = dimmer ? "unit LCD dimmer values: " : "unit voltage values: ";
    const auto values = text + Platform::hexPairs(data.data(), static_cast<int>(data.size()));
    if (data.size() < reportBytes)
    {
        logger().error(values + " are fewer than 2, ignored");
        return;
    }
    logger().debug(values);
    if (dimmer)
        dimmerReported(data);
    else
        voltageReported(data);
}

void SetupApplication::dimmerReported(Bytes data) const
{
    const auto settings = dimmerSettings();
    const int level = Dimmer::fromMcu(data[0]);
    logger().debug("EVENT_LED_LCD_DIMMER_nMode = %d ,EVENT_LED_LCD_DIMMER_nValue= %d", settings.mode, level);
    if (const auto wanted = Dimmer::correct(settings, lightsOn, dimmerSynced, level))
        return sendDimmer(*wanted);
    if (!Dimmer::isLevel(level))
    {
        logger().error("%d is no dimmer level, ignored", level);
        return;
    }
    setSettingInt(Platform::dimmerLevelSetting, level, false, AppUnknown);
    if (auto* remote = Provided<WiredRemote>::get())
        remote->setDimmer(Dimmer::toRemote(level));
}

void SetupApplication::dimmerModeChosen() const
{
    const auto settings = dimmerSettings();
    const int level = Dimmer::chooseMode(settings, lightsOn);
    Platform::debugPrint("Video Dimmer:: mode = %d,value = %d\r\n", settings.mode, level);
    sendDimmer(level);
}

void SetupApplication::dimmerMoved() const
{
    const auto move = Dimmer::move(dimmerSettings(), lightsOn, getSettingInt(Platform::dimmerLevelSetting));
    if (move.store != Dimmer::Move::Store::nothing)
        setSettingInt(move.store == Dimmer::Move::Store::day ? Platform::dayLevelSetting : Platform::nightLevelSetting,
                      move.level, false, AppUnknown);
    sendDimmer(move.level);
}

void SetupApplication::voltageReported(Bytes data)
{
    const int raw = data[0];
    const int flags = data[1];
    if (raw != voltageRaw)
        showVoltage(raw);
    watchBattery(raw * Platform::voltsPerStep);
    setDeviceState(triggerInput, (flags & triggerBit) != 0);
    followLights((flags & lightsBit) != 0);
}

void SetupApplication::showVoltage(int raw)
{
    voltageRaw = raw;
    EngineLayer::SystemInfo::getInstance()->set(Platform::sysInfoVoltage, raw);
    if (auto* bar = Provided<FavoriteBar>::get())
        bar->postMessage(Kernel::MSG_VOLTMETER_VALUE, raw, 0, nullptr);
}

void SetupApplication::watchBattery(double volts)
{
    const bool wasLow = std::exchange(lowVoltage, SupplyVoltage::isLow(lowVoltage, volts));
    if (lowVoltage == wasLow)
        return;
    if (lowVoltage)
        switchAlertOn();
    else
        setLowBatteryAlert(false);
}

void SetupApplication::switchAlertOn() const
{
    if (getSettingInt(Platform::lowBatterySetting) == 1)
        setLowBatteryAlert(true);
}

void SetupApplication::followLights(bool on)
{
    const bool changed = std::exchange(lightsOn, on) != on;
    const bool isFirst = !std::exchange(dimmerSynced, true);
    const auto settings = dimmerSettings();
    // The first report brings the unit's level to the microcontroller; later ones matter where the lights do.
    if (isFirst || (changed && settings.mode == DimmerSettings::followsLights))
        sendDimmer(Dimmer::wantedLevel(settings, lightsOn));
}

} // namespace ApplicationLayer
