#include "bench/simulation/Scheduler.h"
#include "platform/base/Threads.h"
#include "platform/record/Recorder.h"

#include <algorithm>

namespace Platform
{

using Simulation::Scheduler;

namespace
{

std::optional<Clock::time_point> deadlineOf(int limitMs)
{
    if (limitMs < 0)
        return {};
    return Clock::now() + std::chrono::milliseconds(limitMs);
}

/** Fibers that wait for something, in the order in which they came. */
class Waiting
{
public:
    /** False when the time was over. */
    bool wait(std::optional<Clock::time_point> deadline)
    {
        auto& scheduler = Scheduler::get();
        auto* self = scheduler.current();
        fibers.push_back(self);
        const bool woken = scheduler.wait(deadline);
        std::erase(fibers, self);
        return woken;
    }
    void wakeFirst()
    {
        if (!fibers.empty())
            Scheduler::get().wake(fibers.front());
    }
    void wakeAll()
    {
        for (auto* fiber : fibers)
            Scheduler::get().wake(fiber);
    }

private:
    std::vector<Simulation::Fiber*> fibers;
};

} // namespace

struct Thread::Backend
{
    Simulation::Fiber* fiber = nullptr;
    bool shouldExit = false;
    Event notified;
};

Thread::Thread(const juce::String& threadName)
    : name(threadName)
    , backend(std::make_unique<Backend>())
{
}

Thread::~Thread() = default;

bool Thread::startThread()
{
    if (isThreadRunning())
        return true;
    backend->shouldExit = false;
    backend->fiber = Scheduler::get().start(name.toStdString(), [this] { run(); });
    return true;
}

bool Thread::isThreadRunning() const
{
    return !Scheduler::get().hasEnded(backend->fiber);
}

void Thread::signalThreadShouldExit()
{
    backend->shouldExit = true;
}

bool Thread::threadShouldExit() const
{
    return backend->shouldExit;
}

void Thread::notify()
{
    backend->notified.signal();
}

bool Thread::wait(int limitMs)
{
    return backend->notified.wait(limitMs);
}

bool Thread::waitForThreadToExit(int limitMs) const
{
    auto& scheduler = Scheduler::get();
    const auto deadline = deadlineOf(limitMs);
    while (isThreadRunning() && (!deadline || scheduler.now() < *deadline))
        scheduler.waitForEnd(backend->fiber, deadline);
    return !isThreadRunning();
}

Thread::Id Thread::currentId()
{
    return Scheduler::get().current();
}

juce::String Thread::currentName()
{
    return isMessageThread() ? "message thread" : juce::String(Scheduler::get().currentName());
}

struct Mutex::Backend
{
    Simulation::Fiber* owner = nullptr;
    int depth = 0;
    Waiting waiting;
};

Mutex::Mutex(Guards)
    : backend(std::make_unique<Backend>())
{
}

Mutex::~Mutex() = default;

void Mutex::lock() const
{
    auto* self = Scheduler::get().current();
    // Who looks from outside does not wait: the threads stand still, and the one that has it keeps it.
    if (backend->depth > 0 && (backend->owner == self || self == nullptr))
    {
        ++backend->depth;
        return;
    }
    // In a replay not before it was its turn.
    recordStep(Step::locked);
    Scheduler::get().passOccasion();
    while (backend->depth > 0)
        backend->waiting.wait({});
    backend->owner = self;
    ++backend->depth;
}

void Mutex::unlock() const
{
    if (--backend->depth > 0)
        return;
    backend->waiting.wakeFirst();
    Scheduler::get().passOccasion();
}

struct Event::Backend
{
    bool kept = false;
    bool up = false;
    Waiting waiting;
};

Event::Event(bool keptUp)
    : backend(std::make_unique<Backend>(Backend { .kept = keptUp, .waiting = {} }))
{
}

Event::~Event() = default;

void Event::signal()
{
    backend->up = true;
    if (backend->kept)
        backend->waiting.wakeAll();
    else
        backend->waiting.wakeFirst();
}

void Event::reset()
{
    backend->up = false;
}

bool Event::wait(int limitMs)
{
    // In a replay it is known how the wait ended.
    if (limitMs >= 0 && Recorder::active() != nullptr)
    {
        const bool woken = recorded(Step::waitEnd, [] { return false; });
        backend->up = backend->up && (backend->kept || !woken);
        return woken;
    }
    const auto deadline = deadlineOf(limitMs);
    while (!backend->up)
        if ((deadline && Clock::now() >= *deadline) || (!backend->waiting.wait(deadline) && !backend->up))
            return false;
    if (!backend->kept)
        backend->up = false;
    return true;
}

struct Condition::Backend
{
    Waiting waiting;
};

Condition::Condition()
    : backend(std::make_unique<Backend>())
{
}

Condition::~Condition() = default;

void Condition::notify()
{
    backend->waiting.wakeAll();
}

void Condition::wait(Lock& lock, const Predicate& isSo)
{
    while (!isSo())
    {
        lock.unlock();
        backend->waiting.wait({});
        lock.lock();
    }
}

bool Condition::waitUntil(Lock& lock, Clock::time_point deadline, const Predicate& isSo)
{
    while (!isSo() && Clock::now() < deadline)
    {
        lock.unlock();
        backend->waiting.wait(deadline);
        lock.lock();
    }
    return isSo();
}

bool lookFor(const std::atomic<bool>& flag)
{
    letOthersRun();
    return flag;
}

void letOthersRun()
{
    Scheduler::get().letOthersRun();
}

} // namespace Platform
