#include "ApplicationLayer/menu/MainMenuApplication.h"

#include "EngineApi/Bars.h"
#include "EngineApi/DeviceStatus.h"
#include "EngineApi/KeyCodes.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Programs.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Settings.h"
#include "EngineApi/WiredRemote.h"
#include "dsp/AudioServices.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "kernel/ComponentRegistration.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/settings/SetupIndex.h"

namespace ApplicationLayer
{

using namespace EngineApi;
using namespace Pubhead;
using EngineApi::AppAction;

namespace
{

const Kernel::ComponentRegistration registration { Kernel::mainMenuApplicationId,
                                                   []() -> Kernel::SystemTask* { return new MainMenuApplication; } };

constexpr int retryMs = 500;
constexpr int idleMs = 5000;

/** arg1 of RMSG_MAINMENU_NOTIFY. */
enum Notice : juce::int32 {
    normalSourceNotice = Platform::menuSource,
    stateNotice = Platform::menuState,
    valueNotice = Platform::menuValue,
    lastSourceNotice = Platform::menuLastSource
};

/** arg1 of RMSG_APP_EVENT, beside those that every application takes. */
enum ProgramEvent : juce::int32 {
    wantsState = Platform::appEventWantsState,
    wantsStandby = Platform::appEventStandby,
    wantsSourceMenu = Platform::appEventSourceMenu
};

/** arg1 of MSG_MENU_COMMAND. */
enum Command : juce::int32 {
    frontOrRear = Platform::commandFrontOrRear,
    showNavigation = Platform::commandNavigation,
    showMenu = Platform::commandMenu,
    showPhone = Platform::commandPhone,
    showMaintenance = Platform::commandMaintenance,
    showTyrePressures = Platform::commandTyres,
    openTelematics = Platform::commandTelematicsOpen,
    closeTelematics = Platform::commandTelematicsClose,
    standby = Platform::commandStandby,
    showSource = Platform::commandSource,
    panel = Platform::commandPanel
};

/** arg2 of the panel command. */
enum PanelCommand : juce::int32 {
    louder = Platform::panelStepLouder,
    softer = Platform::panelStepSofter,
    menuAndBack = Platform::panelMenuAndBack,
    menuOrSource = Platform::panelMenuOrSource,
    mute = Platform::panelMute,
    showZone2Volume = Platform::panelZone2Volume
};

/** The source key of the panel that walks through the menu instead of closing it. */
constexpr juce::int32 walkingSourceKey = 2;
constexpr juce::int32 walkOn = 221;

constexpr int zone2 = 2;
constexpr int remoteRow = 1;
constexpr int remoteColumn = 1;
constexpr int remoteTextMs = 2000;

Platform::Bundle::Ptr menuState()
{
    std::vector<juce::uint8> pages;
    for (int page = 0; page <= NUM_OF_PAGES; ++page)
        if (isAvailable(page))
            pages.push_back(static_cast<juce::uint8>(page));
    auto state = Platform::Bundle::obtain();
    state->putByteArray("state", pages.data(), static_cast<int>(pages.size()));
    state->putInt("normalSrc", getNormalSource());
    state->putInt("rearSrc", getRearPage());
    state->putInt("frontSrc", getLastSourcePage());
    return state;
}

void notifyMenu(Notice notice, juce::int32 value, Platform::Bundle::Ptr bundle = nullptr)
{
    sendRemoteMessage(AppMainMenu, RMSG_MAINMENU_NOTIFY, notice, value, std::move(bundle));
}

/** What the menu offers under this page. */
int offeredPage(int page)
{
    if (page >= mbTuner && page <= mbHDRadioISR)
        return mbAVOff;
    if (page == mbUSBAudio && getDeviceState(pandoraOniPod))
        return mbiPodPandora;
    return page;
}

void toggleFrontAndRear()
{
    if (!isRearPage(getFrontShow()))
        return requestShowPage(getRearPage(), true);
    const int last = getLastSourcePage();
    requestShowPage(last == mbMainMenu ? getNormalSource() : last, true);
}

void openPhone()
{
    const int front = getFrontShow();
    if (front == mbBTPhone || front == mbBTAudio)
        Kernel::postSystemMessage(Kernel::bluetoothApplicationId, Kernel::MSG_BT_DEVICE_LIST, 0, 0);
    else
        requestShowPage(mbBTPhone, false);
}

/** 0 enters, 1 leaves. */
void passOnStandby(juce::int32 value)
{
    Kernel::postSystemMessage(Kernel::deviceStatusManagerId, Kernel::MSG_STANDBY, value, 0);
}

void announceZone2Volume()
{
    if (getSettingInt(Platform::zone2OnSetting) != 1)
        return;
    const int volume = Dsp::DSPSettingHelperImpl::getInstance()->getVolume(true);
    if (auto* bar = Provided<VolumeBar>::get())
        bar->postMessage(Kernel::MSG_VOLUME_SHOW, zone2, volume, nullptr);
    auto* remote = Provided<WiredRemote>::get();
    if (remote == nullptr)
        return;
    remote->clearRow(remoteRow);
    remote->showText(remoteRow, remoteColumn,
                     getSettingString(Platform::zone2NameSetting) + " Vol. " + juce::String(volume), true);
    // Last of all: whoever ends it meanwhile would leave the text there.
    remote->restoreAfter(remoteTextMs);
}

} // namespace

MainMenuHandler::MainMenuHandler()
    : AppHandler(mbMainMenu)
{
}

void MainMenuHandler::handleMessage(const Kernel::SystemMessage& message)
{
    constexpr int halfWord = 16;
    switch (message.id)
    {
    case Kernel::MSG_MENU_VALUE:
        return notifyMenu(valueNotice, static_cast<juce::int32>(static_cast<juce::uint32>(message.arg1) << halfWord |
                                                                (static_cast<juce::uint32>(message.arg2) & 0xffff)));
    case Kernel::MSG_NORMAL_SOURCE:
        return notifyMenu(normalSourceNotice, message.arg1);
    case Kernel::MSG_LAST_SOURCE_PAGE:
        return notifyMenu(lastSourceNotice, message.arg1);
    case Kernel::MSG_MENU_UNUSED:
    case Kernel::MSG_MENU_EVENT:
        return;
    case Kernel::MSG_MENU_PAGE:
        return showMenuPage(message.arg1);
    default:
        return AppHandler::handleMessage(message);
    }
}

void MainMenuHandler::sendMenuState() const
{
    notifyMenu(stateNotice, 0, menuState());
}

void MainMenuHandler::decorateCommandLine(SwitchType switchType, const PageStates&, const PageStates&,
                                          Platform::AppCommandLine& commandLine)
{
    if (switchType != SwitchType::ToRun && !commandLine.isPageShow())
        return;
    commandLine.putExtraData(menuState());
    restartIdleTimer();
}

void MainMenuHandler::onKey(juce::int32 key, juce::int32 value)
{
    switch (key)
    {
    case KEY_RETURN:
        if (isOnTop())
            requestStopPage(mbMainMenu);
        return;
    case KEY_SOURCE:
        return sourceKey(value);
    case KEY_MENU:
        sendRemoteMessage(AppMainMenu, RMSG_KEY, key, value);
        return;
    case KEY_INFOBAR_SWITCH_SPEAKER:
        return restartIdleTimer();
    default:
        return;
    }
}

void MainMenuHandler::sourceKey(juce::int32 value)
{
    const bool walks = value == walkingSourceKey;
    const bool onTop = isOnTop();
    if (!onTop)
        requestShowPage(mbMainMenu, true);
    else if (!walks)
        requestStopPage(mbMainMenu);
    if (walks)
        sendRemoteMessage(AppMainMenu, RMSG_KEY, KEY_SOURCE, onTop ? walkOn : walkingSourceKey);
}

void MainMenuHandler::showMenuPage(int page)
{
    page = offeredPage(page);
    getTimers().stopTimer(retryTimer);
    if (page == mbRearOff)
    {
        requestShowPage(getNormalSource(), true);
        return requestStopPage(getRearPage());
    }
    const auto handler = getHandler(page);
    if (handler != nullptr && getAppState(handler->getAppType()) == kClosing)
    {
        retryPage = page;
        getTimers().startTimer(retryTimer, retryMs);
        return terminateApp(handler->getAppType());
    }
    requestShowPage(page, false);
}

void MainMenuHandler::restartIdleTimer()
{
    getTimers().startTimer(idleTimer, idleMs);
}

void MainMenuHandler::returnToSource() const
{
    if (isOnTop())
        requestPageState(getNormalSource(), AppAction::ToRun, true);
}

void MainMenuHandler::onTimer(int timerId)
{
    if (timerId == retryTimer)
        showMenuPage(retryPage);
    else if (timerId == idleTimer)
        returnToSource();
}

MainMenuApplication::MainMenuApplication()
    : MainMenuApplication(new MainMenuHandler)
{
}

MainMenuApplication::MainMenuApplication(juce::ReferenceCountedObjectPtr<MainMenuHandler> menuHandler)
    : ApplicationTask({ menuHandler.get() })
    , handler(std::move(menuHandler))
{
}

void MainMenuApplication::handleOwnMessage(const Kernel::SystemMessage& message)
{
    switch (message.id)
    {
    case Kernel::MSG_SYS_READY:
        return launchBackProgram(mbMainMenu);
    case Kernel::MSG_APP_REMOTE:
        return fromProgram(message);
    case Kernel::MSG_MENU_COMMAND:
        return command(message.arg1, message.arg2);
    case Kernel::MSG_MENU_REMOTE_EVENT:
        if (message.arg1 != 1)
            return;
        savedPage = getFrontShow();
        returnPending = true;
        return requestPageState(getNormalSource(), AppAction::ToShow, true);
    default:
        return;
    }
}

void MainMenuApplication::fromProgram(const Kernel::SystemMessage& message) const
{
    const auto* remote = Kernel::payloadAs<Platform::RemoteMessage>(message.payload);
    if (remote == nullptr || remote->what != RMSG_APP_EVENT)
        return;
    switch (remote->arg1)
    {
    case wantsState:
        return handler->sendMenuState();
    case wantsStandby:
        return passOnStandby(remote->arg2);
    case wantsSourceMenu:
        if (const int normal = getNormalSource(); remote->arg2 == normal)
            sendRemoteMessage(appTypeOfPage(normal), RMSG_KEY, KEY_REQUESTSHOWMENU, 0);
        return;
    default:
        return;
    }
}

void MainMenuApplication::command(juce::int32 which, juce::int32 value)
{
    switch (which)
    {
    case frontOrRear:
        return toggleFrontAndRear();
    case showNavigation:
        return requestShowPage(mbNavi, false);
    case showMenu:
        return requestShowPage(mbMainMenu, false);
    case showPhone:
        return openPhone();
    case showMaintenance:
        return requestShowPage(mbMaintenance, false);
    case showTyrePressures:
        return requestShowPage(mbTPMS, false);
    case openTelematics:
        return postToPage(mbTelematics, Kernel::MSG_TELEMATICS_OPEN, 0, 0);
    case closeTelematics:
        return postToPage(mbTelematics, Kernel::MSG_TELEMATICS_CLOSE, 0, 0);
    case standby:
        return passOnStandby(value);
    case showSource:
        return requestShowPage(getNormalSource(), true);
    case panel:
        return panelCommand(value);
    default:
        return;
    }
}

void MainMenuApplication::panelCommand(juce::int32 value)
{
    auto* chips = Provided<Dsp::ChipManager>::get();
    switch (value)
    {
    case louder:
        if (chips != nullptr)
            chips->getACService().volumeUp(1);
        return;
    case softer:
        if (chips != nullptr)
            chips->getACService().volumeDown(1);
        return;
    case menuAndBack:
        return toggleReturn();
    case menuOrSource:
        returnPending = false;
        return requestPageState(getFrontShow() == getNormalSource() ? static_cast<int>(mbMainMenu) : getNormalSource(),
                                AppAction::ToRun, true);
    case mute:
        if (chips != nullptr)
            chips->getACService().toggleMute(true);
        return;
    case showZone2Volume:
        return announceZone2Volume();
    default:
        return;
    }
}

void MainMenuApplication::toggleReturn()
{
    if (std::exchange(returnPending, false))
        requestPageState(savedPage, AppAction::ToShow, true);
    else if (!handler->isOnTop())
        requestShowPage(mbMainMenu, true);
}

} // namespace ApplicationLayer
