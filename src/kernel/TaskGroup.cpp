#include "kernel/TaskGroup.h"

#include "kernel/Names.h"
#include "kernel/TimerStarts.h"
#include "platform/base/Logger.h"
#include "platform/base/System.h"
#include "platform/base/Threads.h"
#include "platform/record/Recorder.h"

#include <chrono>
#include <iterator>

namespace Kernel
{

namespace
{

constexpr Platform::Log logger { "kernel/TaskGroup", "TaskGroup" };

constexpr int normalPriority = 5;
constexpr std::chrono::milliseconds deferredBackOff { 5 };

/** Without its last word, which says nothing, the name of every group is short enough for the system. */
juce::String threadNameOf(const juce::String& group)
{
    for (const juce::String word : { "Group", "Thread" })
        if (group.endsWith(word))
            return group.dropLastCharacters(word.length());
    return group;
}

} // namespace

class TaskGroup::MessageThread : public Platform::Thread
{
public:
    explicit MessageThread(TaskGroup& owningGroup)
        : Platform::Thread(threadNameOf(owningGroup.name))
        , group(owningGroup)
    {
    }

    void run() override
    {
        if (group.priority > normalPriority)
        {
            group.realtime = Platform::requestRealtimePriority();
            logger().info("%s runs with %s priority", group.name.toRawUTF8(), group.realtime ? "real-time" : "normal");
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
    if (component == nullptr || isRunning())
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

bool TaskGroup::isRunning() const
{
    return thread->isThreadRunning();
}

void TaskGroup::stop()
{
    stopping = true;
    thread->signalThreadShouldExit();
    wakeUp.signal();
    if (!Platform::awaitEnd(*thread))
    {
        logger().error("%s does not stop, a handler is still running", name.toRawUTF8());
        return;
    }
    for (auto& [id, component] : components)
        component->onStop();
}

void TaskGroup::release()
{
    for (auto& [id, component] : components)
        component->onRelease();
    components.clear();
    name.clear();
    pending.clear();
}

void TaskGroup::post(SystemMessage::Ptr& message, bool urgent)
{
    if (stopping)
        return;
    if (Trace::isOn())
        message->origin = Trace::here();
    {
        using Platform::Step;
        const Platform::RecordedSection section(Step::posted, message->receiver, message->id, message->arg1,
                                                message->arg2);
        const std::lock_guard guard(inbox.lock);
        (urgent ? inbox.urgentQueue : inbox.normalQueue).push_back(std::move(message));
        if (!inbox.filled.load(std::memory_order_relaxed))
            inbox.filledSince = Platform::Clock::now();
        inbox.filled.store(true, std::memory_order_relaxed);
    }
    if (inbox.waiting.load() && inbox.waiting.exchange(false))
        wakeUp.signal();
}

void TaskGroup::run()
{
    while (!stopping)
    {
        const int deferred = runPass();
        if (pending.empty())
            waitForMessages();
        else if (deferred > 0 && priority > normalPriority)
            Platform::sleepFor(deferredBackOff);
    }
}

void TaskGroup::takeOver()
{
    const auto moveAll = [this](std::vector<SystemMessage::Ptr>& queue, std::vector<SystemMessage::Ptr>::iterator where)
    {
        if (pending.empty())
            pending.swap(queue);
        else
            pending.insert(where, std::make_move_iterator(queue.begin()), std::make_move_iterator(queue.end()));
        queue.clear();
    };
    // Beside one that waits for its turn it matters whether another was there: then every look is a step.
    if (pending.empty() && !inbox.filled.load(std::memory_order_relaxed))
        return;
    const Platform::RecordedSection section(Platform::Step::takenOver);
    const std::lock_guard guard(inbox.lock);
    moveAll(inbox.urgentQueue, pending.begin());
    moveAll(inbox.normalQueue, pending.end());
    inbox.filled.store(false, std::memory_order_relaxed);
}

void TaskGroup::waitForMessages()
{
    // Messages come in bursts. To look again for a moment costs microseconds; to fall asleep at once costs every poster
    // of the burst a call to the kernel. At real-time priority nobody else would get on meanwhile.
    if (!realtime && Platform::lookFor(inbox.filled))
        return;
    {
        // Once more, under the lock: a poster either has appended already or finds the flag set and signals.
        const std::lock_guard guard(inbox.lock);
        if (!inbox.urgentQueue.empty() || !inbox.normalQueue.empty())
            return;
        inbox.waiting = true;
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
        auto* receiver = TimerStarts::isStale(*message) ? nullptr : findComponent(message->receiver);
        if (receiver != nullptr && !receiver->acceptMessage(*message))
        {
            pending[deferred++] = std::move(message);
            continue;
        }
        if (receiver != nullptr)
        {
            Platform::recordStep(Platform::Step::begun, message->receiver, message->id);
            handle(*receiver, *message);
        }
        MessagePool::recycle(message);
        Platform::letOthersRun();
    }
    const auto at = [this](std::size_t offset) { return pending.begin() + static_cast<std::ptrdiff_t>(offset); };
    pending.erase(at(deferred), at(index));
    doing.deferred.store(deferred, std::memory_order_relaxed);
    return static_cast<int>(deferred);
}

void TaskGroup::handle(SystemTask& receiver, const SystemMessage& message)
{
    constexpr auto relaxed = std::memory_order_relaxed;
    const auto begin = Platform::Clock::now();
    doing.message.store(message.id, relaxed);
    doing.since.store(begin, relaxed);
    doing.receiver.store(message.receiver, relaxed);
    const CauseScope cause(message.cause);
    Actor::own = { message.receiver, message.handlerIndex };
    receiver.dispatchMessage(message);
    Actor::own = {};
    doing.receiver.store(noComponent, relaxed);
    Trace::span(message.origin, begin, Trace::Kind::message, message.receiver, message.id, message.arg1, message.arg2,
                message.handlerIndex);
}

GroupStatus TaskGroup::getStatus() const
{
    GroupStatus status;
    status.name = name;
    status.thread = thread->getThreadName();
    status.receiver = doing.receiver;
    status.message = doing.message;
    status.since = doing.since;
    status.deferred = doing.deferred;
    const std::lock_guard guard(inbox.lock);
    status.queued = inbox.urgentQueue.size() + inbox.normalQueue.size();
    if (status.queued == 0)
        return status;
    const auto& next = inbox.urgentQueue.empty() ? *inbox.normalQueue.front() : *inbox.urgentQueue.front();
    status.queuedSince = inbox.filledSince;
    status.nextReceiver = next.receiver;
    status.nextMessage = next.id;
    return status;
}

bool GroupStatus::isStuck(Platform::Clock::duration limit) const
{
    const auto now = Platform::Clock::now();
    return (receiver != noComponent && now - since > limit) || (queued > 0 && now - queuedSince > limit);
}

juce::String GroupStatus::describe() const
{
    if (receiver != noComponent)
        return "is busy with " + messageName(message) + " of " + componentName(receiver);
    return "does not take up " + messageName(nextMessage) + " for " + componentName(nextReceiver);
}

bool TaskGroup::hasMessages() const
{
    return !pending.empty() || countQueued() > 0;
}

std::size_t TaskGroup::countQueued() const
{
    const std::lock_guard guard(inbox.lock);
    return inbox.urgentQueue.size() + inbox.normalQueue.size();
}

} // namespace Kernel
