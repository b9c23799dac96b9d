#pragma once

#include "kernel/Singleton.h"
#include "kernel/TaskGroup.h"

#include <array>
#include <vector>

namespace Kernel
{

/**
    Owns the task groups and the components, and brings each message to its receiver. Groups and components are added on
    the message thread before `start`. Messages that have a route and are posted earlier wait for the start.
*/
class SystemEngine : public Singleton<SystemEngine>
{
public:
    SystemEngine() = default;

    /** False, and no change, when a group of that name exists. The thread is not started. */
    bool createGroup(const juce::String& name, int priority);
    /** Null when there is none. */
    TaskGroup* findGroup(const juce::String& name) const;
    /**
        From now on messages to the component wait in the group; the component itself may be registered later. False for
        an unknown group or an id out of range. Message thread, before `start`.
    */
    bool addRoute(const juce::String& groupName, ComponentId id);
    /** In an unknown group the component gets no messages. */
    void registerComponent(const juce::String& groupName, SystemTask::Ptr component);

    /** Starts every device worker and group and broadcasts MSG_SYS_START. Message thread. */
    void start();
    /** From now on every message is dropped; stops the groups in creation order, then the workers. Message thread. */
    void stop();
    /**
        Message thread. False, and nothing happens, while a group's thread still runs: its handler may touch any
        component.
    */
    bool release();

    /**
        Any thread. Takes the message over. Without a route, or after `stop`, it is dropped and stays with the caller.
    */
    void postMessage(SystemMessage::Ptr& message);
    void postUrgentMessage(SystemMessage::Ptr& message);
    /**
        Messages that the receiver's group has not taken over yet. To be asked before messages from outside are passed
        on, so that a flood does not fill the memory. Any thread.
    */
    std::size_t countQueued(ComponentId receiver) const;
    /** Of all groups, in the order of their creation. Any thread, while the engine runs. */
    std::vector<GroupStatus> getGroupStatus() const;
    /** To every component in ascending id order, on the normal queue. Any thread. */
    void broadcastMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2);

private:
    void post(SystemMessage::Ptr& message, bool urgent);
    /** Null without a route. */
    TaskGroup* groupOf(ComponentId receiver) const;

    std::vector<TaskGroup::Ptr> groups;
    std::array<std::atomic<TaskGroup*>, componentIdLimit> routes {};
    std::atomic<bool> stopping { false };
    std::map<ComponentId, SystemTask::Ptr> components;
};

/** Posts a message on the normal queue. Any thread. A message that cannot be delivered is dropped. */
void postSystemMessage(ComponentId receiver, juce::int32 id, juce::int32 arg1, juce::int32 arg2,
                       Payload payload = nullptr);
/** The same on the urgent queue. */
void postUrgentSystemMessage(ComponentId receiver, juce::int32 id, juce::int32 arg1, juce::int32 arg2,
                             Payload payload = nullptr);
/** The same to the handler of a page inside an application task. */
void postHandlerMessage(ComponentId application, juce::int32 page, juce::int32 id, juce::int32 arg1, juce::int32 arg2,
                        Payload payload = nullptr);

} // namespace Kernel
