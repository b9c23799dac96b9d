#pragma once

#include "EngineApi/SystemState.h"
#include "EngineLayer/schedule/RequestLog.h"
#include "EngineLayer/schedule/SwitchAction.h"
#include "kernel/SystemMessage.h"

#include <optional>

namespace EngineLayer
{

/** Messages that the state manager and its states post to component 17 themselves. */
enum StateMessage : juce::int32 {
    stateIdle = 1,          ///< the pipeline is idle: take the oldest queued request
    stateSchedule = 2,      ///< arguments of a request: schedule it
    stateSwitch = 3,        ///< send the first orders
    stateBeginPowerOff = 5, ///< tell the programs to power off
    stateTakePending = 6,   ///< take up the next pending state
    stateForeignSwitch = 7  ///< arg1 state, arg2 sub-state: asked for by another thread
};

/** What a state can ask of the state manager. State manager's thread. */
class StateOwner
{
public:
    virtual ~StateOwner() = default;
    virtual void switchState(int state, int subState) = 0;
    virtual void postToSelf(juce::int32 id, juce::int32 arg1, juce::int32 arg2) = 0;
    /** False, and the sender is told, when too many wait. */
    virtual bool queueRequest(const EngineApi::RequestInfo& request) = 0;
    virtual std::optional<EngineApi::RequestInfo> takeRequest() = 0;
    virtual void sendResult(int page, EngineApi::ScheduleStatus status) = 0;
    virtual RequestLog& requestLog() = 0;
    /** The number of the request that is handled now. */
    virtual std::uint32_t requestNumber() const = 0;
    /** There is one time-out, for a switch or for the power-off; these never run together. */
    virtual void startTimeOut(int milliseconds) = 0;
    virtual void stopTimeOut() = 0;
};

/** One power or lock state of the unit. State manager's thread. */
class SystemState : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<SystemState>;

    explicit SystemState(StateOwner& owner)
        : manager(owner)
    {
    }

    virtual int getState() const = 0;
    virtual bool canSwitchTo(int state) const = 0;
    virtual void onEnter(int /*previousState*/) {}
    virtual void onExit(int /*nextState*/) {}
    virtual void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) = 0;

    int subState = EngineApi::kIdle;
    SwitchAction::Ptr switchAction; ///< the switch that runs, or null

protected:
    StateOwner& manager;
};

} // namespace EngineLayer
