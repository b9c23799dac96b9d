#include "ApplicationLayer/AppHandler.h"

#include "EngineApi/AutoTestSession.h"
#include "EngineApi/DeviceStatus.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/Configuration.h"

#include <algorithm>

namespace ApplicationLayer
{

using namespace EngineApi;
using namespace Pubhead;
using EngineLayer::AppAction;

namespace
{

/** How the factory test names the page that now plays. */
struct AutoTestCode
{
    int page;
    juce::uint8 code;
    juce::uint8 subCode;
};

constexpr AutoTestCode autoTestCodes[] = {
    { mbFM, 0x00, 0x00 },     { mbAM, 0x00, 0x00 },     { mbWB, 0x00, 0x00 },          { mbUSBAudio, 0x0A, 0x01 },
    { mbSirius, 0x0E, 0x00 }, { mbAuxin2, 0x05, 0x00 }, { mbiPodPandora, 0x15, 0x00 }, { mbBTAudio, 0x0D, 0x02 },
};

constexpr juce::uint8 autoTestSourceReport[] = { 0x00, 0x01 };

const EngineLayer::PageScheduleConfig& configOf(int page)
{
    const auto* config = EngineLayer::pageScheduleConfig(page);
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
    const juce::ScopedLock guard(runStateLock);
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

void AppHandler::handle(const Kernel::SystemMessage& message)
{
    currentMessage = &message;
    handleMessage(message);
    currentMessage = nullptr;
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
    case Kernel::MSG_SCHEDULE_RESULT:
        return reportToAutoTest(message.arg1);
    case Kernel::MSG_APP_SWITCH:
        if (const auto* order = Kernel::payloadAs<EngineLayer::AppStateSwitch>(message.payload))
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

void AppHandler::onValue(juce::int32) {}

void AppHandler::onKey(juce::int32 arg1, juce::int32 arg2)
{
    sendRemoteMessage(config.appType, RMSG_KEY, arg1, arg2);
}

void AppHandler::decorateCommandLine(EngineLayer::SwitchType, const EngineLayer::PageStates&,
                                     const EngineLayer::PageStates&, Platform::AppCommandLine&)
{
}

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
    lastAction = action;
    const EngineLayer::RequestInfo request { config.page, action, autoSwitch };
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

void AppHandler::reportToAutoTest(juce::int32 status) const
{
    if (status != EngineLayer::scheduleDone || !getEnterTestMode())
        return;
    auto* session = Provided<AutoTestSession>::get();
    const auto found = std::find_if(std::begin(autoTestCodes), std::end(autoTestCodes),
                                    [page = getNormalSource()](const auto& each) { return each.page == page; });
    if (session == nullptr || found == std::end(autoTestCodes))
        return;
    juce::MemoryBlock message(autoTestSourceReport, sizeof(autoTestSourceReport));
    message.append(&found->code, 1);
    message.append(&found->subCode, 1);
    session->addMsgToBuffer(message);
}

} // namespace ApplicationLayer
