#pragma once

#include <juce_core/juce_core.h>
#include <memory>
#include <vector>

namespace Platform
{

/** A program's process. The handle means this process, never a later one with the same number. */
class Process
{
public:
    virtual ~Process() = default;
    virtual int getPid() const = 0;
    /** Any thread; does not wait. */
    virtual bool isRunning() const = 0;
    /** Ends it by force (SIGKILL); its end is seen by whoever waits. Any thread. */
    virtual void terminate() = 0;
    /** The exit status of a child of ours that has ended (128 + the signal that ended it), else -1. */
    virtual int getExitCode() const = 0;
};

using ProcessHandle = std::shared_ptr<Process>;

enum class ProgramKind { source, update };

/**
    Starts a program. It inherits only standard input, output and error, has default signal handling and normal
    scheduling, and goes on when this process ends. Where the configuration names a socket for its kind
    (`launch.socket`, `update.socket`) it is no child but a service of its own, and the call waits for the service
    manager, which takes some milliseconds, and at most fifteen seconds. With `update.keys` an update program is started only when one of them has signed it. Null on
    failure (logged).
*/
ProcessHandle createProcess(const juce::String& path, const juce::StringArray& arguments,
                            ProgramKind kind = ProgramKind::source);

/** A handle for a running process that somebody else started; null when there is none. */
ProcessHandle openProcess(int pid);

/** True when `pid` is `ancestor` or was started, directly or through others, by it. */
bool isSameOrDescendant(int pid, int ancestor);

/** Waits for the end of processes. One thread waits; any thread may wake it. */
class ProcessWaiter
{
public:
    ProcessWaiter();
    ~ProcessWaiter();

    enum Outcome { woken = -1, failed = -2 };

    /** Blocks until one of them ends (its index), `wake` was called (`woken`) or the wait failed (`failed`). */
    int wait(const std::vector<ProcessHandle>& processes);
    /** When nobody waits, the next `wait` returns at once. */
    void wake();

private:
    struct Backend;
    std::unique_ptr<Backend> backend;
    JUCE_DECLARE_NON_COPYABLE(ProcessWaiter)
};

} // namespace Platform
