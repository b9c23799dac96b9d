#pragma once

#include "bench/simulation/Chance.h"
#include "platform/base/Time.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace Simulation
{

using Platform::Clock;

struct Fiber;

/** A thread that does what it is given, one piece after the other. */
class Lane
{
public:
    explicit Lane(std::string name);
    void post(std::function<void()> piece);
    bool isIdle() const { return !busy && work.empty(); }
    /** Whether its own work calls. */
    bool isCurrent() const;
    Fiber* getFiber() const { return fiber; }

private:
    std::deque<std::function<void()>> work;
    bool busy = false;
    Fiber* fiber;

    void run();
};

/**
    One thread of the machine that runs all threads of the engine, each as a fiber, on a clock of its own. Whenever
    several could go on, the seed decides which one does, until it waits. Time stands still while anything can be done,
    and then goes on to what is due next. There is one for the process; nothing here is for any other thread.
*/
class Scheduler
{
public:
    explicit Scheduler(std::uint64_t seed);
    ~Scheduler();
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;
    /** The one that exists. */
    static Scheduler& get();

    /**
        A processor that has others to do: at so many of a thousand occasions a thread goes on up to so much later. They
        are the ends of its turns, and the locks that it takes and gives back.
    */
    struct Load
    {
        int delays = 0;
        std::chrono::milliseconds longestDelay { 1 };
    };
    Load load;

    Clock::time_point now() const { return time; }
    Chance& getChance() { return chance; }

    // Threads.

    /** Begins with the next step that is given to it. */
    Fiber* start(std::string name, std::function<void()> body);
    /** Null outside of all fibers. */
    Fiber* current() const { return running; }
    /** "outside" there. */
    std::string currentName() const;
    bool hasEnded(const Fiber* fiber) const;
    /** The one that was started last by this name, of which the first 15 bytes count; null for none. */
    Fiber* find(std::string_view name) const;
    /** The current fiber waits until it is woken. False when the time was over before. */
    bool wait(std::optional<Clock::time_point> deadline);
    /** The same for the end of another one. */
    void waitForEnd(Fiber* other, std::optional<Clock::time_point> deadline);
    /** Nothing for one that does not wait. */
    void wake(Fiber* fiber);
    /** Others may go on first. Nothing outside of all fibers. */
    void letOthersRun();
    /**
        An occasion for the load, without which it is none. Nothing outside of all fibers, in what the bench does on one,
        and on the message thread: what is between an expiry and its callback is the framework's.
    */
    void passOccasion();

    /** Timers expire on it. */
    Lane& messageThread() { return *messages; }

    // Timers, whose expiries are the message thread's work.

    void startTimer(Platform::MultiTimer& owner, int id, int intervalMs);
    void stopTimer(const Platform::MultiTimer& owner, int id);
    void stopTimers(const Platform::MultiTimer& owner);
    /** 0 for one that does not run. */
    int timerInterval(const Platform::MultiTimer& owner, int id) const;
    struct RunningTimer
    {
        Platform::MultiTimer* owner;
        int id;
        int intervalMs;
        Clock::time_point due;
        std::uint64_t start; ///< its number among the starts of all timers
        int expiries = 0;    ///< handled on the message thread since the start
    };
    /** Empty for one that does not run. */
    std::optional<RunningTimer> timer(const Platform::MultiTimer& owner, int id) const;
    std::vector<RunningTimer> runningTimers() const;

    // What is outside of the engine.

    /** It says when it wants to be called next; then it is, once, and asked again. */
    struct Source
    {
        std::function<std::optional<Clock::time_point>()> due;
        std::function<void()> run;
    };
    void addSource(Source source) { sources.push_back(std::move(source)); }

    /** One step of one of them. False when nothing can be done before the time of `nextDue`. */
    bool step();
    /** Empty when only a call from outside can bring anything. */
    std::optional<Clock::time_point> nextDue() const;
    /** Steps until nothing can be done before this time, which it then is, or until `goesOn` says no after one. */
    void runUntil(Clock::time_point end, const std::function<bool()>& goesOn);
    /** So many steps, unless nothing is left to do; time goes on as they need it. */
    void runSteps(int count, const std::function<bool()>& goesOn);
    std::uint64_t steps() const { return stepsDone; }

    /** How often a fiber has run; one that has found nothing to do does not count. */
    std::uint64_t activity() const { return activityCount; }
    void discountActivity() { discounted = true; }
    /** Told of each fiber that is about to run, by its name. */
    void onResume(std::function<void(const std::string&)> observer) { resumeObserver = std::move(observer); }

private:
    struct TimerState : RunningTimer
    {
        bool posted = false; ///< its expiry waits for the message thread
    };

    Chance chance;
    Clock::time_point time { std::chrono::hours(1) };
    std::vector<std::unique_ptr<Fiber>> fibers; ///< in the order of their starts
    Fiber* running = nullptr;
    std::unique_ptr<Lane> messages;
    std::vector<std::unique_ptr<TimerState>> timers;
    std::uint64_t timerStarts = 0;
    std::vector<Source> sources;                                           ///< all added before the first step
    std::vector<std::variant<Fiber*, TimerState*, const Source*>> choices; ///< of the step under way
    std::uint64_t stepsDone = 0;
    std::uint64_t activityCount = 0;
    bool discounted = false;
    std::function<void(const std::string&)> resumeObserver;

    TimerState* findTimer(const Platform::MultiTimer& owner, int id) const;
    bool canRun(const Fiber& fiber) const;
    void run(Fiber& fiber, const std::function<void()>& body);
    void resume(Fiber& fiber);
    /** Whether it is put off. */
    bool putOff(Fiber& fiber);
    void expire(TimerState& timer);
};

} // namespace Simulation
