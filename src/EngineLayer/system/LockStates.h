#pragma once

#include "EngineLayer/system/SchedulingState.h"

#include <optional>

namespace EngineLayer
{

/** The owner's lock: only the anti-theft page may run. */
class LockState : public SchedulingState
{
public:
    using SchedulingState::SchedulingState;

    void onEnter(int previousState) override;

protected:
    bool refuses(const EngineApi::RequestInfo& request) const override { return request.page != Pubhead::mbAntitheft; }
    /** Takes up what came in during a switch: an unlock first, then the requests. */
    void onIdle() override;
    void onAntitheftExit(int what) override;
    virtual void onIdleExit(int what) = 0;

private:
    std::optional<int> heldExit;
};

/** The code may be entered. */
class SystemStateAntitheft : public LockState
{
public:
    using LockState::LockState;

    int getState() const override { return EngineApi::kAntitheft; }
    bool canSwitchTo(int state) const override;

private:
    void onIdleRequest(const EngineApi::RequestInfo& request) override;
    void onIdleExit(int what) override;
    void endLock();
};

/** The code may not be entered. */
class SystemStateLocked : public LockState
{
public:
    using LockState::LockState;

    int getState() const override { return EngineApi::kLocked; }
    bool canSwitchTo(int state) const override;

private:
    void onIdleRequest(const EngineApi::RequestInfo& request) override;
    void onIdleExit(int what) override;
};

} // namespace EngineLayer
