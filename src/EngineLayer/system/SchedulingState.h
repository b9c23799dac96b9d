#pragma once

#include "EngineLayer/system/SystemState.h"

namespace EngineLayer
{

/** A state that serves requests: one is scheduled, its switch is carried out, then the next is taken. */
class SchedulingState : public SystemState
{
public:
    using SystemState::SystemState;

    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;

protected:
    /** A request that arrives while nothing is being switched: queued, and the oldest is taken. */
    virtual void onIdleRequest(const EngineApi::RequestInfo& request);
    /** Nothing is scheduled or switched any more. */
    virtual void onIdle() = 0;
    /** arg1 of MSG_SYS_ANTITHEFT_EXIT; only the lock states care. */
    virtual void onAntitheftExit(int /*what*/) {}
    /** Requests that the state does not serve at all, whatever it is doing. */
    virtual bool refuses(const EngineApi::RequestInfo&) const { return false; }

    /** Takes the oldest queued request into the pipeline; when there is none the background check is started. */
    void takeOldestRequest();
    void beginSchedule(const EngineApi::RequestInfo& request);

private:
    void onRequest(const EngineApi::RequestInfo& request);
    void runSchedule(const EngineApi::RequestInfo& request);
    void refuse(int page, RequestReason reason);
    void startSwitch();
    void sendOrders();
    void onReport(int page, bool ok);
    void finishSwitch();
    void onTimeOut();
    void sendOutcome(RequestReason reasonOfFailure);
    void endSwitch();
    RequestLog& log() { return manager.requestLog(); }

    std::uint32_t takenNumber = 0; ///< of the request that is scheduled or switched
};

} // namespace EngineLayer
