#pragma once

#include "EngineLayer/system/SystemState.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "kernel/SystemTimer.h"
#include "platform/base/Shared.h"
#include "platform/base/Threads.h"

#include <deque>
#include <map>
#include <optional>

namespace EngineLayer
{

/**
    Owns the unit's power and lock state, and leads every schedule request through it. Runs on its group's thread; other
    threads use the free functions of EngineApi/SystemState.h.
*/
class SystemStateManager : public Kernel::ComponentTask,
                           public StateOwner,
                           public Kernel::SystemTimer,
                           public Kernel::Singleton<SystemStateManager>
{
public:
    static constexpr int timerId = 1; ///< of the states' time-out
    /** Requests that may wait; one more is refused. */
    static constexpr std::size_t requestCapacity = 32;

    void initialize() override;
    void onRelease() override;
    void dispatchMessage(const Kernel::SystemMessage& message) override;
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;

    // Any thread.
    int getState() const { return publishedState; }
    int getSubState() const { return publishedSubState; }
    int getPreviousState() const { return previousState; }
    std::vector<RequestRecord> getRequests() const { return requestsMade.all(); }
    int getISRReturnPage() const;
    /** On the manager's own thread at once; from any other thread it is posted. */
    void requestSwitch(int state, int subState);

    void switchState(int state, int subState) override;
    void postToSelf(juce::int32 id, juce::int32 arg1, juce::int32 arg2) override;
    bool queueRequest(const EngineApi::RequestInfo& request) override;
    std::optional<EngineApi::RequestInfo> takeRequest() override;
    void sendResult(int page, EngineApi::ScheduleStatus status) override;
    RequestLog& requestLog() override { return requestsMade; }
    std::uint32_t requestNumber() const override { return handledRequest; }
    void startTimeOut(int milliseconds) override { startTimer(timerId, milliseconds); }
    void stopTimeOut() override { stopTimer(timerId); }

private:
    friend class Kernel::Singleton<SystemStateManager>;
    SystemStateManager();

    void takeRequest(juce::int32 page, juce::int32 argument, const Kernel::Payload& payload);
    void toCurrentState(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload);
    void addState(SystemState::Ptr state);
    void changeState(int state, int subState);
    bool enterState(int state);
    void takePendingState();
    void postFollowUp();
    void publish();

    std::map<int, SystemState::Ptr> states;
    SystemState::Ptr current;
    Platform::Shared<int> previousState { EngineApi::kBooting };
    std::deque<EngineApi::RequestInfo> requests;
    RequestLog requestsMade;
    std::uint32_t handledRequest = 0;
    Kernel::Actor asker;     ///< of the message that is handled
    int refusedRequests = 0; ///< for lack of room
    std::deque<int> pendingStates;

    Platform::Shared<int> publishedState { EngineApi::kPowerOff };
    Platform::Shared<int> publishedSubState { EngineApi::kIdle };
    std::atomic<Platform::Thread::Id> ownThread { nullptr };
};

} // namespace EngineLayer
