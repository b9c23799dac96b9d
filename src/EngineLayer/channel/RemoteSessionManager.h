#pragma once

#include "EngineApi/Remote.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "lowlayer/ClientCallBack.h"
#include "platform/base/BoundedQueue.h"
#include "platform/base/Threads.h"

#include <map>
#include <optional>
#include <set>

namespace EngineLayer
{

/**
    Knows which programs are registered, keeps messages for those that are not yet, and routes what programs send: ids
    with a filter go to the filter, all others to the handler of the program's page. Any thread may send.
*/
class RemoteSessionManager : public Kernel::ComponentTask,
                             public LowLayer::ClientCallBack,
                             public EngineApi::AppConnectStateInterface,
                             public Kernel::Singleton<RemoteSessionManager>
{
public:
    /**
        True when the message went out. A program that is not registered gets it when it registers, in order; at most
        4096 wait for a program, the newest.
    */
    bool sendToApp(int appType, const Platform::RemoteMessage::Ptr& message);
    /** Messages for programs since the start. What was accepted has gone out, was dropped, or waits. */
    struct Counts
    {
        std::uint64_t accepted = 0;
        std::uint64_t posted = 0;
        std::uint64_t dropped = 0; ///< its program could not be reached, has ended, or too many waited
        std::uint64_t waiting = 0;
    };
    Counts getCounts() const;
    /** Messages that wait until the program has started; of all programs without one. Any thread. */
    std::size_t countWaiting(std::optional<int> appType = {}) const;
    void addMsgFilter(juce::int32 what, EngineApi::RemoteMsgFilterInterface* filter);
    bool isAppRegistered(int appType) const;
    /** Ascending. */
    std::vector<int> getRegisteredApps() const;

    void initialize() override;
    void onRelease() override;
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;

    void onData(int kind, int appType, juce::ReferenceCountedObject* data) override;
    void onAppConnectState(int appType, int state) override;

private:
    friend class Kernel::Singleton<RemoteSessionManager>;
    RemoteSessionManager() = default;

    void registerApp(int appType);
    void unregisterApp(int appType);
    void stopPosting(int appType);
    /**
        Discards what waits for a program that has ended. States are announced later than they are set, so messages for
        a process that has been started meanwhile go on waiting.
    */
    void dropPending(int appType);
    bool post(int appType, const Platform::RemoteMessage::Ptr& message);
    void receive(int appType, Platform::RemoteMessage& message);
    static void postToPageOf(int appType, juce::int32 id, Kernel::Payload payload = nullptr);

    /** Held while messages are posted, which keeps their order; never while somebody else's code runs. */
    Platform::Mutex lock;
    std::set<int> registeredApps;
    void countDropped(std::uint64_t messages); // under the lock

    Counts counts; ///< but for those that wait
    struct Waiting
    {
        Platform::RemoteMessage::Ptr message;
        bool isForStarted; ///< its program had been started and had not said hello
    };
    static constexpr std::size_t maxPending = 4096;
    std::map<int, Platform::BoundedQueue<Waiting, maxPending>> pendingMessages;
    std::map<juce::int32, EngineApi::RemoteMsgFilterInterface*> msgFilters;
};

} // namespace EngineLayer
