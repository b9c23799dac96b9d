#pragma once

#include "kernel/Singleton.h"
#include "kernel/TaskGroup.h"

#include <array>
#include <vector>

namespace Kernel
{

/**
    Owner of the task groups and the components, and the way from a message to its receiver. Groups and components are
    added on the message thread before `start`; other threads may post meanwhile, and what has a route waits for it.
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
        From here on messages to the component wait in its group, which the component itself may join later. False when
        there is no such group, or no such component can be. Message thread, before `start`.
    */
    bool addRoute(const juce::String& groupName, ComponentId id);
    /** With an unknown group name the component is known but has no route. */
    void registerComponent(const juce::String& groupName, SystemTask::Ptr component);

    /** Starts every device worker and group and broadcasts MSG_SYS_START. Message thread. */
    void start();
    /** From here on every message is dropped; ends the groups in creation order, then the workers. Message thread. */
    void stop();
    /**
        Message thread. False, and nothing happens, while a group's thread still runs: its handler may touch any
        component.
    */
    bool release();

    /** Any thread. Takes the message over; one without a route, or after `stop`, is dropped and left to the caller. */
    void postMessage(SystemMessage::Ptr& message);
    void postUrgentMessage(SystemMessage::Ptr& message);
    /**
        Messages that the receiver's group has not taken over yet: who passes on what comes from outside asks first, so
        that a flood does not fill the memory. Any thread.
    */
    std::size_t countQueued(ComponentId receiver) const;
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

/**
    Obtains, fills, posts on the normal queue and recycles. Returns nothing: a message that cannot be delivered is
    dropped.
*/
void postSystemMessage(ComponentId receiver, juce::int32 id, juce::int32 arg1, juce::int32 arg2,
                       Payload payload = nullptr);
/** The same on the urgent queue. */
void postUrgentSystemMessage(ComponentId receiver, juce::int32 id, juce::int32 arg1, juce::int32 arg2,
                             Payload payload = nullptr);
/** The same to the handler of a page inside an application task. */
void postHandlerMessage(ComponentId application, juce::int32 page, juce::int32 id, juce::int32 arg1, juce::int32 arg2,
                        Payload payload = nullptr);

} // namespace Kernel
