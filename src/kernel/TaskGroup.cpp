#include "kernel/TaskGroup.h"

#include "platform/Logger.h"
#include "platform/System.h"

namespace Kernel
{

namespace
{

constexpr int normalPriority = 5;
constexpr int stopTimeoutMs = 200;
constexpr int deferredBackOffMs = 5;

} // namespace

class TaskGroup::MessageThread : public juce::Thread
{
public:
    explicit MessageThread(TaskGroup& owningGroup)
        : juce::Thread(owningGroup.name)
        , group(owningGroup)
    {
    }

    void run() override
    {
        if (group.priority > normalPriority)
        {
            const bool realtime = Platform::requestRealtimePriority();
            Platform::Logger::getInstance()->logInfo("kernel/TaskGroup", __LINE__, "TaskGroup",
                                                     "%s runs with %s priority", group.name.toRawUTF8(),
                                                     realtime ? "real-time" : "normal");
        }
        group.run();
    }

private:
    TaskGroup& group;
};

TaskGroup::TaskGroup(const juce::String& groupName, int threadPriority)
    : name(groupName)
    , priority(threadPriority)
    , thread(std::make_unique<MessageThread>(*this))
{
}

TaskGroup::~TaskGroup() = default;

bool TaskGroup::addComponent(SystemTask::Ptr component)
{
    if (component == nullptr || thread->isThreadRunning())
        return false;
    const auto id = component->getId();
    components[id] = std::move(component);
    return true;
}

SystemTask* TaskGroup::findComponent(ComponentId id) const
{
    const auto found = components.find(id);
    return found == components.end() ? nullptr : found->second.get();
}

void TaskGroup::start()
{
    stopping = false;
    thread->startThread();
}

void TaskGroup::stop()
{
    stopping = true;
    thread->signalThreadShouldExit();
    wakeUp.signal();
    // A thread that does not end is left alone: killing it could take the whole process along.
    if (thread->isThreadRunning() && !thread->waitForThreadToExit(stopTimeoutMs))
        Platform::Logger::getInstance()->logError("kernel/TaskGroup", __LINE__, "TaskGroup",
                                                  "%s does not stop, a handler is still running", name.toRawUTF8());
    for (auto& [id, component] : components)
        component->onStop();
}

void TaskGroup::release()
{
    for (auto& [id, component] : components)
        component->onRelease();
    if (thread->isThreadRunning() && !thread->waitForThreadToExit(stopTimeoutMs))
    {
        // The thread still uses the group: it is given up on purpose, and so is everything that the thread may touch.
        incReferenceCount();
        return;
    }
    components.clear();
    name.clear();
    pending.clear();
}

void TaskGroup::post(const SystemMessage::Ptr& message, bool urgent)
{
    if (stopping)
        return;
    {
        const juce::ScopedLock guard(queueLock);
        (urgent ? urgentQueue : normalQueue).push_back(message);
    }
    if (waiting.exchange(false))
        wakeUp.signal();
}

void TaskGroup::run()
{
    while (!stopping)
    {
        takeOver();
        if (pending.empty())
            waitForMessages();
        else if (runPass() > 0 && priority > normalPriority)
            juce::Thread::sleep(deferredBackOffMs);
    }
}

void TaskGroup::takeOver()
{
    const juce::ScopedLock guard(queueLock);
    pending.insert(pending.begin(), urgentQueue.begin(), urgentQueue.end());
    urgentQueue.clear();
    pending.insert(pending.end(), normalQueue.begin(), normalQueue.end());
    normalQueue.clear();
}

void TaskGroup::waitForMessages()
{
    {
        // Under the lock: a poster either has appended already or finds the flag set and signals.
        const juce::ScopedLock guard(queueLock);
        if (!urgentQueue.empty() || !normalQueue.empty())
            return;
        waiting = true;
    }
    wakeUp.wait();
}

int TaskGroup::runPass()
{
    takeOver();
    std::size_t deferred = 0;
    std::size_t index = 0;
    for (; index < pending.size() && !stopping; ++index)
    {
        auto message = std::move(pending[index]);
        auto* receiver = findComponent(message->receiver);
        if (receiver != nullptr && !receiver->acceptMessage(*message))
        {
            pending[deferred++] = std::move(message);
            continue;
        }
        if (receiver != nullptr)
            receiver->dispatchMessage(*message);
        MessagePool::recycle(message);
    }
    const auto at = [this](std::size_t offset) { return pending.begin() + static_cast<std::ptrdiff_t>(offset); };
    pending.erase(at(deferred), at(index));
    return static_cast<int>(deferred);
}

bool TaskGroup::hasMessages() const
{
    const juce::ScopedLock guard(queueLock);
    return !pending.empty() || !urgentQueue.empty() || !normalQueue.empty();
}

} // namespace Kernel
