#include "EngineLayer/devices/DeviceStatusManager.h"

#include "EngineApi/AutoTestSession.h"
#include "EngineApi/Bars.h"
#include "EngineApi/HostLink.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "EngineApi/Settings.h"
#include "EngineApi/SystemState.h"
#include "EngineApi/WiredRemote.h"
#include "EngineLayer/devices/DspNotices.h"
#include "EngineLayer/devices/UnitOutputs.h"
#include "EngineLayer/devices/UsbStorage.h"
#include "EngineLayer/devices/VideoDecoder.h"
#include "EngineLayer/settings/DataManager.h"
#include "EngineLayer/system/SystemInfo.h"
#include "dsp/AudioServices.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "factory/ScheduleFactroy.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "lowlayer/BytePool.h"
#include "platform/base/Logger.h"
#include "platform/base/System.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SysInfoItems.h"

#include <utility>

namespace EngineLayer
{

namespace
{

using EngineApi::Provided;

constexpr Platform::Log logger { "EngineLayer/DeviceStatusManager", "DeviceStatusManager" };

constexpr int lastMemoryMs = 1000;
constexpr int usbScanMs = 1000;
constexpr int cameraVideoMs = 1000;
constexpr int heartbeatMs = 3000;
constexpr int autoTestMs = 2000;
constexpr int powerOffMs = 6000;

constexpr juce::uint32 fullVolume = 0xffffffff;

constexpr std::uint8_t autoTestReady[] = { 0x82, 0x02 };
/** Parameter of the favourites message that tells the satellite program of the power-off. */
constexpr int siriusPowerOff = Platform::satellitePowerOff;

/** Per process, not per manager: the decoder keeps its registers. The thread of the devices. */
VideoDecoder& videoDecoder()
{
    static VideoDecoder instance;
    return instance;
}

void logSource(const Platform::Log::Line& line, const char* what, McuSource source)
{
    line.info("%s Src Switch type:%d  Num:%d", what, source.type, source.number);
}

/** Type and number in front of a frame's data; -1 for what a short frame lacks. */
McuSource sourceIn(std::span<const std::uint8_t> data)
{
    const auto byteAt = [data](std::size_t at) { return at < data.size() ? data[at] : -1; };
    return { byteAt(0), byteAt(1) };
}

void sendHeartbeat()
{
    EngineApi::sendCommand(EngineApi::EVENT_HEAT_BEAT, { 0 });
}

} // namespace

DeviceStatusManager::DeviceStatusManager()
    : SystemTimer(Kernel::deviceStatusManagerId)
    , startPage(Pubhead::NUM_OF_PAGES)
{
}

void DeviceStatusManager::initialize()
{
    handleMessage(Kernel::MSG_SYS_INIT, 0, 0, nullptr);
}

void DeviceStatusManager::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32, const Kernel::Payload& payload)
{
    switch (id)
    {
    case msgReportChanges:
        reportChanges();
        break;
    case msgCameraVideo:
        cameraVideoPolled(arg1 != 0);
        break;
    case msgAudioChannel:
        followAudioChannel();
        break;
    case Kernel::MSG_SYS_INIT:
        startHardware();
        break;
    case Kernel::MSG_SYS_START:
        start();
        break;
    case Kernel::MSG_POWER_OFF_CONFIRM:
        powerOffConfirmed();
        break;
    case Kernel::MSG_STANDBY:
        standby(arg1);
        break;
    case Kernel::MSG_SYS_TIMER:
        timerExpired(arg1);
        break;
    case Kernel::MSG_HOST_EVENT:
        hostEvent(arg1, payload);
        break;
    case Kernel::MSG_FACTORY_RESET:
        factoryResetActive = true;
        break;
    case Kernel::MSG_NORMAL_SOURCE:
        sourceChanged();
        break;
    case Kernel::MSG_HEARTBEAT_STOP:
        stopHeartbeat();
        break;
    default:
        break;
    }
}

void DeviceStatusManager::startHardware()
{
    Platform::setWaveOutVolume(fullVolume);
    driveOutputs(true);
    DataManager::getInstance()->loadSystemFile();
    devices.set(EngineApi::usbStorage, isUsbStoragePresent());
    postDeviceJob(DeviceJob::decoderSetUp, [] { videoDecoder().initialise(); });
    startTimer(cameraVideoTimer, cameraVideoMs);
}

void DeviceStatusManager::start()
{
    waitingLastMemory = true;
    EngineApi::sendCommand(EngineApi::EVENT_GET_LAST_MEMORY);
    startTimer(lastMemoryTimer, lastMemoryMs);
    startTimer(usbScanTimer, usbScanMs);
}

void DeviceStatusManager::timerExpired(int timerId)
{
    switch (timerId)
    {
    case lastMemoryTimer:
        if (waitingLastMemory)
            EngineApi::sendCommand(EngineApi::EVENT_GET_LAST_MEMORY);
        else
            stopTimer(lastMemoryTimer);
        break;
    case usbScanTimer:
        scanUsb();
        break;
    case antitheftLeftTimer:
        stopTimer(antitheftLeftTimer);
        runStartSrc();
        EngineApi::requestStopPage(Pubhead::mbAntitheft);
        break;
    case cameraVideoTimer:
        pollCameraVideo();
        break;
    case heartbeatTimer:
        sendHeartbeat();
        if (const auto lost = agreement.takeLost())
            EngineApi::sendCommand(EngineApi::EVENT_SRC_SWITCH, { lost->type, lost->number });
        break;
    case autoTestTimer:
        handOverToAutoTest();
        break;
    case powerOffTimer:
        powerOffConfirmed();
        break;
    default:
        break;
    }
}

void DeviceStatusManager::powerOffConfirmed()
{
    stopTimer(powerOffTimer);
    Kernel::postSystemMessage(Kernel::systemStateManagerId, Kernel::MSG_POWER_OFF, 0, 0);
}

void DeviceStatusManager::standby(juce::int32 what)
{
    constexpr juce::int32 enter = 0, leave = 1;
    // The page itself says whether the unit is in standby: one that is in front or does not run stays as it is.
    if (what == enter)
        EngineApi::requestShowPage(Pubhead::mbStandby, true);
    else if (what == leave)
        EngineApi::requestStopPage(Pubhead::mbStandby);
    else if (!std::exchange(standbyRefused, true))
        logger().error("standby is entered by 0 and left by 1, not by %d", what);
}

void DeviceStatusManager::stopHeartbeat()
{
    logger().info("APP stop sending the heatbeat packets to MCU \r\n");
    stopTimer(heartbeatTimer);
}

void DeviceStatusManager::handOverToAutoTest()
{
    auto* session = Provided<EngineApi::AutoTestSession>::get();
    if (session == nullptr)
        return;
    if (session->isRunning())
        stopTimer(autoTestTimer);
    session->addMsgToBuffer(juce::MemoryBlock(autoTestReady, sizeof autoTestReady));
}

// What the microcontroller says.

void DeviceStatusManager::hostEvent(int command, const Kernel::Payload& payload)
{
    const auto source = sourceIn(LowLayer::bytesOf(payload));
    switch (command)
    {
    case EngineApi::EVENT_GET_LAST_MEMORY:
        lastMemoryAnswered();
        break;
    case EngineApi::EVENT_SRC_SWITCH:
        logSource(logger(), "MCU Requeset", source);
        if (source.isComplete())
            mcuRequestsSource(source);
        break;
    case EngineApi::EVENT_SRC_SWITCH_REPORT:
        logSource(logger(), "MCU report", source);
        if (source.isComplete())
            agreement.mcuConfirms(source);
        break;
    case EngineApi::EVENT_DEVICE_STATUS:
        mcuAsksDeviceStatus();
        break;
    case EngineApi::EVENT_POWER_OFF_READY:
        mcuPowersOff();
        break;
    default:
        break;
    }
    LowLayer::recycleBytes(payload);
}

void DeviceStatusManager::lastMemoryAnswered()
{
    waitingLastMemory = false;
    agreement.restart();
    SystemInfo::getInstance()->set(Platform::sysInfoVoltageShown, EngineApi::getSettingInt(Platform::voltmeterSetting));
    if (auto* chip = Provided<Dsp::ChipManager>::get())
    {
        auto* settings = Dsp::DSPSettingHelperImpl::getInstance();
        chip->init(*settings);
        settings->setListener(this);
    }
    if (auto* session = Provided<EngineApi::AutoTestSession>::get())
        session->start();
    startTimer(autoTestTimer, autoTestMs);
    sendHeartbeat();
    startTimer(heartbeatTimer, heartbeatMs);
    Kernel::postSystemMessage(Kernel::navicoManagerId, Kernel::MSG_NAVICO_REPORT, 0, 0);
}

void DeviceStatusManager::mcuRequestsSource(McuSource source)
{
    const auto request = agreement.mcuRequests(source);
    if (request == SourceAgreement::Request::repeated)
        return;
    const int page = Factory::ScheduleFactroy::getInstance()->pageForMcuSource(source.type, source.number);
    if (request == SourceAgreement::Request::schedule)
        EngineApi::requestShowPage(page, true);
    else
        startWith(page);
}

void DeviceStatusManager::mcuAsksDeviceStatus()
{
    devices.set(EngineApi::usbStorage, isUsbStoragePresent());
    if (devices.isReported())
        sendDeviceStatus();
    else
        reportChanges();
}

void DeviceStatusManager::mcuPowersOff()
{
    if (auto* remote = Provided<EngineApi::WiredRemote>::get())
    {
        remote->setDimmer(0);
        remote->restoreAfter(0); // nothing comes back on it
        remote->clearDisplay(true);
    }
    // Who asks again does not get it later.
    if (!isTimerRunning(powerOffTimer))
        startTimer(powerOffTimer, powerOffMs);
    EngineApi::sendRemoteMessage(Pubhead::AppSirius, EngineApi::RMSG_SXM_FAVOURITE, siriusPowerOff, 0);
}

// Sources.

void DeviceStatusManager::sourceChanged()
{
    if (factoryResetActive)
        return;
    const int page = EngineApi::getLastNormalSource();
    const auto [type, number] = Factory::ScheduleFactroy::getInstance()->mcuSourceForPage(page);
    const McuSource source { type, number };
    takeSoundOf(page);
    switch (agreement.unitSwitchedTo(source))
    {
    case SourceAgreement::Report::ask:
        EngineApi::sendCommand(EngineApi::EVENT_SRC_SWITCH, { type, number });
        break;
    case SourceAgreement::Report::confirm:
        EngineApi::sendCommand(EngineApi::EVENT_SRC_SWITCH_REPORT, { type, number });
        break;
    case SourceAgreement::Report::nothing:
        break;
    }
    logSource(logger(), "APP  REQUESET", source);
}

void DeviceStatusManager::takeSoundOf(int page)
{
    auto* chip = Provided<Dsp::ChipManager>::get();
    if (EngineApi::getHandler(page) == nullptr || chip == nullptr)
        return;
    audioChannel = EngineApi::getAudioChannel(page);
    chip->getACService().changeSource(audioChannel);
}

void DeviceStatusManager::audioChannelChanged()
{
    Kernel::postSystemMessage(Kernel::deviceStatusManagerId, msgAudioChannel, 0, 0);
}

void DeviceStatusManager::followAudioChannel()
{
    const int page = EngineApi::getLastNormalSource();
    if (!factoryResetActive && EngineApi::getAudioChannel(page) != audioChannel)
        takeSoundOf(page);
}

// Devices.

void DeviceStatusManager::setDeviceState(int kind, bool present)
{
    if (devices.set(kind, present))
        Kernel::postSystemMessage(Kernel::deviceStatusManagerId, msgReportChanges, 0, 0);
}

void DeviceStatusManager::scanUsb()
{
    if (devices.set(EngineApi::usbStorage, isUsbStoragePresent()))
        reportChanges();
}

void DeviceStatusManager::pollCameraVideo()
{
    // A slow bus answers later, not more often.
    if (std::exchange(cameraPollPending, true))
        return;
    postDeviceJob(DeviceJob::cameraPoll,
                  []
                  {
                      const bool signal = videoDecoder().hasSignal();
                      Kernel::postSystemMessage(Kernel::deviceStatusManagerId, msgCameraVideo, signal ? 1 : 0, 0);
                  });
}

void DeviceStatusManager::cameraVideoPolled(bool signal)
{
    cameraPollPending = false;
    if (signal == cameraVideoSignal)
        return;
    cameraVideoSignal = signal;
    if (devices.set(EngineApi::cameraVideo, signal))
        reportChanges();
}

void DeviceStatusManager::reportChanges()
{
    const auto changes = devices.takeChanges();
    if (changes.empty())
        return;
    for (const int kind : changes)
        listeners.call([kind](auto& listener) { listener.onDeviceStateChanged(kind); });
    sendDeviceStatus();
}

void DeviceStatusManager::sendDeviceStatus()
{
    const auto status = devices.getReportedStatus();
    EngineApi::sendCommand(EngineApi::EVENT_DEVICE_STATUS, { status.usb, status.others });
}

void DeviceStatusManager::setLowBatteryAlert(bool on)
{
    // One change at a time, so that the bar and the sound end as the last caller wanted.
    const std::lock_guard guard(alertLock);
    if (lowBatteryAlert.exchange(on) == on)
        return;
    if (auto* bar = Provided<EngineApi::LowBatteryBar>::get())
        bar->postMessage(Kernel::MSG_LOW_BATTERY_ALERT, on ? 1 : 0, 0, nullptr);
    SystemInfo::getInstance()->set(Platform::sysInfoLowBattery, on ? 1 : 0);
    if (auto* chip = Provided<Dsp::ChipManager>::get())
        chip->getACService().setAlert(on);
}

// What the DSP says.

void DeviceStatusManager::onVolumeChanged(int volume, int zone, bool show)
{
    announceVolume(zone, volume, show);
}

void DeviceStatusManager::onMuteChanged(bool mute)
{
    announceMute(mute);
}

} // namespace EngineLayer

namespace EngineApi
{

namespace
{

EngineLayer::DeviceStatusManager& manager()
{
    return *EngineLayer::DeviceStatusManager::getInstance();
}

} // namespace

void setDeviceState(int kind, bool present)
{
    manager().setDeviceState(kind, present);
}

bool getDeviceState(int kind)
{
    return manager().getDeviceState(kind);
}

void addDeviceStateListener(DeviceStateInterface* listener)
{
    if (listener != nullptr)
        manager().listeners.addOnce(listener);
}

void removeDeviceStateListener(DeviceStateInterface* listener)
{
    manager().listeners.remove(listener);
}

void startSourceWhenReady()
{
    manager().startSourceWhenReady();
}

int getStartPage()
{
    return manager().getStartPage();
}

bool isDummyPowerOffCondition()
{
    return false;
}

bool isISRCondition()
{
    return manager().isISRCondition();
}

bool isCallCondition()
{
    return false;
}

void audioChannelChanged()
{
    manager().audioChannelChanged();
}

int getAntitheftValue()
{
    return manager().getAntitheftValue();
}

bool isDiscAudioAvailable()
{
    return manager().isDiscAudioAvailable();
}

bool isDiscVideoAvailable()
{
    return manager().isDiscVideoAvailable();
}

void setLowBatteryAlert(bool on)
{
    manager().setLowBatteryAlert(on);
}

bool isLowBatteryAlert()
{
    return manager().isLowBatteryAlert();
}

void setEnterTestMode(bool on)
{
    manager().setEnterTestMode(on);
}

bool getEnterTestMode()
{
    return manager().getEnterTestMode();
}

} // namespace EngineApi
