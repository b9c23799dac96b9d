#include "kernel/SystemEngine.h"

#include "kernel/DeviceWorker.h"
#include "kernel/MessageIds.h"

namespace Kernel
{

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

void SystemEngine::registerComponent(const juce::String& groupName, SystemTask::Ptr component)
{
    const auto id = component->getId();
    components[id] = component;
    auto* group = findGroup(groupName);
    if (group == nullptr)
        return;
    component->setGroupName(groupName);
    group->addComponent(component);
    routes[id] = group;
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

void SystemEngine::release()
{
    for (auto& group : groups)
        group->release();
    groups.clear();
    routes.clear();
    components.clear();
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
    const auto route = routes.find(message->receiver);
    if (route != routes.end())
        route->second->post(message, urgent);
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
