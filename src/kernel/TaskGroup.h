#pragma once

#include "kernel/SystemTask.h"
#include "platform/base/Threads.h"

#include <map>
#include <mutex>
#include <vector>

namespace Kernel
{

/** What a group's thread does. */
struct GroupStatus
{
    juce::String name;
    juce::String thread;                     ///< the name of its thread
    ComponentId receiver = noComponent;      ///< whose handler runs; none while it waits
    juce::int32 message = 0;                 ///< which it handles
    Platform::Clock::time_point since;       ///< when it began, or the last one did
    std::size_t queued = 0;                  ///< messages that it has not taken over yet
    Platform::Clock::time_point queuedSince; ///< since when one of them waits
    ComponentId nextReceiver = noComponent;  ///< of the one that waits longest, and what it is
    juce::int32 nextMessage = 0;
    std::size_t deferred = 0; ///< those that wait until their receiver accepts them

    /** A handler, or a message that nobody takes up, has taken longer. */
    bool isStuck(Platform::Clock::duration limit) const;
    /** "is busy with MSG_APP_SWITCH of RadioApplication", or which message it does not take up. */
    juce::String describe() const;
};

/** A set of components and the one thread that runs all their handlers. */
class TaskGroup : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<TaskGroup>;

    /**
        Priority 0 to 10; above 5 the thread asks for real-time priority, and waits 5 ms between passes while messages
        are deferred.
    */
    TaskGroup(const juce::String& groupName, int threadPriority);
    ~TaskGroup() override;

    const juce::String& getName() const { return name; }

    /** False, and no change, while the thread runs. */
    bool addComponent(SystemTask::Ptr component);
    SystemTask* findComponent(ComponentId id) const;

    void start();
    bool isRunning() const;
    /**
        Ends the thread and calls `onStop` of the components in ascending id order; not when a handler still runs after
        200 ms, which is logged.
    */
    void stop();
    /** `onRelease` of the components in ascending id order; then the group is empty. */
    void release();

    /**
        Moves the message to the normal or urgent queue and wakes the thread. While the group stops, the message is
        dropped and stays with the caller. Any thread.
    */
    void post(SystemMessage::Ptr& message, bool urgent);

    /**
        One pass: takes over both queues, the urgent one in front of what is pending, and offers every pending message
        to its receiver; expiries of timers that have been stopped since are dropped. Returns how many messages stay
        pending. The group's thread, or a test in its place.
    */
    int runPass();
    /** True when a pass would find something. The group's thread, or a test in its place. */
    bool hasMessages() const;
    /** Messages that the thread has not taken over yet. Any thread. */
    std::size_t countQueued() const;
    /** Any thread; it does not wait for the group's. */
    GroupStatus getStatus() const;

private:
    class MessageThread;

    void run();
    void handle(SystemTask& receiver, const SystemMessage& message);
    void takeOver();
    void waitForMessages();

    juce::String name;
    int priority;
    bool realtime = false; ///< set and read by the thread
    std::unique_ptr<MessageThread> thread;
    std::map<ComponentId, SystemTask::Ptr> components;
    // Vectors keep their memory, so that steady traffic does not allocate.
    std::vector<SystemMessage::Ptr> pending;
    /** What the thread does, for those who look on: one writer, who need not wait for the others to see it. */
    struct Doing
    {
        std::atomic<ComponentId> receiver { noComponent };
        std::atomic<juce::int32> message { 0 };
        std::atomic<Platform::Clock::time_point> since {};
        std::atomic<std::size_t> deferred { 0 };
    };
    Doing doing;
    std::atomic<bool> stopping { false };
    Platform::Event wakeUp;

    /** What posters and the thread share, on cache lines of its own. */
    struct alignas(64) Inbox
    {
        mutable std::mutex lock;
        std::atomic<bool> filled { false };  ///< a queue holds something; written under the lock
        std::atomic<bool> waiting { false }; ///< the thread sleeps or is about to; set under the lock
        Platform::Clock::time_point filledSince;
        std::vector<SystemMessage::Ptr> normalQueue;
        std::vector<SystemMessage::Ptr> urgentQueue;
    };
    Inbox inbox;
};

} // namespace Kernel
