#include "ApplicationLayer/players/iPodApplication.h"

#include "EngineApi/Pages.h"
#include "EngineApi/Programs.h"
#include "EngineLayer/system/SystemInfo.h"
#include "dsp/AudioChannel.h"
#include "kernel/ComponentRegistration.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Logger.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SysInfoItems.h"

#include <utility>

namespace ApplicationLayer
{

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;

namespace
{

const Kernel::ComponentRegistration registration { Kernel::iPodApplicationId,
                                                   []() -> Kernel::SystemTask* { return new iPodApplication; } };

/** arg1 of RMSG_IPOD_DEVICE. */
enum DeviceEvent : juce::int32 {
    attached = Platform::iPodAttached,
    authentication = Platform::iPodAuthentication,
    detached = Platform::iPodDetached,
    restartProgram = Platform::iPodWantsRestart
};
/** arg1 of RMSG_IPOD_AUDIO_PATH, and the path that is not digital. */
constexpr juce::int32 pathReport = 1;
constexpr juce::int32 analogPath = Platform::iPodAnalog;
constexpr juce::int32 digitalPath = Platform::iPodDigital;

/** arg1 of RMSG_IPOD_CONTROL. */
enum Control : juce::int32 { authenticate = Platform::iPodAuthenticate, prepared = Platform::iPodPrepare };

/** WM_MESSAGE_IPOD_DRIVER: arg1, and the states in arg2 that mean an iPod is there. */
constexpr juce::int32 driverMark = Platform::iPodDriver;
constexpr juce::int32 driverConnected = 1;
constexpr juce::int32 lastDriverState = 4;

constexpr Platform::Log logger { "ApplicationLayer/iPodApplication", "iPodApplication" };

juce::int32 info(Platform::SysInfoItem item)
{
    return SystemInfo::getInstance()->get(item);
}

void control(Control what)
{
    sendRemoteMessage(AppiPod, RMSG_IPOD_CONTROL, what, 0);
}

bool isSource(int source)
{
    return getSource(getNormalSource()) == source;
}

bool isPandoraAvailable()
{
    return getDeviceState(pandoraOniPod) && getSettingInt(Platform::internetRadioSetting) != 0;
}

} // namespace

iPodSourceHandler::iPodSourceHandler(int page, std::shared_ptr<iPodConnection> sharedConnection)
    : AppHandler(page)
    , connection(std::move(sharedConnection))
{
}

int iPodSourceHandler::getAudioChannel() const
{
    if (!connection->connected)
        return AppHandler::getAudioChannel();
    return connection->analogAudio ? Dsp::eAudioAux2 : Dsp::eAudioWince;
}

void iPodSourceHandler::decorateCommandLine(SwitchType, const PageStates&, const PageStates&,
                                            Platform::AppCommandLine& commandLine)
{
    if (!commandLine.isSourceExit())
        return;
    connection->connected = false;
    audioChannelChanged();
}

ReariPodHandler::ReariPodHandler()
    : AppHandler(mbReariPod)
{
}

PandoraHandler::PandoraHandler()
    : AppHandler(mbiPodPandora)
{
}

iPodApplication::iPodApplication()
    : iPodApplication(std::make_shared<iPodConnection>())
{
}

iPodApplication::iPodApplication(std::shared_ptr<iPodConnection> sharedConnection)
    : ApplicationTask({ new iPodAudioHandler(sharedConnection), new iPodVideoHandler(sharedConnection),
                        new ReariPodHandler, new PandoraHandler })
    , connection(std::move(sharedConnection))
{
}

void iPodApplication::initialize()
{
    ApplicationTask::initialize();
    addDeviceStateListener(this);
    addSettingListener(this);
    addConnectListener(this);
}

void iPodApplication::onRelease()
{
    removeConnectListener(this);
    removeSettingListener(this);
    removeDeviceStateListener(this);
    ApplicationTask::onRelease();
}

void iPodApplication::onDeviceStateChanged(int kind)
{
    if (kind == pandoraOniPod)
        Kernel::postSystemMessage(Kernel::iPodApplicationId, msgPandoraChanged, 0, 0);
}

bool iPodApplication::acceptsKey(int index, int)
{
    return index == Platform::internetRadioSetting;
}

void iPodApplication::onSettingChanged(int, int)
{
    if (!isPandoraAvailable())
        setDeviceState(pandoraOniPod, false);
}

void iPodApplication::onAppConnectState(int appType, int state)
{
    if (appType == AppiPod && state == kDisconnect)
        Kernel::postSystemMessage(Kernel::iPodApplicationId, msgProgramGone, 0, 0);
}

void iPodApplication::handleOwnMessage(const Kernel::SystemMessage& message)
{
    switch (message.id)
    {
    case Kernel::MSG_SYS_READY:
        return launchBackProgram(mbiPodAudio);
    case Kernel::MSG_APP_REMOTE:
        if (const auto* remote = Kernel::payloadAs<Platform::RemoteMessage>(message.payload))
            fromProgram(*remote);
        return;
    case msgPandoraChanged:
        if (getDeviceState(pandoraOniPod) && getNormalSource() == mbUSBAudio)
            requestShowPage(mbiPodPandora, true);
        return;
    case msgProgramGone:
        return programGone();
    default:
        return;
    }
}

void iPodApplication::fromProgram(const Platform::RemoteMessage& message)
{
    switch (message.what)
    {
    case RMSG_IPOD_AUDIO_PATH:
        if (message.arg1 == pathReport)
            audioPath(message.arg2);
        return;
    case RMSG_IPOD_DEVICE:
        return deviceEvent(message.arg1, message.arg2);
    case WM_MESSAGE_IPOD_DRIVER:
        if (message.arg1 != driverMark || message.arg2 < driverConnected || message.arg2 > lastDriverState)
            return;
        if (message.arg2 == driverConnected)
            logger().info("WM_MESSAGE_IPOD_DRIVER----->LP_IPOD_CONNECT : %d\n", message.arg2);
        return setDeviceState(iPodConnected, true);
    default:
        return;
    }
}

void iPodApplication::audioPath(juce::int32 path)
{
    const bool isNew = !connection->connected.exchange(true);
    const bool changes = connection->analogAudio ? path == digitalPath : path == analogPath;
    if (changes)
        connection->analogAudio = path == analogPath;
    if (!changes && !isNew)
        return;
    if (isSource(SRC_IPOD))
        requestPageState(getNormalSource(), AppAction::ToPlay, true);
    audioChannelChanged();
}

void iPodApplication::deviceEvent(juce::int32 what, juce::int32 value)
{
    switch (what)
    {
    case attached:
        if (value == 1)
            deviceAttached();
        return;
    case authentication:
        return deviceAuthenticated(value == 1);
    case detached:
        return deviceDetached(value == 0);
    case restartProgram:
        // Its end is only noticed later, and until then it would count as running.
        restarting = true;
        terminateApp(AppiPod);
        if (getAppState(AppiPod) == kDisconnect)
            programGone();
        return;
    default:
        return;
    }
}

void iPodApplication::programGone()
{
    if (std::exchange(restarting, false))
        launchBackProgram(mbiPodAudio);
}

void iPodApplication::deviceAttached()
{
    // The driver has it already; nobody in this unit asks for that.
    if (info(Platform::sysInfoiPodDriver) == 1)
        return;
    constexpr juce::int32 overBluetooth = 2, onBoth = 3, onCable = 1;
    const auto link = info(Platform::sysInfoiPodLink);
    if (link == overBluetooth)
        SystemInfo::getInstance()->set(Platform::sysInfoiPodLink, onBoth);
    else if (link == 0)
        SystemInfo::getInstance()->set(Platform::sysInfoiPodLink, onCable);
    if (info(Platform::sysInfoiPodAuthentication) == 0)
        control(authenticate);
}

void iPodApplication::deviceAuthenticated(bool succeeded) const
{
    constexpr juce::int32 overCable = 1, overBluetooth = 2;
    const auto authenticated = info(Platform::sysInfoiPodAuthentication);
    if (succeeded && authenticated == overBluetooth && isSource(SRC_BT_AUDIO))
    {
        logger().info("Send WP_IPOD_DEVICE_PREPARE_READY, cur bt");
        control(prepared);
    }
    if (authenticated == overCable)
        setDeviceState(pandoraOniPod, succeeded);
}

void iPodApplication::deviceDetached(bool unexpected)
{
    constexpr juce::int32 overBluetooth = 2, open = 2;
    setDeviceState(iPodConnected, false);
    setDeviceState(pandoraOniPod, false);
    connection->analogAudio = false;
    audioChannelChanged();
    if (unexpected && info(Platform::sysInfoiPodLink) == overBluetooth && info(Platform::sysInfoSppLink) == open &&
        isSource(SRC_BT_AUDIO))
        control(authenticate);
}

} // namespace ApplicationLayer
