#pragma once

#include "EngineLayer/system/SystemState.h"

#include <set>

namespace EngineLayer
{

/** Before the microcontroller has said what to start with: every request is refused. */
class SystemStateBooting : public SystemState
{
public:
    using SystemState::SystemState;

    int getState() const override { return EngineApi::kBooting; }
    bool canSwitchTo(int state) const override { return state != EngineApi::kBooting; }
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;
};

/** The unit goes off: the programs are told, and when all have confirmed, or after 8 s, the microcontroller is told. */
class SystemStatePowerOff : public SystemState
{
public:
    using SystemState::SystemState;

    int getState() const override { return EngineApi::kPowerOff; }
    bool canSwitchTo(int) const override { return false; }
    void onEnter(int previousState) override;
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;

private:
    void begin();
    void onConfirmed(int page);
    void sendReady();

    enum class Step { entered, waiting, ready };
    Step step = Step::entered;
    std::set<int> waitSet; ///< pages whose programs have not confirmed
};

} // namespace EngineLayer
