#pragma once

#include "platform/base/Process.h"
#include "platform/base/ProcessUsage.h"

#include <functional>
#include <vector>

namespace Platform::doubles
{

/** The processes of a test. None really runs; one ends when the test or the code under test ends it. Any thread. */
struct ProcessDouble
{
    /** Process number of the program under test, parent of everything it creates. */
    static constexpr int ownPid = 1000;

    struct Launch
    {
        juce::String path;
        juce::StringArray arguments;
        int pid;
        ProgramKind kind;
    };

    /** Handles that exist still answer, as for ended processes. */
    static void reset();

    /** What was created since the last `takeLaunches`, in order. A failed creation is not in it. */
    static std::vector<Launch> takeLaunches();
    /** Called inside each creation, on the creating thread, instead of keeping it for `takeLaunches`. */
    static void onLaunch(std::function<void(const Launch&)> observer);
    /** Called inside each end, and must not use the processes itself. */
    static void onEnd(std::function<void()> observer);
    static void failCreation(bool fails);
    /** What each running process needs from now on; none until it is said. */
    static void setUsage(std::optional<ProcessUsage> usage);

    /** A running process that the program under test did not start; its number. */
    static int addProcess(int parentPid = 1);
    /** Ends a process, which wakes who waits for it. */
    static void end(int pid, int exitCode = 0);
    static bool isRunning(int pid);
    /** Handles to processes that have ended still answer; nothing else is left of them. */
    static void forgetEnded();

    /** Processes that were ended by force since the last call, in order. They end at once. */
    static std::vector<int> takeTerminated();

    /** So many waits fail before one works again. */
    static void failWaits(int count);
};

} // namespace Platform::doubles
