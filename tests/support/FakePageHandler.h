#pragma once

#include "EngineApi/Pages.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"

#include <atomic>
#include <mutex>

/** A page whose orders are carried out when the test says so. It asks as the pages do; any thread. */
class FakePageHandler : public EngineApi::PageHandler
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<FakePageHandler>;

    explicit FakePageHandler(int page)
        : config(*EngineApi::pageScheduleConfig(page))
    {
    }

    const EngineApi::PageScheduleConfig& getConfig() const override { return config; }
    EngineApi::PageRunState getRunState() const override
    {
        const std::lock_guard guard(lock);
        return runState;
    }
    bool isAvailable() const override { return available; }
    bool isResident() const override { return resident; }
    juce::String getBackProgramPath() const override { return {}; }

    void requestState(EngineApi::AppAction action, bool autoSwitch) override
    {
        ++requests;
        const EngineApi::RequestInfo request { config.page, action, autoSwitch };
        Kernel::postSystemMessage(Kernel::systemStateManagerId, Kernel::MSG_SCHEDULE_REQUEST, config.page,
                                  request.toArgument());
    }
    void requestShow(bool autoSwitch) override
    {
        if (!isRunning())
            requestState(EngineApi::AppAction::ToRun, autoSwitch);
        else if (!isOnTop() || !autoSwitch)
            requestState(EngineApi::AppAction::ToShow, autoSwitch);
    }
    void notifyPage() override { EngineApi::postToPage(config.page, Kernel::MSG_APP_PAGE_NOTIFY, 0, 0); }
    void adjustScheduleInfo(EngineApi::ScheduleInfo& info) override
    {
        if (!competesForSound)
            info.playLevel = info.audioLevel = EngineApi::PageScheduleConfig::noCompetition;
    }

    /** What the page does with an order before it reports. */
    void carryOut(const EngineApi::AppStateSwitch& order)
    {
        const std::lock_guard guard(lock);
        using EngineApi::SwitchType;
        if (order.switchType == SwitchType::ToShowTopLevel)
            return;
        const bool stops = order.switchType == SwitchType::ToStop;
        runState.reportedStep = stops ? EngineApi::PageRunState::stopped : EngineApi::PageRunState::running;
        runState.states = stops ? EngineApi::PageStates {} : order.states;
    }

    std::atomic<bool> available { true };
    std::atomic<bool> resident { false };
    std::atomic<bool> competesForSound { true };
    std::atomic<int> requests { 0 };

private:
    EngineApi::PageScheduleConfig config;
    mutable std::mutex lock;
    EngineApi::PageRunState runState;
};
