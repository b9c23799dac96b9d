#include "ApplicationLayer/setup/SetupHandler.h"

#include "ApplicationLayer/setup/Dimmer.h"
#include "EngineApi/HostLink.h"
#include "EngineApi/KeyCodes.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "EngineLayer/settings/DataManager.h"
#include "dsp/AudioServices.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"

namespace ApplicationLayer
{

using namespace EngineApi;
using namespace Pubhead;

namespace
{

constexpr Platform::Log logger { "ApplicationLayer/SetupApplication", "Dimmer_reset" };

constexpr int resetMs = 5000;
constexpr int idleMs = 10000;

/** arg1 of RMSG_SETTING_NOTIFY. */
enum Notice : juce::int32 {
    versionNotice = Platform::setupVersion,
    amsNotice = Platform::setupService,
    resetNotice = Platform::setupReset,
    mmsNotice = Platform::setupLeaveService
};

constexpr Kernel::ComponentId resetReceivers[] { Kernel::bluetoothApplicationId, Kernel::siriusApplicationId,
                                                 Kernel::deviceStatusManagerId };

void notifySetup(Notice notice)
{
    sendRemoteMessage(AppSetup, RMSG_SETTING_NOTIFY, notice, 0);
}

} // namespace

SetupHandler::SetupHandler()
    : AppHandler(mbSetup)
{
}

void SetupHandler::onKey(juce::int32 key, juce::int32)
{
    switch (key)
    {
    case KEY_MMS1:
        return mmsKey();
    case KEY_AMS1:
        return amsKey();
    case KEY_SHOWVERSION:
        return versionKey();
    case KEY_PLAYPAUSE_LONGPRESS:
        return announceReset();
    case KEY_INFOBAR_SWITCH_SPEAKER:
        return restartIdleTimer();
    default:
        return;
    }
}

void SetupHandler::mmsKey()
{
    amsPending = true;
    const bool showedAMS = std::exchange(showAMS, false);
    if (!isOnTop())
        requestShowPage(mbSetup, false);
    else if (showedAMS)
        notifySetup(mmsNotice);
    else
        requestStopPage(mbSetup);
}

void SetupHandler::amsKey()
{
    showAMS = true;
    amsPending = false;
    if (isOnTop())
        notifySetup(amsNotice);
    else
        requestShowPage(mbSetup, false);
}

void SetupHandler::versionKey()
{
    if (!isOnTop() || !amsPending)
        return;
    getTimers().stopTimer(idleTimer);
    Kernel::postSystemMessage(Kernel::keyManagerId, Kernel::MSG_KEY_RETURN_NEXT, 1, 0);
    notifySetup(versionNotice);
}

void SetupHandler::decorateCommandLine(SwitchType, const PageStates&, const PageStates&,
                                       Platform::AppCommandLine& commandLine)
{
    if (!commandLine.isPageShow())
        return;
    auto extra = Platform::Bundle::obtain();
    if (showAMS)
        extra->putBool("showAMS", true);
    if (std::exchange(showReset, false))
        extra->putBool("showReset", true);
    if (!extra->isEmpty())
        commandLine.putExtraData(std::move(extra));
    restartIdleTimer();
}

void SetupHandler::restartIdleTimer()
{
    getTimers().startTimer(idleTimer, idleMs);
}

void SetupHandler::onTimer(int timerId)
{
    if (timerId == resetTimer)
        deleteSettings();
    else if (timerId == idleTimer && isOnTop())
        requestPageState(getNormalSource(), AppAction::ToRun, true);
}

void SetupHandler::announceReset()
{
    if (isOnTop())
        notifySetup(resetNotice);
    else
    {
        showReset = true;
        requestShowPage(mbSetup, false);
    }
    if (auto* chips = Provided<Dsp::ChipManager>::get(); chips != nullptr && !chips->getACService().isMute())
        chips->getACService().toggleMute(false);
    for (const auto receiver : resetReceivers)
        Kernel::postSystemMessage(receiver, Kernel::MSG_FACTORY_RESET, 0, 0);
    constexpr int full = Dimmer::toMcu(Dimmer::fullLevel);
    sendCommand(EVENT_LED_LCD_DIMMER, { full, full });
    getTimers().startTimer(resetTimer, resetMs);
}

void SetupHandler::deleteSettings()
{
    // The store is open: it takes the factory values first, and refuses when it has none to take, which would leave a
    // unit that cannot start.
    const juce::File folder(Platform::AppConfig::getSystemFilePath());
    const bool deleted = EngineLayer::DataManager::getInstance()->loadFactoryFile() && folder.deleteRecursively();
    logger().info(" bDeleteOK= %d", deleted ? 1 : 0);
    if (const auto made = folder.createDirectory(); made.failed())
        logger().error(folder.getFullPathName() + ": " + made.getErrorMessage());
    sendCommand(EVENT_FACTORY_RESET, { 1 });
}

} // namespace ApplicationLayer
