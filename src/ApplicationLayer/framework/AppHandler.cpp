#include "ApplicationLayer/framework/AppHandler.h"

#include "EngineApi/AutoTestSession.h"
#include "EngineApi/DeviceStatus.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Remote.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/config/Configuration.h"

namespace ApplicationLayer
{

using namespace EngineApi;
using namespace Pubhead;
using EngineApi::AppAction;

namespace
{

const PageScheduleConfig& configOf(int page)
{
    const auto* config = pageScheduleConfig(page);
    jassert(config != nullptr); // Only pages of the catalogue have handlers.
    return *config;
}

} // namespace

AppHandler::AppHandler(int page)
    : config(configOf(page))
    , appProgram { Platform::AppConfig::getAppPath(page), Platform::AppConfig::getAppName(page) }
    , backProgram { Platform::AppConfig::getBackAppPath(page), Platform::AppConfig::getBackAppName(page) }
    , runState { PageRunState::stopped, config.initialStates }
{
}

AppHandler::~AppHandler() = default;

PageRunState AppHandler::getRunState() const
{
    const std::lock_guard guard(runStateLock);
    return runState;
}

void AppHandler::notifyPage()
{
    postToSelf(Kernel::MSG_APP_PAGE_NOTIFY, 0, 0);
}

void AppHandler::postToSelf(juce::int32 id, juce::int32 arg1, juce::int32 arg2) const
{
    Kernel::postHandlerMessage(config.ownerId, config.page, id, arg1, arg2);
}

void AppHandler::handleMessage(const Kernel::SystemMessage& message)
{
    switch (message.id)
    {
    case Kernel::MSG_APP_PAGE_NOTIFY:
        return onPageNotify();
    case Kernel::MSG_APP_KEY:
        return onKey(message.arg1, message.arg2);
    case Kernel::MSG_APP_VALUE:
        return onValue(message.arg1);
    case Kernel::MSG_SYS_TIMER:
        timers.stopTimer(message.arg1);
        return onTimer(message.arg1);
    case Kernel::MSG_SCHEDULE_RESULT:
        if (message.arg1 == scheduleDone && getEnterTestMode())
            reportSourceToAutoTest();
        return;
    case Kernel::MSG_APP_SWITCH:
        if (const auto* order = Kernel::payloadAs<AppStateSwitch>(message.payload))
            carryOut(*order);
        return;
    case Kernel::MSG_APP_CONNECTED:
        return onAppConnected();
    case Kernel::MSG_APP_DISCONNECTED:
        return onAppDisconnected();
    case Kernel::MSG_APP_REMOTE:
        return processRemote(message);
    default:
        return;
    }
}

void AppHandler::onPageNotify()
{
    sendRemoteMessage(config.appType, RMSG_PAGE_NOTIFY, config.page, 0);
}

void AppHandler::onTimer(int) {}

void AppHandler::onValue(juce::int32) {}

void AppHandler::onKey(juce::int32 arg1, juce::int32 arg2)
{
    sendRemoteMessage(config.appType, RMSG_KEY, arg1, arg2);
}

void AppHandler::decorateCommandLine(SwitchType, const PageStates&, const PageStates&, Platform::AppCommandLine&) {}

void AppHandler::requestState(AppAction action, bool autoSwitch)
{
    if (const auto state = getRunState(); action == AppAction::ToStop && state.reportedStep == PageRunState::running)
    {
        // Something always plays: the source that is remembered gives way to silence instead of leaving a gap.
        if (config.isNormalSource && getLastNormalSource() == config.page)
            return requestPageState(mbAVOff, AppAction::ToRun, autoSwitch);
        if (config.isRear && state.states.showState == 1)
            requestShowPage(getNormalSource(), true);
    }
    const RequestInfo request { config.page, action, autoSwitch };
    Kernel::postSystemMessage(Kernel::systemStateManagerId, Kernel::MSG_SCHEDULE_REQUEST, request.page,
                              request.toArgument());
}

void AppHandler::requestShow(bool autoSwitch)
{
    const auto state = getRunState();
    if (state.reportedStep == PageRunState::stopped || !isAppConnected(config.appType))
        requestState(AppAction::ToRun, autoSwitch);
    else if (!autoSwitch || state.states.showState != 1)
        requestState(AppAction::ToShow, autoSwitch);
}

} // namespace ApplicationLayer
