#pragma once

#include "EngineApi/Programs.h"
#include "Extend/MonitorThread.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "kernel/SystemTimer.h"
#include "platform/base/Threads.h"

#include <set>

namespace Extend
{

/**
    Starts the source programs, watches their processes, takes their hello, sends them the heartbeat, and tells its
    listeners of every change of a program's state. Any thread may call the operations.
*/
class ExeMonitor : public Kernel::ComponentTask,
                   public EngineApi::RemoteMsgFilterInterface,
                   public Kernel::SystemTimer,
                   public Kernel::Singleton<ExeMonitor>
{
public:
    enum Timer : int { heartbeatTimer = 1, closingTimer = 2 };

    ~ExeMonitor() override;

    bool launchApp(int appType, int page, const juce::String& path, Platform::Bundle::Ptr bundle, bool background);
    bool showOrLaunchApp(int appType, int page, const juce::String& path, Platform::Bundle::Ptr bundle);
    /** Ends its process by force. */
    void terminateApp(int appType);
    /** Tells a program to quit; it counts as closing from before it hears of it until its process has ended. */
    void closeApp(int appType);
    void setAppState(int appType, int state);
    int getAppState(int appType) const;

    struct Status
    {
        int state = EngineApi::kDisconnect;
        int process = 0;                                             ///< 0 for none
        Platform::Clock::time_point since;                           ///< of the state
        std::optional<Platform::Clock::time_point> lastHeartbeat {}; ///< its last answer
        bool isSilent = false;                                       ///< it has not answered the last one
        unsigned starts = 0, ends = 0;                               ///< of its processes
        bool wasClosed = false;                                      ///< the last one ended as it was told to
        juce::String problem {}; ///< why it could not be started the last time; "" for no reason
    };
    /** Of every program that was there once. Any thread. */
    std::map<int, Status> getStatus() const;

    void addConnectListener(EngineApi::AppConnectStateInterface* listener);
    /** Returns at once; a call that is under way on the monitor's group thread is not waited for. */
    void removeConnectListener(EngineApi::AppConnectStateInterface* listener);

    void initialize() override;
    void onStop() override;
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;
    void onFilterMessage(const Platform::RemoteMessage& message) override;

private:
    friend class Kernel::Singleton<ExeMonitor>;

    enum PrivateMessage : juce::int32 {
        msgHello = 1,          ///< arg1 program
        msgHeartbeatReply = 2, ///< arg1 program
        msgStateChanged = 3,   ///< arg1 program, arg2 new state
        msgCommandLine = 4     ///< arg1 program, payload bundle
    };

    struct LaunchRequest
    {
        int appType;
        int page;
        juce::String path;
        Platform::Bundle::Ptr bundle;
        bool background;
    };

    ExeMonitor();

    /** Under `launchLock`. */
    bool launch(const LaunchRequest& request);
    /** Whether it is closing, or its process has ended and the news is on its way: what it is told now is lost. */
    bool isEnding(int appType) const;
    /** Whether it is ending, or an earlier launch of it waits. Under `launchLock`. */
    bool mustWait(int appType) const;
    /** False when it does not run. */
    bool takeOver(int appType);
    bool createProgram(const LaunchRequest& request);
    /** Behind the changes of state that are on their way: kStarting discards what waits for a program. */
    void postCommandLine(int appType, const Platform::Bundle::Ptr& bundle);
    void handleStart();
    void handleTimer(int timerId);
    void handleHello(int appType);
    void handleHeartbeatReply(int appType);
    void handleStateChange(int appType, int state);
    void handleProcessEnd(int appType);
    void runQueuedLaunches(int appType);
    void runHeartbeatCycle();
    void judgeHeartbeat(const std::set<int>& silentApps);
    void endClosingApps();

    /** One launch at a time; held while a process is made, so that nothing of it is handled half-way. Taken first. */
    Platform::Mutex launchLock;
    // Guarded by `launchLock`.
    std::vector<LaunchRequest> launchQueue;
    int wantedPage = Pubhead::NUM_OF_PAGES; ///< the last one that was to come to the front
    /** Guards everything up to the monitor, and its table. */
    Platform::Mutex lock;
    std::map<int, int> appStates;
    std::map<int, Status> lives; ///< without what the others say
    std::set<int> heartbeatPending;
    juce::Array<EngineApi::AppConnectStateInterface*, Platform::Mutex> connectListeners;
    MonitorThread monitor;

    // The component's thread only.
    std::set<int> namedSilent; ///< programs whose silence is in the log; they have not answered since
    int failedHeartbeats = 0;
};

} // namespace Extend
