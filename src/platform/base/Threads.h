#pragma once

#include "platform/base/Time.h"

#include <atomic>
#include <functional>
#include <juce_core/juce_core.h>
#include <memory>
#include <mutex>

/** How every thread of the unit begins, waits and ends. */
namespace Platform
{

/**
    A thread of the unit. The system knows it by its name, of which it keeps 15 bytes, and an overflow of its stack is a
    fault like any other. It is asked to end, never killed, as that could take the whole process along.
*/
class Thread
{
public:
    using Id = const void*;

    explicit Thread(const juce::String& threadName);
    /** The thread has ended. */
    virtual ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /** The thread's work. */
    virtual void run() = 0;

    const juce::String& getThreadName() const { return name; }
    /** False when the system gives no thread. Nothing happens to one that runs. Any thread. */
    bool startThread();
    bool isThreadRunning() const;
    void signalThreadShouldExit();
    bool threadShouldExit() const;
    /** Ends the thread's `wait`, or the next one when it does not wait. Any thread. */
    void notify();
    /** On the thread itself; without a limit for -1. False when the time was over. */
    bool wait(int limitMs);
    /** False when it still runs at the end of the limit; without one for -1. */
    bool waitForThreadToExit(int limitMs) const;

    /** Of the calling thread; no two that run have the same. */
    static Id currentId();
    /** As the system knows the calling thread, also one that is no `Thread`; "message thread" for that one. */
    static juce::String currentName();

private:
    struct Backend;
    const juce::String name;
    std::unique_ptr<Backend> backend;
};

/**
    A lock that one thread has, which may take it several times, and wait for a device or call others meanwhile. Any
    thread.
*/
class Mutex
{
public:
    enum class Guards {
        engine, ///< its order is a step of a recording
        outside ///< a back end, of which every use is a step already
    };

    explicit Mutex(Guards guarded = Guards::engine);
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    /** Throws for an observer that would wait too long. */
    void lock() const;
    void unlock() const;

    // The framework's names, for its lists.
    using ScopedLockType = juce::GenericScopedLock<Mutex>;
    void enter() const { lock(); }
    void exit() const { unlock(); }

private:
    struct Backend;
    std::unique_ptr<Backend> backend;
};

/** A flag that threads wait for. A wait that it ends lowers it, unless it is kept up. Any thread. */
class Event
{
public:
    explicit Event(bool keptUp = false);
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    void signal();
    void reset();
    /** Without a limit for -1. False when the time was over. */
    bool wait(int limitMs = -1);

private:
    struct Backend;
    std::unique_ptr<Backend> backend;
};

/** Waits until something is so that a lock guards. Whoever changes it says so. Any thread. */
class Condition
{
public:
    Condition();
    ~Condition();
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    using Lock = std::unique_lock<std::mutex>;
    using Predicate = std::function<bool()>;

    void notify();
    void wait(Lock& lock, const Predicate& isSo);
    /** What the predicate says at the end. */
    bool waitUntil(Lock& lock, Clock::time_point deadline, const Predicate& isSo);

private:
    struct Backend;
    std::unique_ptr<Backend> backend;
};

/**
    Looks for the flag for a few microseconds, which are spent here and not given to others: on a busy machine they would
    come back many milliseconds later. What it says at last.
*/
bool lookFor(const std::atomic<bool>& flag);

/** Here a simulated time lets other threads go on first, perhaps; a unit's own does nothing. */
void letOthersRun();

/** Whether the caller is on the one that handles timers and windows. */
bool isMessageThread();
/** There it is called later, in the order of these calls; never once the message loop has ended. Any thread. */
void callOnMessageThread(std::function<void()> call);

/**
    The first thing that a thread does which is not a `Thread`: the system knows it by this name from here on, and an
    overflow of its stack is a fault like any other.
*/
void enterThread(const juce::String& name);

/** The second half of it, for a thread that the toolkit has started. Costs nothing when it is done already. */
void guardStack();

/**
    Waits for a thread that was asked to end and woken, no longer than the limit. False when it still runs: then
    whatever it may touch has to stay.
*/
bool awaitEnd(Thread& thread, int limitMs = 200);

/** Whether `awaitEnd` was in vain for any thread. The process then ends without taking anything down. Any thread. */
bool hasStragglers();

} // namespace Platform
