#include "bench/simulation/Scheduler.h"
#include "platform/base/Threads.h"

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

struct Mutex::Backend
{
    bool held = false;
    Waiting waiting;
};

Mutex::Mutex()
    : backend(std::make_unique<Backend>())
{
}

Mutex::~Mutex() = default;

void Mutex::lock()
{
    while (backend->held)
        backend->waiting.wait({});
    backend->held = true;
}

void Mutex::unlock()
{
    backend->held = false;
    backend->waiting.wakeFirst();
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
