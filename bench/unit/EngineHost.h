#pragma once

#include "bench/unit/HeldThread.h"
#include "bench/unit/Journal.h"
#include "bench/unit/Places.h"
#include "bench/unit/UnitOptions.h"

#include <mutex>

namespace Bench
{

/**
    Who runs the engine and its message bus. Journal stream "engine": "started", then "ended" and what is known of the
    end ("exit 0", "signal 9"); "SystemGroup stands still" and "SystemGroup goes on" in between. Stream "bus":
    "started", "stopped"; "power": "cut". One thread, but for `isRunning`, `isBusRunning`, `pid`, `stalledGroup` and `cutPower`.
*/
class EngineHost
{
public:
    virtual ~EngineHost() = default;
    EngineHost(const EngineHost&) = delete;
    EngineHost& operator=(const EngineHost&) = delete;

    // The three steps of a start, and the two of an end. Empty on success, else what failed.

    /** Before there is any device. */
    virtual std::string findPlaces(Places& places) = 0;
    /** When the devices are there; afterwards the engine may start. */
    virtual std::string start() = 0;
    /** The engine, as far as it is the bench's own. */
    virtual void endEngine() {}
    /** All else that the host has started, when the programs have been told to end. */
    virtual void stop() = 0;
    /** Removes what it made, when the devices are gone. */
    virtual void cleanUp() = 0;

    /** What is one of start, stop, restart and kill. Returns when it is done; empty on success, else what failed. */
    virtual std::string controlEngine(const std::string& what) = 0;
    /** Of start, stop and restart. */
    virtual std::string controlBus(const std::string& what) = 0;
    /**
        The engine is gone at once, if it is not `down` already; false when its power is somebody else's. Any thread, and
        does not wait.
    */
    virtual bool cutPower([[maybe_unused]] bool down = false) { return false; }
    /** The engine will end by itself, and that is no fault. Any thread. */
    virtual void expectEnd() {}
    /** Kills the programs that ended engines have left behind and that nobody else can name. */
    virtual void endOrphans() {}
    /** The engine's traffic dumps; holds from its next start on. */
    virtual std::string setSystemDebug(bool on) = 0;
    /**
        Holds the thread of this group of tasks for so long, or until `goOn`; one group at a time. Empty on success, else
        what failed.
    */
    std::string stall(const std::string& group, std::chrono::milliseconds time);
    void goOn() { stalled.release(); }
    /** The group that stands still; "" for none. Any thread. */
    std::string stalledGroup() const;

    bool isRunning() const { return pid() > 0; }
    /** -1 when it does not run. */
    virtual int pid() const = 0;
    /** As D-Bus names it; of a bus that has not started yet "". */
    virtual std::string busAddress() const = 0;
    virtual bool isBusRunning() const = 0;
    /** Where programs and bars draw, as DISPLAY says it; "" when they do not. */
    virtual const std::string& display() const = 0;
    /** Whether the journal says how the engine has ended. */
    virtual bool tellsExitStatus() const = 0;

protected:
    explicit EngineHost(Journal& journalToUse)
        : journal(journalToUse)
    {
    }

    Journal& journal;

private:
    struct Held
    {
        int process = -1;
        std::string group;
    };
    mutable std::mutex lock;
    Held held;          ///< what stands still, or did so when its process ended
    HeldThread stalled; // ends before them

    void note(Held now);
};

/** What DISPLAY says, unless nothing is to be drawn; "" for nowhere. */
std::string displayOfEnvironment(Display display);

} // namespace Bench
