#include "EngineLayer/system/SystemStateManager.h"

#include "EngineApi/Pages.h"
#include "EngineLayer/schedule/ApplicationManager.h"
#include "EngineLayer/system/LockStates.h"
#include "EngineLayer/system/PowerStates.h"
#include "EngineLayer/system/RunStates.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Counter.h"
#include "platform/base/Logger.h"

using namespace EngineApi;

namespace EngineLayer
{

namespace
{

constexpr Platform::Log logger { "EngineLayer/SystemStateManager", "SystemStateManager" };

Platform::Counter requestsRefused { "requests.refused-full", "requests that found too many waiting" };

bool leavesLock(int from, int to)
{
    return (from == kBooting || from == kAntitheft) && (to == kNormalRun || to == kISRMode || to == kDummyPowerOff);
}

} // namespace

SystemStateManager::SystemStateManager()
    : SystemTimer(Kernel::systemStateManagerId)
{
}

void SystemStateManager::initialize()
{
    addState(new SystemStateBooting(*this));
    addState(new SystemStateAntitheft(*this));
    addState(new SystemStateLocked(*this));
    addState(new SystemStateNormalRun(*this));
    addState(new SystemStateISRMode(*this));
    addState(new SystemStateDummyPowerOff(*this));
    addState(new SystemStatePowerOff(*this));
    current = states[kBooting];
    publish();

    Kernel::SystemMessage::Ptr message = new Kernel::SystemMessage;
    message->id = Kernel::MSG_SYS_INIT;
    message->receiver = getId();
    dispatchMessage(*message);
}

void SystemStateManager::addState(SystemState::Ptr state)
{
    states[state->getState()] = state;
}

void SystemStateManager::onRelease()
{
    current = nullptr;
    states.clear();
    publish();
}

void SystemStateManager::dispatchMessage(const Kernel::SystemMessage& message)
{
    ownThread = Platform::Thread::currentId();
    asker = message.poster;
    ComponentTask::dispatchMessage(message);
}

void SystemStateManager::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2,
                                       const Kernel::Payload& payload)
{
    switch (id)
    {
    case Kernel::MSG_SYS_INIT:
        switchState(kBooting, kIdle);
        break;
    case Kernel::MSG_SCHEDULE_REQUEST:
        takeRequest(arg1, arg2, payload);
        break;
    case stateTakePending:
        takePendingState();
        break;
    case stateForeignSwitch:
        changeState(arg1, arg2);
        break;
    case Kernel::MSG_POWER_OFF:
        switchState(kPowerOff, kIdle);
        postToSelf(stateBeginPowerOff, 0, 0);
        break;
    case Kernel::MSG_SYS_TIMER:
        if (arg1 == ApplicationManager::backgroundTimer)
            ApplicationManager::getInstance()->checkBackground();
        else
            toCurrentState(id, arg1, arg2, payload);
        break;
    default:
        toCurrentState(id, arg1, arg2, payload);
        break;
    }
}

void SystemStateManager::takeRequest(juce::int32 page, juce::int32 argument, const Kernel::Payload& payload)
{
    handledRequest = requestsMade.add(RequestInfo::fromArguments(page, argument), asker, getState());
    toCurrentState(Kernel::MSG_SCHEDULE_REQUEST, page, argument, payload);
    requestsMade.settle(handledRequest);
}

void SystemStateManager::toCurrentState(juce::int32 id, juce::int32 arg1, juce::int32 arg2,
                                        const Kernel::Payload& payload)
{
    // A reference of its own: the handler may make another state current.
    if (const auto state = current)
        state->handleMessage(id, arg1, arg2, payload);
}

void SystemStateManager::takePendingState()
{
    // While anything is switched they wait, in their order; the end of the switch posts again.
    if (current == nullptr || pendingStates.empty() || current->subState != kIdle)
        return;
    const int next = pendingStates.front();
    pendingStates.pop_front();
    switchState(next, kIdle);
    // A refused state, or one that the unit was in already, must not hold up what waits behind it.
    if (current->subState == kIdle)
        postFollowUp();
}

void SystemStateManager::requestSwitch(int state, int subState)
{
    if (Platform::Thread::currentId() == ownThread)
        changeState(state, subState);
    else
        postToSelf(stateForeignSwitch, state, subState);
}

void SystemStateManager::changeState(int state, int subState)
{
    // Asked for from outside, even the state that is current already waits: taken at once it would cut the switch
    // short, while its orders are still out.
    if (current != nullptr && current->subState != kIdle && state == current->getState())
        pendingStates.push_back(state);
    else
        switchState(state, subState);
}

void SystemStateManager::switchState(int next, int nextSubState)
{
    if (current == nullptr)
        return;
    const int state = current->getState();
    const int subState = current->subState;
    if (subState != kIdle && next != state && next != kPowerOff)
    {
        pendingStates.push_back(next);
        return;
    }
    if (nextSubState == kIdle && subState != kIdle)
        ApplicationManager::getInstance()->refreshSnapshot();
    if (leavesLock(state, next))
        Kernel::SystemEngine::getInstance()->broadcastMessage(Kernel::MSG_SYS_READY, 0, 0);
    if (next != state && !enterState(next))
        return;
    current->subState = nextSubState;
    publish();
    if ((nextSubState == kIdle && subState != kIdle) || previousState != current->getState())
        postFollowUp();
    logger().info("State: %s | SubState: %s", systemStateName(current->getState()), systemSubStateName(nextSubState));
}

bool SystemStateManager::enterState(int next)
{
    const auto found = states.find(next);
    if (found == states.end() || !current->canSwitchTo(next))
    {
        logger().info(juce::String("SystemState can not switch to ") + systemStateName(next));
        return false;
    }
    const auto left = current;
    previousState = left->getState();
    current = found->second;
    publish();
    current->onEnter(left->getState());
    left->onExit(next);
    return true;
}

void SystemStateManager::postFollowUp()
{
    postToSelf(pendingStates.empty() ? stateIdle : stateTakePending, 0, 0);
}

void SystemStateManager::publish()
{
    publishedState = current == nullptr ? static_cast<int>(kPowerOff) : current->getState();
    publishedSubState = current == nullptr ? static_cast<int>(kIdle) : current->subState;
}

int SystemStateManager::getISRReturnPage() const
{
    // The map does not change between initialize and onRelease.
    const auto found = states.find(kISRMode);
    if (found == states.end())
        return Pubhead::NUM_OF_PAGES;
    return static_cast<const SystemStateISRMode&>(*found->second).getReturnPage();
}

void SystemStateManager::postToSelf(juce::int32 id, juce::int32 arg1, juce::int32 arg2)
{
    Kernel::postSystemMessage(getId(), id, arg1, arg2);
}

bool SystemStateManager::queueRequest(const RequestInfo& request)
{
    if (requests.size() < requestCapacity)
    {
        requests.push_back(request);
        return true;
    }
    ++requestsRefused;
    if (refusedRequests++ == 0)
        logger().error("too many requests wait, %s is refused", Pubhead::pageName(request.page));
    sendResult(request.page, scheduleRefused);
    return false;
}

std::optional<RequestInfo> SystemStateManager::takeRequest()
{
    if (requests.empty())
        return std::nullopt;
    const auto request = requests.front();
    requests.pop_front();
    return request;
}

void SystemStateManager::sendResult(int page, ScheduleStatus status)
{
    postScheduleResult(page, status);
}

} // namespace EngineLayer

namespace EngineApi
{

namespace
{

EngineLayer::SystemStateManager& manager()
{
    return *EngineLayer::SystemStateManager::getInstance();
}

} // namespace

int getSystemState()
{
    return manager().getState();
}

int getPreviousSystemState()
{
    return manager().getPreviousState();
}

int getSystemSubState()
{
    return manager().getSubState();
}

bool isSystemBusy()
{
    return getSystemSubState() != kIdle;
}

int getISRReturnPage()
{
    return manager().getISRReturnPage();
}

void switchSystemState(int state, int subState)
{
    manager().requestSwitch(state, subState);
}

} // namespace EngineApi
