#include "platform/base/Process.h"

#include "doubles/ProcessDouble.h"
#include "platform/base/Threads.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace Platform
{

namespace
{

using doubles::ProcessDouble;

/** Of a process ended by SIGKILL, as a shell reports it. */
constexpr int killedExitCode = 137;

std::mutex lock;
Condition changed;
std::function<void()> endObserver;

struct State
{
    int pid;
    int parentPid;
    bool running = true;
    bool child = false;
    int exitCode = -1;

    void end(int code)
    {
        if (!std::exchange(running, false))
            return;
        exitCode = child ? code : -1;
        changed.notify();
        if (endObserver)
            endObserver();
    }
};

/** What a reset forgets. */
struct Table
{
    std::map<int, std::shared_ptr<State>> processes;
    std::vector<ProcessDouble::Launch> launches;
    std::function<void(const ProcessDouble::Launch&)> observer;
    std::vector<int> terminated;
    bool creationFails = false;
    std::optional<ProcessUsage> usage;
    int failingWaits = 0;
};

Table table;
int lastPid = ProcessDouble::ownPid; // Never used twice, so that no test meets a process of an earlier one.

std::shared_ptr<State> add(int parentPid, bool child)
{
    auto state = std::make_shared<State>(State { .pid = ++lastPid, .parentPid = parentPid, .child = child });
    table.processes[state->pid] = state;
    return state;
}

class ProcessInTable : public Process
{
public:
    explicit ProcessInTable(std::shared_ptr<State> processState)
        : state(std::move(processState))
    {
    }

    int getPid() const override { return state->pid; }

    bool isRunning() const override
    {
        const std::lock_guard guard(lock);
        return state->running;
    }

    void terminate() override
    {
        const std::lock_guard guard(lock);
        table.terminated.push_back(state->pid);
        state->end(killedExitCode);
    }

    int getExitCode() const override
    {
        const std::lock_guard guard(lock);
        return state->exitCode;
    }

    /** Under the lock. */
    bool hasEnded() const { return !state->running; }

private:
    std::shared_ptr<State> state;
};

} // namespace

ProcessHandle createProcess(const juce::String& path, const juce::StringArray& arguments, ProgramKind kind)
{
    const std::lock_guard guard(lock);
    if (table.creationFails)
        return nullptr;
    const auto state = add(ProcessDouble::ownPid, true);
    const ProcessDouble::Launch launch { path, arguments, state->pid, kind };
    if (table.observer)
        table.observer(launch);
    else
        table.launches.push_back(launch);
    return std::make_shared<ProcessInTable>(state);
}

ProcessHandle openProcess(int pid)
{
    const std::lock_guard guard(lock);
    const auto found = table.processes.find(pid);
    if (found == table.processes.end() || !found->second->running)
        return nullptr;
    return std::make_shared<ProcessInTable>(found->second);
}

std::optional<ProcessUsage> ProcessUsage::of(int pid, const std::filesystem::path&)
{
    const std::lock_guard guard(lock);
    const auto found = table.processes.find(pid);
    return found != table.processes.end() && found->second->running ? table.usage : std::nullopt;
}

bool isSameOrDescendant(int pid, int ancestor)
{
    const std::lock_guard guard(lock);
    while (pid != ancestor)
    {
        const auto found = table.processes.find(pid);
        if (found == table.processes.end())
            return false;
        pid = found->second->parentPid;
    }
    return true;
}

struct ProcessWaiter::Backend
{
    bool woken = false;
};

ProcessWaiter::ProcessWaiter()
    : backend(std::make_unique<Backend>())
{
}

ProcessWaiter::~ProcessWaiter() = default;

int ProcessWaiter::wait(const std::vector<ProcessHandle>& processes)
{
    std::unique_lock guard(lock);
    if (table.failingWaits > 0)
    {
        --table.failingWaits;
        return failed;
    }
    int outcome = woken;
    changed.wait(guard,
                 [&]
                 {
                     outcome = woken;
                     if (std::exchange(backend->woken, false))
                         return true;
                     const auto ended =
                         std::find_if(processes.begin(), processes.end(),
                                      [](const ProcessHandle& process)
                                      { return dynamic_cast<const ProcessInTable&>(*process).hasEnded(); });
                     outcome = static_cast<int>(ended - processes.begin());
                     return ended != processes.end();
                 });
    return outcome;
}

void ProcessWaiter::wake()
{
    const std::lock_guard guard(lock);
    backend->woken = true;
    changed.notify();
}

namespace doubles
{

void ProcessDouble::reset()
{
    const std::lock_guard guard(lock);
    for (auto& [pid, state] : table.processes)
        state->end(0);
    table = {};
}

std::vector<ProcessDouble::Launch> ProcessDouble::takeLaunches()
{
    const std::lock_guard guard(lock);
    return std::exchange(table.launches, {});
}

void ProcessDouble::onLaunch(std::function<void(const Launch&)> observer)
{
    const std::lock_guard guard(lock);
    table.observer = std::move(observer);
}

void ProcessDouble::onEnd(std::function<void()> observer)
{
    const std::lock_guard guard(lock);
    endObserver = std::move(observer);
}

void ProcessDouble::failCreation(bool fails)
{
    const std::lock_guard guard(lock);
    table.creationFails = fails;
}

void ProcessDouble::setUsage(std::optional<ProcessUsage> usage)
{
    const std::lock_guard guard(lock);
    table.usage = usage;
}

int ProcessDouble::addProcess(int parentPid)
{
    const std::lock_guard guard(lock);
    return add(parentPid, false)->pid;
}

void ProcessDouble::end(int pid, int exitCode)
{
    const std::lock_guard guard(lock);
    if (const auto found = table.processes.find(pid); found != table.processes.end())
        found->second->end(exitCode);
}

void ProcessDouble::forgetEnded()
{
    const std::lock_guard guard(lock);
    std::erase_if(table.processes, [](const auto& each) { return !each.second->running; });
    table.terminated.clear();
}

bool ProcessDouble::isRunning(int pid)
{
    const std::lock_guard guard(lock);
    const auto found = table.processes.find(pid);
    return found != table.processes.end() && found->second->running;
}

std::vector<int> ProcessDouble::takeTerminated()
{
    const std::lock_guard guard(lock);
    return std::exchange(table.terminated, {});
}

void ProcessDouble::failWaits(int count)
{
    const std::lock_guard guard(lock);
    table.failingWaits = count;
}

} // namespace doubles

} // namespace Platform
