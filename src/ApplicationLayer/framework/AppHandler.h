#pragma once

#include "EngineApi/PageHandler.h"
#include "kernel/SystemTimer.h"
#include "platform/base/Threads.h"
#include "platform/channel/Ipc.h"

namespace ApplicationLayer
{

class ApplicationTask;

/**
    One page inside its application: carries out the scheduler's orders, passes keys and notices on to the page's
    program, takes the program's messages, and asks the scheduler for what the page wants. The virtual operations run on
    the application's thread, except where EngineApi::PageHandler says otherwise.
*/
class AppHandler : public EngineApi::PageHandler
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<AppHandler>;

    /** The configuration is the page's row in the catalogue. */
    explicit AppHandler(int page);
    ~AppHandler() override;

    bool isResident() const override { return false; }
    void notifyPage() override;
    /** Entry point of the application's messages for this page. */
    virtual void handleMessage(const Kernel::SystemMessage& message);
    virtual void onPageNotify();
    virtual void onValue(juce::int32 arg1);
    virtual void onKey(juce::int32 arg1, juce::int32 arg2);
    virtual void onAttach() {}
    virtual void onDetach() {}
    virtual void onAppConnected() {}
    virtual void onAppDisconnected() {}
    /** One of the handler's timers, which run once, has expired. */
    virtual void onTimer(int timerId);
    void adjustScheduleInfo(EngineApi::ScheduleInfo&) override {}
    /** Before an order's command line is sent: the handler may attach data to it. */
    virtual void decorateCommandLine(EngineApi::SwitchType switchType, const EngineApi::PageStates& currentStates,
                                     const EngineApi::PageStates& newStates, Platform::AppCommandLine& commandLine);

    const EngineApi::PageScheduleConfig& getConfig() const override { return config; }
    EngineApi::PageRunState getRunState() const override;
    bool isAvailable() const override { return true; }
    juce::String getBackProgramPath() const override { return backProgram.path; }
    void requestState(EngineApi::AppAction action, bool autoSwitch) override;
    void requestShow(bool autoSwitch) override;

    /** Times are in milliseconds; a timer that is started again begins anew. Any thread. */
    Kernel::SystemTimer& getTimers() { return timers; }

    void setOwner(ApplicationTask* application) { owner = application; }

protected:
    /** Posts a message to this handler, on the application's thread. Any thread. */
    void postToSelf(juce::int32 id, juce::int32 arg1, juce::int32 arg2) const;

private:
    struct Program
    {
        juce::String path; ///< "" for none
        juce::String name;
    };

    // SwitchOrders.cpp
    void carryOut(const EngineApi::AppStateSwitch& order);
    void enter(const EngineApi::AppStateSwitch& order);
    /** True when the view manager reports the order, once the program has confirmed it. */
    bool change(const EngineApi::AppStateSwitch& order, const EngineApi::PageStates& current);
    bool hideWhenInFront(const Platform::AppCommandLine& commandLine, const EngineApi::PageStates& current);
    void sendCommandLine(const Platform::AppCommandLine& commandLine);
    void setRunState(int reportedStep, const EngineApi::PageStates& states);
    void report() const;

    // RemoteProcessing.cpp
    void processRemote(const Kernel::SystemMessage& message);
    void storeSetting(const Platform::RemoteMessage& remote);
    void refuseSetting(int index, const char* why);
    void passToOwner(const Kernel::SystemMessage& message);

    const EngineApi::PageScheduleConfig config;
    Kernel::SystemTimer timers { config.ownerId, config.page };
    const Program appProgram;  ///< shows the page
    const Program backProgram; ///< runs while the page runs without being on top; most pages have none

    std::uint64_t refusedSettings = 0;

    Platform::Mutex runStateLock;
    EngineApi::PageRunState runState;

    ApplicationTask* owner = nullptr;
};

} // namespace ApplicationLayer
