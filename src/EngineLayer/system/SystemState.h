#pragma once

#include "EngineApi/SystemState.h"
#include "EngineLayer/schedule/SwitchAction.h"
#include "kernel/SystemMessage.h"

namespace EngineLayer
{

class SystemStateManager;

/** Messages that the state manager and its states post to component 17 themselves. */
enum StateMessage : juce::int32 {
    stateIdle = 1,          ///< the pipeline is idle: take the oldest queued request
    stateSchedule = 2,      ///< arguments of a request: schedule it
    stateSwitch = 3,        ///< send the first orders
    stateBeginPowerOff = 5, ///< tell the programs to power off
    stateTakePending = 6,   ///< take up the next pending state
    stateForeignSwitch = 7  ///< arg1 state, arg2 sub-state: asked for by another thread
};

/** One power or lock state of the unit. State manager's thread. */
class SystemState : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<SystemState>;

    explicit SystemState(SystemStateManager& owner)
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
    SystemStateManager& manager;
};

} // namespace EngineLayer
