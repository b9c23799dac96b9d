#pragma once

#include "EngineLayer/system/SchedulingState.h"
#include "platform/base/Shared.h"

namespace EngineLayer
{

class SystemStateNormalRun : public SchedulingState
{
public:
    using SchedulingState::SchedulingState;

    int getState() const override { return EngineApi::kNormalRun; }
    bool canSwitchTo(int state) const override;
    void onEnter(int previousState) override;

private:
    void onIdle() override { takeOldestRequest(); }
};

/** Audio and video are off until a stop request brings the saved source back. */
class SystemStateISRMode : public SchedulingState
{
public:
    using SchedulingState::SchedulingState;

    int getState() const override { return EngineApi::kISRMode; }
    bool canSwitchTo(int state) const override;
    void onEnter(int previousState) override;
    void onExit(int nextState) override;

    /** Any thread. */
    int getReturnPage() const { return returnPage; }

private:
    void onIdleRequest(const EngineApi::RequestInfo& request) override;
    /** Queued requests wait until the next one comes in. */
    void onIdle() override {}

    Platform::Shared<int> returnPage { Pubhead::NUM_OF_PAGES };
};

/** Audio and video are off while the system keeps running, ready to resume. */
class SystemStateDummyPowerOff : public SchedulingState
{
public:
    using SchedulingState::SchedulingState;

    int getState() const override { return EngineApi::kDummyPowerOff; }
    bool canSwitchTo(int state) const override;
    void onEnter(int previousState) override;
    void onExit(int nextState) override;

private:
    void onIdle() override { takeOldestRequest(); }
    void rememberPages();
    void resumePages();

    int resumeFront = Pubhead::NUM_OF_PAGES;
    int resumeRear = Pubhead::NUM_OF_PAGES;
};

} // namespace EngineLayer
