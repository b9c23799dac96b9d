#pragma once

#include <chrono>
#include <memory>

/**
    The unit's time. Every clock, pause and timer of the engine is one of these, so that all of it can run on a simulated
    time as well: on a unit they are the system's clock and the framework's timers.
*/
namespace Platform
{

/** Only moves forward. Any thread. */
struct Clock
{
    using duration = std::chrono::steady_clock::duration;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::steady_clock::time_point;
    static constexpr bool is_steady = true;

    static time_point now();
};

/** Whether it is this time, or later. Any thread. */
bool hasCome(Clock::time_point time);

/** Since the beginning of 1970, which may be set back. Any thread. */
std::chrono::milliseconds timeOfDay();

/** Holds up the calling thread. */
void sleepFor(std::chrono::milliseconds duration);

/** Numbered timers that repeat until they are stopped; times are in milliseconds. Any thread. */
class MultiTimer
{
public:
    MultiTimer();
    /** No callback runs after it. */
    virtual ~MultiTimer();
    MultiTimer(const MultiTimer&) = delete;
    MultiTimer& operator=(const MultiTimer&) = delete;

    /** Message thread. */
    virtual void timerCallback(int timerId) = 0;

    /** At least 1 ms. Starting one that runs begins its period anew. */
    void startTimer(int timerId, int intervalMs);
    void stopTimer(int timerId);
    bool isTimerRunning(int timerId) const;
    /** 0 for one that does not run. */
    int getTimerInterval(int timerId) const;

private:
    struct Backend;
    std::unique_ptr<Backend> backend;
};

/** A timer of which its owner needs one. As `MultiTimer`. */
class Timer
{
public:
    virtual ~Timer() = default;

    /** Message thread. */
    virtual void timerCallback() = 0;

    void startTimer(int intervalMs) { timer.startTimer(only, intervalMs); }
    void stopTimer() { timer.stopTimer(only); }
    bool isTimerRunning() const { return timer.isTimerRunning(only); }
    int getTimerInterval() const { return timer.getTimerInterval(only); }

private:
    static constexpr int only = 0;

    struct Numbered : MultiTimer
    {
        explicit Numbered(Timer& timerOwner)
            : owner(timerOwner)
        {
        }
        void timerCallback(int) override { owner.timerCallback(); }

        Timer& owner;
    };
    Numbered timer { *this };
};

} // namespace Platform
