#include "ApplicationLayer/bluetooth/BluetoothApplication.h"

#include "EngineApi/AutoTestSession.h"
#include "EngineApi/DeviceStatus.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Remote.h"
#include "EngineApi/SystemState.h"
#include "EngineLayer/devices/UnitOutputs.h"
#include "EngineLayer/system/SystemInfo.h"
#include "kernel/ComponentRegistration.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "lowlayer/BytePool.h"
#include "platform/base/Logger.h"
#include "platform/base/System.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SysInfoItems.h"

namespace ApplicationLayer
{

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;

namespace
{

const Kernel::ComponentRegistration registration { Kernel::bluetoothApplicationId,
                                                   []() -> Kernel::SystemTask* { return new BluetoothApplication; } };

constexpr int offMs = 1000;
constexpr int pandoraMs = 10'000;
constexpr int supplyMs = 2000;
constexpr int autoTestMs = 1000;
constexpr std::size_t mostLateReplies = 64;

constexpr const char* noDevice = "No Device";

/** arg1 of RMSG_BT_CONTROL. */
enum Control : juce::int32 {
    controlOff = Platform::phoneOff,
    controlOn = Platform::phoneOn,
    controlAcceptCall = Platform::phoneAccept,
    controlEndCall = Platform::phoneHangUp,
    controlAutoTest = Platform::phoneTest
};

/** arg1 of RMSG_BT_STATE. */
enum Report : juce::int32 {
    reportModule = Platform::phoneModule,
    reportCall = Platform::phoneCall,
    reportValue1 = Platform::phoneSignal,
    reportValue2 = Platform::phoneBattery,
    reportPairedList = Platform::phonePaired,
    reportSpp = Platform::phoneData,
    reportPandora = Platform::phonePandora,
    reportOpenSetup = Platform::phoneWantsSetup,
    reportOpenAudio = Platform::phoneWantsAudio
};
/** Values of the module's report. */
constexpr juce::int32 moduleDisconnected = 1;
constexpr juce::int32 moduleConnected = 2;
/** Values of the call's report. */
constexpr juce::int32 callComes = 8;
constexpr juce::int32 moduleIsOn = 9;
/** Value of the reports of the two links. */
constexpr juce::int32 linkOpen = 0;

/** arg1 of RMSG_IPOD_CONTROL. */
enum iPodControl : juce::int32 {
    iPodAuthenticate = Platform::iPodAuthenticate,
    iPodPrepared = Platform::iPodPrepare,
    iPodLeave = Platform::iPodLeaveLink
};

constexpr juce::int32 iPodDriverMark = Platform::iPodDriver;
constexpr juce::int32 iPodDriverLost = 7;
constexpr juce::int32 pandoraUp = 1;

/** arg1 of RMSG_BT_LINK. */
enum Link : juce::int32 { linkRequest = Platform::phoneLinkRequest, linkIsAudio = Platform::phoneLinkAudio };
constexpr juce::int32 requestOpen = 1;
constexpr juce::int32 requestClose = 5;

/** Second byte of a command of the test equipment. */
enum AutoTest : int { testAddress = 2, testConnected = 3, testModule = 4 };

constexpr Platform::Log logger { "ApplicationLayer/BluetoothApplication", "BluetoothApplication" };

juce::int32 info(Platform::SysInfoItem item)
{
    return SystemInfo::getInstance()->get(item);
}

void setInfo(Platform::SysInfoItem item, juce::int32 value)
{
    SystemInfo::getInstance()->set(item, value);
}

/** The item goes from one value to another; any other value stays. */
bool moveInfo(Platform::SysInfoItem item, juce::int32 from, juce::int32 to)
{
    if (info(item) != from)
        return false;
    setInfo(item, to);
    return true;
}

bool isEnabled()
{
    return getSettingInt(Platform::bluetoothSetting) != 0;
}

void storeDeviceName(const char* name)
{
    setSettingString(Platform::bluetoothNameSetting, name, true, AppUnknown);
}

void controlProgram(Control control)
{
    sendRemoteMessage(AppBluetooth, RMSG_BT_CONTROL, control, 0);
}

void control(iPodControl what)
{
    sendRemoteMessage(AppiPod, RMSG_IPOD_CONTROL, what, 0);
}

void tellLinkLost(int appType)
{
    sendRemoteMessage(appType, WM_MESSAGE_IPOD_DRIVER, iPodDriverMark, iPodDriverLost);
}

void stopIfRunning(PageHandler& handler)
{
    if (handler.isRunning())
        handler.requestState(AppAction::ToStop, true);
}

} // namespace

BTPhoneHandler::BTPhoneHandler()
    : AppHandler(mbBTPhone)
{
}

void BTPhoneHandler::adjustScheduleInfo(ScheduleInfo& info)
{
    if (!isCallCondition())
        info.playLevel = info.audioLevel = PageScheduleConfig::noCompetition;
}

int BTPhoneHandler::getAudioChannel() const
{
    return isCallCondition() ? int { Dsp::eAudioWince } : AppHandler::getAudioChannel();
}

void BTPhoneHandler::openDeviceList()
{
    goToDeviceList = true;
    requestShow(false);
}

void BTPhoneHandler::decorateCommandLine(SwitchType, const PageStates&, const PageStates&,
                                         Platform::AppCommandLine& commandLine)
{
    if (std::exchange(goToDeviceList, false) && commandLine.isPageShow())
    {
        auto extra = Platform::Bundle::obtain();
        extra->putBool("gotodevicelist", true);
        extra->putInt("frontshow", getFrontShow());
        commandLine.putExtraData(std::move(extra));
    }
}

BTAudioHandler::BTAudioHandler()
    : AppHandler(mbBTAudio)
{
}

void BTAudioHandler::decorateCommandLine(SwitchType, const PageStates&, const PageStates&,
                                         Platform::AppCommandLine& commandLine)
{
    constexpr juce::int32 open = 2, authenticated = 2;
    if (commandLine.isSourceExit())
        return control(iPodLeave);
    if (!commandLine.isSourceEnter() || info(Platform::sysInfoSppLink) != open)
        return;
    if (info(Platform::sysInfoiPodAuthentication) == 0)
        control(iPodAuthenticate);
    else if (info(Platform::sysInfoiPodAuthentication) == authenticated)
        control(iPodPrepared);
}

BluetoothApplication::BluetoothApplication()
    : BluetoothApplication(new BTPhoneHandler, new BTAudioHandler)
{
}

BluetoothApplication::BluetoothApplication(juce::ReferenceCountedObjectPtr<BTPhoneHandler> phoneHandler,
                                           juce::ReferenceCountedObjectPtr<BTAudioHandler> audioHandler)
    : ApplicationTask({ phoneHandler.get(), audioHandler.get() })
    , SystemTimer(Kernel::bluetoothApplicationId)
    , phone(std::move(phoneHandler))
    , audio(std::move(audioHandler))
{
}

void BluetoothApplication::initialize()
{
    ApplicationTask::initialize();
    addSettingListener(this);
}

void BluetoothApplication::onRelease()
{
    removeSettingListener(this);
    ApplicationTask::onRelease();
}

bool BluetoothApplication::acceptsKey(int index, int)
{
    return index == Platform::bluetoothSetting;
}

void BluetoothApplication::onSettingChanged(int, int)
{
    Kernel::postSystemMessage(Kernel::bluetoothApplicationId,
                              isEnabled() ? Kernel::MSG_BT_SWITCH_ON : Kernel::MSG_BT_SWITCH_OFF, 0, 0);
}

void BluetoothApplication::handleOwnMessage(const Kernel::SystemMessage& message)
{
    switch (message.id)
    {
    case Kernel::MSG_SYS_READY:
        launchBackProgram(mbBTAudio);
        return switchOnIfEnabled();
    case Kernel::MSG_SYS_TIMER:
        return timerExpired(message.arg1);
    case Kernel::MSG_APP_REMOTE:
        if (const auto* remote = Kernel::payloadAs<Platform::RemoteMessage>(message.payload);
            remote != nullptr && remote->what == RMSG_BT_STATE)
            moduleReports(remote->arg1, remote->arg2);
        return;
    case Kernel::MSG_FACTORY_RESET:
        sendRemoteMessage(AppBluetooth, RMSG_FACTORY_RESET, AppBluetooth, 0);
        return;
    case Kernel::MSG_NORMAL_SOURCE:
        return sourceChanged(message.arg1, message.arg2);
    case Kernel::MSG_BT_DEVICE_LIST:
        return phone->openDeviceList();
    case Kernel::MSG_BT_SWITCH_OFF:
        return switchOff();
    case Kernel::MSG_BT_SWITCH_ON:
        return switchOnIfEnabled();
    case Kernel::MSG_BT_CALL_ACCEPT:
        return controlProgram(controlAcceptCall);
    case Kernel::MSG_BT_CALL_END:
        return controlProgram(controlEndCall);
    case Kernel::MSG_AUTOTEST_COMMAND:
        return autoTest(LowLayer::bytesOf(message.payload));
    default:
        return;
    }
}

void BluetoothApplication::timerExpired(int timerId)
{
    stopTimer(timerId);
    if (timerId == supplyTimer)
        driveOutputs(true);
    if (timerId == autoTestTimer)
        for (const auto& reply : std::exchange(lateReplies, {}))
            answerAutoTest(reply);
}

void BluetoothApplication::switchOff()
{
    storeDeviceName(noDevice);
    startTimer(offTimer, offMs);
    if (!isEnabled())
        setInfo(Platform::sysInfoBluetooth, 0);
    controlProgram(controlOff);
    stopIfRunning(*phone);
    stopIfRunning(*audio);
}

void BluetoothApplication::switchOnIfEnabled()
{
    if (!isEnabled())
        return;
    stopTimer(offTimer);
    setInfo(Platform::sysInfoBluetooth, 1);
    setDeviceState(bluetoothConnected, false);
    controlProgram(controlOn);
}

void BluetoothApplication::sourceChanged(int page, juce::int32 value)
{
    constexpr int halfWord = 16;
    const auto request = [value](juce::int32 what)
    {
        const auto argument = static_cast<juce::uint32>(value) << halfWord | static_cast<juce::uint32>(what);
        sendRemoteMessage(AppBluetooth, RMSG_BT_LINK, linkRequest, static_cast<juce::int32>(argument));
    };
    stopTimer(pandoraTimer);
    sendRemoteMessage(AppBluetooth, RMSG_BT_LINK, linkIsAudio, page == mbBTAudio ? 1 : 0);
    if (page == mbUSBAudio && sppOpen)
    {
        request(requestClose);
        Platform::debugPrint(">>>>>>>>>>>>>>>>>>Requsetion close spp\r\n");
    }
    else if (page == mbBTAudio && !sppOpen && btConnected)
    {
        request(requestOpen);
        Platform::debugPrint(">>>>>>>>>>>>>>>>>>Requsetion open iPod spp\r\n");
    }
}

void BluetoothApplication::moduleReports(juce::int32 what, juce::int32 value)
{
    switch (what)
    {
    case reportModule:
        return moduleState(value);
    case reportCall:
        return callState(value);
    case reportValue1:
        return setInfo(Platform::sysInfoBluetoothValue1, value);
    case reportValue2:
        return setInfo(Platform::sysInfoBluetoothValue2, value);
    case reportPairedList:
        return pairedListShown();
    case reportSpp:
        return sppLink(value);
    case reportPandora:
        return pandoraLink(value);
    case reportOpenSetup:
        return requestShowPage(mbSetup, false);
    case reportOpenAudio:
        return audio->requestShow(false);
    default:
        return;
    }
}

void BluetoothApplication::moduleState(juce::int32 value)
{
    btConnected = value == moduleConnected;
    Platform::debugPrint("handleBTState::WP_BT_STATE = %d\r\n", value);
    setInfo(Platform::sysInfoBluetooth, isEnabled() ? value : 0);
    if (value == moduleDisconnected)
        disconnected();
    setDeviceState(bluetoothConnected, btConnected);
}

void BluetoothApplication::disconnected()
{
    logger().info("BluetoothApplication recv bt disconnect");
    sppOpen = false;
    stopTimer(pandoraTimer);
    storeDeviceName(noDevice);
    // An iPod that is on the cable, too, stays there.
    if (!moveInfo(Platform::sysInfoiPodLink, 2, 0))
        moveInfo(Platform::sysInfoiPodLink, 3, 1);
    for (const auto item : { Platform::sysInfoPairedList, Platform::sysInfoSppLink, Platform::sysInfoPandoraLink })
        setInfo(item, 0);
    tellLinkLost(AppiPod);
    tellLinkLost(AppPandora);
    setDeviceState(pandoraOnBluetooth, false);
}

void BluetoothApplication::callState(juce::int32 value)
{
    if (value == callComes)
        return phone->requestShow(true);
    if (value != moduleIsOn)
        return;
    setInfo(Platform::sysInfoBluetooth, isEnabled() && getSystemState() != kDummyPowerOff ? 1 : 0);
    setDeviceState(bluetoothConnected, false);
}

void BluetoothApplication::pairedListShown()
{
    if (info(Platform::sysInfoPairedList) == 1 && !moveInfo(Platform::sysInfoiPodLink, 1, 3))
        moveInfo(Platform::sysInfoiPodLink, 0, 2);
    logger().info("paired list " + juce::String(info(Platform::sysInfoPairedList)) + ", iPod link " +
                  juce::String(info(Platform::sysInfoiPodLink)));
}

void BluetoothApplication::sppLink(juce::int32 value)
{
    stopTimer(pandoraTimer);
    if (value == linkOpen)
        return sppOpened();
    Platform::debugPrint("BT SPP CLOSE \r\n");
    sppOpen = false;
    if (!moveInfo(Platform::sysInfoSppLink, 1, 0))
        tellLinkLost(AppiPod);
}

void BluetoothApplication::sppOpened()
{
    constexpr juce::int32 open = 2;
    Platform::debugPrint("BT SPP OPEN \r\n");
    sppOpen = true;
    setInfo(Platform::sysInfoSppLink, open);
    if (getSource(getNormalSource()) == SRC_BT_AUDIO && info(Platform::sysInfoiPodAuthentication) == 0)
    {
        Platform::debugPrint("start BT Auth\r\n");
        return control(iPodAuthenticate);
    }
    // The link failed to authenticate; without its supply for a while the module begins anew.
    driveOutputs(false);
    Platform::debugPrint("RESET USB DEVICE\r\n");
    startTimer(supplyTimer, supplyMs);
}

void BluetoothApplication::pandoraLink(juce::int32 value)
{
    constexpr juce::int32 up = 2, playing = 2;
    const bool isSource = getNormalSource() == mbiPodPandora;
    if (value == linkOpen)
    {
        stopTimer(pandoraTimer);
        setDeviceState(pandoraOnBluetooth, true);
        setInfo(Platform::sysInfoPandoraLink, up);
        if (isSource)
            sendRemoteMessage(AppPandora, RMSG_PANDORA_NOTIFY, 0, pandoraUp);
        return;
    }
    setDeviceState(pandoraOnBluetooth, false);
    setInfo(Platform::sysInfoPandoraLink, 0);
    if (!isSource || info(Platform::sysInfoPandoraSource) != playing)
        return;
    startTimer(pandoraTimer, pandoraMs);
    tellLinkLost(AppPandora);
}

void BluetoothApplication::autoTest(std::span<const std::uint8_t> request)
{
    constexpr std::size_t head = 2;
    if (!getEnterTestMode() || request.size() < head)
        return;
    Platform::debugPrint("BT AutoTestHandle:%s\r\n",
                         Platform::hexPairs(request.data(), static_cast<int>(request.size())).toRawUTF8());
    std::vector<std::uint8_t> reply(request.begin(), request.begin() + head);
    switch (request[1])
    {
    case testAddress:
    {
        const auto id = Platform::getUniqueId();
        reply.push_back(id ? 0 : 1);
        if (id)
        {
            constexpr int lowBits = 24;
            std::array<char, 15> text {};
            std::snprintf(text.data(), text.size(), "0x0002%02x%06x", *id >> lowBits, *id & 0xffffff);
            reply.insert(reply.end(), text.begin(), text.end());
        }
        break;
    }
    case testConnected:
        reply.push_back(getDeviceState(bluetoothConnected) ? 1 : 0);
        break;
    case testModule:
        reply.push_back(1);
        // Of a flood the first are answered early: the session bounds what waits there.
        if (lateReplies.size() == mostLateReplies)
        {
            answerAutoTest(lateReplies.front());
            lateReplies.pop_front();
        }
        lateReplies.push_back(std::move(reply));
        startTimer(autoTestTimer, autoTestMs);
        return controlProgram(controlAutoTest);
    default:
        break;
    }
    answerAutoTest(reply);
}

} // namespace ApplicationLayer
