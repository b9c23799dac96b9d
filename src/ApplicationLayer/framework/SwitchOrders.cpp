#include "ApplicationLayer/framework/AppHandler.h"
#include "EngineApi/Programs.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Logger.h"

namespace ApplicationLayer
{

using namespace EngineApi;
using namespace Pubhead;
using EngineApi::AppStateSwitch;
using EngineApi::PageStates;
using EngineApi::SwitchType;
using Platform::AppCommandLine;
using Platform::RemoteObjFormat;

namespace
{

constexpr Platform::Log logger { "ApplicationLayer/AppHandler", "AppHandler" };

constexpr juce::int32 topShowState = 1;
constexpr juce::int32 succeeded = 1;

Platform::Bundle::Ptr formatted(const AppCommandLine::Ptr& commandLine)
{
    return commandLine == nullptr ? nullptr : RemoteObjFormat::formatCommandLine(*commandLine);
}

} // namespace

void AppHandler::carryOut(const AppStateSwitch& order)
{
    const auto current = getRunState().states;
    if (order.commandLine != nullptr)
        decorateCommandLine(order.switchType, current, order.states, *order.commandLine);
    // The new state is set before anybody is told: who hears of it, or the program that answers at once, may lead to a
    // question for the state.
    bool confirmedLater = false;
    switch (order.switchType)
    {
    case SwitchType::ToRun:
        setRunState(PageRunState::running, order.states);
        enter(order);
        break;
    case SwitchType::ToStop:
        setRunState(PageRunState::stopped, {});
        if (order.commandLine != nullptr)
            sendCommandLine(*order.commandLine);
        break;
    case SwitchType::ToChange:
        setRunState(PageRunState::running, order.states);
        confirmedLater = change(order, current);
        break;
    case SwitchType::ToShowTopLevel:
        if (order.commandLine != nullptr && order.commandLine->hasExtraData())
            sendCommandLine(*order.commandLine);
        break;
    case SwitchType::Unknown:
        break;
    }
    if (!confirmedLater)
        report();
}

void AppHandler::enter(const AppStateSwitch& order)
{
    // A launch that fails is logged where it fails; the order counts as carried out all the same.
    if (order.states.showState == topShowState)
        launchApp(config.appType, config.page, appProgram.path, formatted(order.commandLine), false);
    else if (backProgram.path.isNotEmpty())
        launchApp(config.appType, config.page, backProgram.path, formatted(order.commandLine), true);
}

bool AppHandler::change(const AppStateSwitch& order, const PageStates& current)
{
    if (order.states.showState == topShowState)
    {
        const bool needed =
            config.appType != AppNavi || !isAppConnected(AppNavi) || current.showState != order.states.showState;
        if (config.page == mbThirdPart || !needed)
            return false;
        auto commandLine = order.commandLine;
        if (commandLine == nullptr && !isAppConnected(config.appType)) // A new process does not know its page.
        {
            commandLine = AppCommandLine::genCmdPageShow(config.page, false);
            decorateCommandLine(order.switchType, current, order.states, *commandLine);
        }
        showOrLaunchApp(config.appType, config.page, appProgram.path, formatted(commandLine));
        return false;
    }
    if (order.commandLine == nullptr)
        return false;
    if (order.commandLine->isPageHide())
        return hideWhenInFront(*order.commandLine, current);
    sendCommandLine(*order.commandLine);
    return false;
}

bool AppHandler::hideWhenInFront(const AppCommandLine& commandLine, const PageStates& current)
{
    if (current.showState != topShowState || getCurrentPage() != config.page)
    {
        logger().info(juce::String(pageName(config.page)) + " not send page hide message");
        return false;
    }
    // The view manager waits for the confirmation before the program can give it.
    reportTopPage(config.page);
    sendCommandLine(commandLine);
    return true;
}

void AppHandler::sendCommandLine(const AppCommandLine& commandLine)
{
    Kernel::Cause::current().reached(Kernel::Cause::order);
    sendRemoteMessage(config.appType, RMSG_COMMAND_LINE, 0, 0, RemoteObjFormat::formatCommandLine(commandLine));
}

void AppHandler::setRunState(int reportedStep, const PageStates& states)
{
    const std::lock_guard guard(runStateLock);
    runState = { reportedStep, states, Platform::Clock::now() };
}

void AppHandler::report() const
{
    Kernel::postSystemMessage(Kernel::systemStateManagerId, Kernel::MSG_SWITCH_REPORT, config.page, succeeded);
}

} // namespace ApplicationLayer
