#include "EngineLayer/system/SchedulingState.h"

#include "EngineApi/Pages.h"
#include "EngineLayer/schedule/ApplicationManager.h"
#include "kernel/MessageIds.h"
#include "kernel/Trace.h"

#include <algorithm>

using namespace EngineApi;
using Kernel::Trace;

namespace EngineLayer
{

namespace
{

constexpr int switchTimeOutMs = 3000;

bool isAwaited(const SwitchAction& action, int page)
{
    return std::ranges::any_of(action.orders, [page](const auto& order)
                               { return order->page == page && order->progress == OrderProgress::sent; });
}

} // namespace

void SchedulingState::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload&)
{
    switch (id)
    {
    case Kernel::MSG_SCHEDULE_REQUEST:
    {
        auto request = RequestInfo::fromArguments(arg1, arg2);
        request.number = manager.requestNumber();
        onRequest(request);
        break;
    }
    case Kernel::MSG_SYS_ANTITHEFT_EXIT:
        onAntitheftExit(arg1);
        break;
    case stateIdle:
        if (subState == kIdle)
            onIdle();
        break;
    case stateSchedule:
        if (subState == kSchedule)
            runSchedule(RequestInfo::fromArguments(arg1, arg2));
        break;
    case stateSwitch:
        if (subState == kSwitch)
            startSwitch();
        break;
    case Kernel::MSG_SWITCH_REPORT:
        if (subState == kSwitch)
            onReport(arg1, arg2 == 1);
        break;
    case Kernel::MSG_SYS_TIMER:
        if (subState == kSwitch)
            onTimeOut();
        break;
    default:
        break;
    }
}

void SchedulingState::onRequest(const RequestInfo& request)
{
    if (refuses(request))
        manager.sendResult(request.page, scheduleRefused);
    else if (subState == kIdle)
        onIdleRequest(request);
    else if (manager.queueRequest(request))
    {
        log().wait(request.number);
        manager.sendResult(request.page, scheduleQueued);
    }
    else
        log().finish(request.number, RequestRecord::Status::refused, RequestReason::queueFull);
}

void SchedulingState::onIdleRequest(const RequestInfo& request)
{
    // The oldest is taken first, so that a full queue has room for the new one.
    auto taken = request;
    if (const auto oldest = manager.takeRequest())
    {
        taken = *oldest;
        manager.queueRequest(request);
        log().wait(request.number);
    }
    if (taken.page != request.page)
        manager.sendResult(taken.page, scheduleQueued);
    if (getHandler(taken.page) == nullptr)
    {
        log().finish(taken.number, RequestRecord::Status::failed, RequestReason::noHandler);
        manager.sendResult(taken.page, scheduleFailed);
    }
    else
        beginSchedule(taken);
}

void SchedulingState::takeOldestRequest()
{
    if (const auto request = manager.takeRequest())
        beginSchedule(*request);
    else
        ApplicationManager::getInstance()->startBackgroundCheck();
}

void SchedulingState::beginSchedule(const RequestInfo& request)
{
    takenNumber = request.number;
    log().schedule(takenNumber);
    Trace::note(Trace::Kind::switchBegun, request.page, request.action, request.autoSwitch);
    manager.postToSelf(stateSchedule, request.page, request.toArgument());
    manager.switchState(getState(), kSchedule);
}

void SchedulingState::runSchedule(const RequestInfo& request)
{
    const auto handler = getHandler(request.page);
    if (handler == nullptr || (request.action == AppAction::ToStop && !handler->isRunning()))
        return refuse(request.page, handler == nullptr ? RequestReason::noHandler : RequestReason::notRunning);
    auto decided = request;
    // It ran when it was asked for, and has been stopped while the request waited.
    if (request.action == AppAction::ToShow && !handler->isRunning())
        decided.action = AppAction::ToRun;
    switchAction = ApplicationManager::getInstance()->schedule(decided);
    log().decide(takenNumber, *switchAction);
    if (!switchAction->hasAction())
    {
        switchAction = nullptr;
        return refuse(request.page, RequestReason::nothingToDo);
    }
    manager.postToSelf(stateSwitch, 0, 0);
    manager.switchState(getState(), kSwitch);
}

void SchedulingState::refuse(int page, RequestReason reason)
{
    log().finish(takenNumber, RequestRecord::Status::refused, reason);
    Trace::note(Trace::Kind::switchEnded, page, scheduleRefused);
    manager.sendResult(page, scheduleRefused);
    manager.switchState(getState(), kIdle);
}

void SchedulingState::startSwitch()
{
    log().order(takenNumber);
    manager.startTimeOut(switchTimeOutMs);
    sendOrders();
}

void SchedulingState::sendOrders()
{
    for (const auto& order : switchAction->sendNext())
    {
        Trace::note(Trace::Kind::orderSent, order->page, order->switchType);
        postSwitchOrder(order->page, order);
    }
}

void SchedulingState::onReport(int page, bool ok)
{
    // A late report of an earlier switch must not send the runs ahead of the stops.
    const bool awaited = isAwaited(*switchAction, page);
    switchAction->markPage(page, ok);
    Trace::note(Trace::Kind::orderReported, page, ok);
    if (awaited && !switchAction->allSent())
        sendOrders();
    if (switchAction->allSent() && switchAction->allFinished())
        finishSwitch();
}

void SchedulingState::finishSwitch()
{
    ApplicationManager::getInstance()->postSwitchUpdate();
    sendOutcome(RequestReason::ordersRefused);
    endSwitch();
}

void SchedulingState::onTimeOut()
{
    sendOutcome(RequestReason::timeOut);
    endSwitch();
}

void SchedulingState::sendOutcome(RequestReason reasonOfFailure)
{
    const bool succeeded = switchAction->allSent() && switchAction->allFinished() && switchAction->allSucceeded();
    log().finish(takenNumber, succeeded ? RequestRecord::Status::done : RequestRecord::Status::failed,
                 succeeded ? RequestReason::none : reasonOfFailure, switchAction.get());
    Trace::note(Trace::Kind::switchEnded, switchAction->requestPage, succeeded ? scheduleDone : scheduleFailed);
    if (succeeded)
    {
        manager.sendResult(switchAction->requestPage, scheduleDone);
        return;
    }
    for (const int page : switchAction->sentPages())
        manager.sendResult(page, scheduleFailed);
}

void SchedulingState::endSwitch()
{
    manager.stopTimeOut();
    switchAction = nullptr;
    manager.switchState(getState(), kIdle);
}

} // namespace EngineLayer
