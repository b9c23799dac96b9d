#include "kernel/SystemEngine.h"

#include "kernel/DeviceWorker.h"
#include "kernel/MessageIds.h"
#include "platform/base/Counter.h"

#include <algorithm>

namespace Kernel
{

namespace
{

Platform::Counter messagesUndeliverable { "engine.messages-undeliverable",
                                          "messages to a component that there is not" };

} // namespace

bool SystemEngine::createGroup(const juce::String& name, int priority)
{
    if (findGroup(name) != nullptr)
        return false;
    groups.push_back(new TaskGroup(name, priority));
    return true;
}

TaskGroup* SystemEngine::findGroup(const juce::String& name) const
{
    for (const auto& group : groups)
        if (group->getName() == name)
            return group.get();
    return nullptr;
}

bool SystemEngine::addRoute(const juce::String& groupName, ComponentId id)
{
    auto* group = findGroup(groupName);
    if (group == nullptr || !juce::isPositiveAndBelow(id, componentIdLimit))
        return false;
    routes[static_cast<std::size_t>(id)] = group;
    return true;
}

void SystemEngine::registerComponent(const juce::String& groupName, SystemTask::Ptr component)
{
    components[component->getId()] = component;
    if (!addRoute(groupName, component->getId()))
        return;
    component->setGroupName(groupName);
    findGroup(groupName)->addComponent(component);
}

void SystemEngine::start()
{
    stopping = false;
    DeviceWorker::startAll();
    for (auto& group : groups)
        group->start();
    broadcastMessage(MSG_SYS_START, 0, 0);
}

void SystemEngine::stop()
{
    stopping = true;
    for (auto& group : groups)
        group->stop();
    DeviceWorker::stopAll();
}

bool SystemEngine::release()
{
    if (std::any_of(groups.begin(), groups.end(), [](const auto& group) { return group->isRunning(); }))
        return false;
    for (auto& group : groups)
        group->release();
    for (auto& route : routes)
        route = nullptr;
    groups.clear();
    components.clear();
    return true;
}

void SystemEngine::postMessage(SystemMessage::Ptr& message)
{
    post(message, false);
}

void SystemEngine::postUrgentMessage(SystemMessage::Ptr& message)
{
    post(message, true);
}

void SystemEngine::post(SystemMessage::Ptr& message, bool urgent)
{
    if (stopping)
        return;
    if (auto* group = groupOf(message->receiver))
        group->post(message, urgent);
    else
        ++messagesUndeliverable;
}

TaskGroup* SystemEngine::groupOf(ComponentId receiver) const
{
    return juce::isPositiveAndBelow(receiver, componentIdLimit) ? routes[static_cast<std::size_t>(receiver)].load()
                                                                : nullptr;
}

std::size_t SystemEngine::countQueued(ComponentId receiver) const
{
    const auto* group = groupOf(receiver);
    return group != nullptr ? group->countQueued() : 0;
}

std::vector<GroupStatus> SystemEngine::getGroupStatus() const
{
    std::vector<GroupStatus> all;
    for (const auto& group : groups)
        all.push_back(group->getStatus());
    return all;
}

void SystemEngine::broadcastMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2)
{
    for (const auto& [receiver, component] : components)
        postSystemMessage(receiver, id, arg1, arg2);
}

namespace
{

SystemMessage::Ptr filledMessage(ComponentId receiver, juce::int32 id, juce::int32 arg1, juce::int32 arg2,
                                 Payload&& payload)
{
    auto message = MessagePool::obtain();
    message->id = id;
    message->arg1 = arg1;
    message->arg2 = arg2;
    message->receiver = receiver;
    message->payload = std::move(payload);
    message->cause = Cause::current();
    message->poster = Actor::current();
    return message;
}

} // namespace

void postSystemMessage(ComponentId receiver, juce::int32 id, juce::int32 arg1, juce::int32 arg2, Payload payload)
{
    auto message = filledMessage(receiver, id, arg1, arg2, std::move(payload));
    SystemEngine::getInstance()->postMessage(message);
    MessagePool::recycle(message);
}

void postUrgentSystemMessage(ComponentId receiver, juce::int32 id, juce::int32 arg1, juce::int32 arg2, Payload payload)
{
    auto message = filledMessage(receiver, id, arg1, arg2, std::move(payload));
    SystemEngine::getInstance()->postUrgentMessage(message);
    MessagePool::recycle(message);
}

void postHandlerMessage(ComponentId application, juce::int32 page, juce::int32 id, juce::int32 arg1, juce::int32 arg2,
                        Payload payload)
{
    auto message = filledMessage(application, id, arg1, arg2, std::move(payload));
    message->handlerIndex = page;
    SystemEngine::getInstance()->postMessage(message);
    MessagePool::recycle(message);
}

} // namespace Kernel
