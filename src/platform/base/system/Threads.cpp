#include "platform/base/Threads.h"

#include "platform/record/Recorder.h"

#include <array>
#include <condition_variable>
#include <juce_events/juce_events.h>
#include <pthread.h>

namespace Platform
{

struct Thread::Backend : juce::Thread
{
    explicit Backend(Platform::Thread& threadOwner)
        : juce::Thread(threadOwner.getThreadName())
        , owner(threadOwner)
    {
    }
    void run() override
    {
        enterThread(owner.getThreadName());
        owner.run();
    }

    Platform::Thread& owner;
};

Thread::Thread(const juce::String& threadName)
    : name(threadName)
    , backend(std::make_unique<Backend>(*this))
{
}

Thread::~Thread() = default;

bool Thread::startThread()
{
    return backend->startThread();
}

bool Thread::isThreadRunning() const
{
    return backend->isThreadRunning();
}

void Thread::signalThreadShouldExit()
{
    backend->signalThreadShouldExit();
}

bool Thread::threadShouldExit() const
{
    return backend->threadShouldExit();
}

void Thread::notify()
{
    backend->notify();
}

namespace
{

/** What ends a wait with a limit depends on how fast others are. */
template <typename Wait>
bool waited(int limitMs, Wait&& wait)
{
    return limitMs < 0 ? wait() : recorded(Step::waitEnd, wait);
}

} // namespace

bool Thread::wait(int limitMs)
{
    return waited(limitMs, [&] { return backend->wait(limitMs); });
}

bool Thread::waitForThreadToExit(int limitMs) const
{
    return backend->waitForThreadToExit(limitMs);
}

Thread::Id Thread::currentId()
{
    return juce::Thread::getCurrentThreadId();
}

juce::String Thread::currentName()
{
    if (isMessageThread())
        return "message thread";
    std::array<char, 16> text {};
    pthread_getname_np(pthread_self(), text.data(), text.size());
    return text.data();
}

struct Mutex::Backend
{
    std::recursive_mutex mutex;
    int depth = 0; ///< of the thread that has it
    bool isStep = true;
};

Mutex::Mutex(Guards guarded)
    : backend(std::make_unique<Backend>())
{
    backend->isStep = guarded == Guards::engine;
}

Mutex::~Mutex() = default;

namespace
{

void lockOrThrow(std::recursive_mutex& mutex)
{
    constexpr std::chrono::milliseconds pause { 1 };
    while (!mutex.try_lock())
    {
        Observer::takeMillisecond();
        sleepFor(pause);
    }
}

} // namespace

void Mutex::lock() const
{
    if (Observer::isHere())
        lockOrThrow(backend->mutex);
    else
        backend->mutex.lock();
    if (backend->depth++ == 0 && backend->isStep)
        recordStep(Step::locked);
}

void Mutex::unlock() const
{
    --backend->depth;
    backend->mutex.unlock();
}

struct Event::Backend : juce::WaitableEvent
{
    using juce::WaitableEvent::WaitableEvent;
};

Event::Event(bool keptUp)
    : backend(std::make_unique<Backend>(keptUp))
{
}

Event::~Event() = default;

void Event::signal()
{
    backend->signal();
}

void Event::reset()
{
    backend->reset();
}

bool Event::wait(int limitMs)
{
    return waited(limitMs, [&] { return backend->wait(limitMs); });
}

struct Condition::Backend : std::condition_variable
{
};

Condition::Condition()
    : backend(std::make_unique<Backend>())
{
}

Condition::~Condition() = default;

void Condition::notify()
{
    backend->notify_all();
}

void Condition::wait(Lock& lock, const Predicate& isSo)
{
    backend->wait(lock, isSo);
}

bool Condition::waitUntil(Lock& lock, Clock::time_point deadline, const Predicate& isSo)
{
    return backend->wait_until(lock, deadline, isSo);
}

bool lookFor(const std::atomic<bool>& flag)
{
    constexpr std::chrono::microseconds lookTime { 5 };
    constexpr int pausesPerLook = 8; // whoever raises it gets on meanwhile: a look takes the flag out of its cache
    auto now = Clock::now();
    for (const auto end = now + lookTime; now < end;)
    {
        if (flag.load(std::memory_order_relaxed))
            return true;
        for (int pause = 0; pause < pausesPerLook; ++pause)
            now = Clock::now();
    }
    return false;
}

void letOthersRun() {}

bool isMessageThread()
{
    return juce::MessageManager::existsAndIsCurrentThread();
}

void callOnMessageThread(std::function<void()> call)
{
    if (Observer::isHere()) // its own affair
    {
        juce::MessageManager::callAsync(std::move(call));
        return;
    }
    const RecordedSection section(Step::callPosted);
    juce::MessageManager::callAsync(
        [call = std::move(call)]
        {
            recordStep(Step::callBegun);
            call();
        });
}

} // namespace Platform
