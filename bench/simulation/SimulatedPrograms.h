#pragma once

#include "bench/program/ProgramModel.h"
#include "bench/simulation/Lookout.h"
#include "bench/simulation/Scheduler.h"
#include "bench/unit/Journal.h"
#include "doubles/IpcDouble.h"
#include "doubles/ProcessDouble.h"

namespace Simulation
{

/** How the source programs of a world are. Times are the longest ones; the seed takes one up to them. */
struct ProgramHabits
{
    std::chrono::milliseconds start { 40 };
    std::chrono::milliseconds answer { 3 };
    int slowStarts = 0;   ///< of a thousand starts
    int failedStarts = 0; ///< of a thousand, as soon as they have said hello
    int answersTwice = 0; ///< of a thousand answers
};

/**
    All source programs: begun when the engine makes a process, heard and told through the channel's double, each at
    times of its own. What they show is in their models.
*/
class SimulatedPrograms
{
public:
    SimulatedPrograms(Bench::Journal& journalToUse, const Lookout& lookoutToTell);
    ~SimulatedPrograms();

    ProgramHabits habits;

    /** Those that run, by program. */
    std::vector<int> running() const;
    BenchProgram::ProgramModel* find(int appType);
    bool isConnected(int appType) const;
    /** What can be expected of a program. */
    struct Health
    {
        bool answers = false; ///< it is connected, does not hang, is not silent, and the bus is there
        std::optional<Clock::time_point> connected {}; ///< since then, when it is
        std::optional<Clock::time_point> gone {};      ///< when its process, or the one before, has ended
    };
    Health health(int appType) const;
    /** Those that are connected, and do not answer. */
    std::vector<int> unwell() const;
    bool isHung(int appType) const;
    /** The program if it is connected, else the one in front or any, which can ask in its place; null for none. */
    BenchProgram::ProgramModel* findCarrier(int appType);

    // What is done to one; nothing for one that does not run.
    void crash(int appType);
    void quit(int appType);
    void hang(int appType);
    void wakeUp(int appType);

    /** Without the bus nobody hears anybody, and what was on its way is lost. */
    void setBus(bool on);
    bool hasBus() const { return bus; }

    /** Nothing is on its way to or from any of them. */
    bool areIdle() const;
    /** A program of which two processes run; there is to be none. */
    std::optional<int> runningTwice() const;

private:
    struct Program;

    bool answers(const Program& program) const;
    Bench::Journal& journal;
    const Lookout& lookout;
    Lane channel { "ipc" };
    std::map<int, Clock::time_point> gone;
    bool bus = true;
    bool someEnded = false;                         ///< and is still among the programs
    std::vector<std::unique_ptr<Program>> programs; ///< one that has ended may lie before its successor

    std::optional<Clock::time_point> due() const;
    void run();
    void begin(const Platform::doubles::ProcessDouble::Launch& launch);
    Program* findProgram(int appType) const;
    void removeEnded();
    void hear(const Platform::IpcDouble::Posted& posted);
    std::chrono::milliseconds upTo(std::chrono::milliseconds longest) const;
};

} // namespace Simulation
