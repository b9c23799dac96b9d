#include "platform/base/Process.h"

#include "platform/base/Execution.h"
#include "platform/base/Logger.h"
#include "platform/base/SignedProgram.h"
#include "platform/base/WakeUp.h"
#include "platform/base/linux/LaunchService.h"
#include "platform/config/Configuration.h"
#include "platform/record/Recorder.h"

#include <algorithm>
#include <charconv>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <mutex>
#include <poll.h>
#include <sys/wait.h>
#include <system_error>
// This header does not say by itself that its functions are C ones.
extern "C"
{
#include <sys/pidfd.h>
}

namespace Platform
{

namespace
{

constexpr Log logger { "platform/Process", "Process" };

constexpr int signalledExitBase = 128;
constexpr int failedExecStatus = 127;
constexpr int longestAncestry = 256;

void logFailure(const Log::Line& line, const juce::String& what, int error)
{
    line.error(what + ": " + std::generic_category().message(error));
}

/** Collects an ended child. False while it runs. */
bool reap(int pidfd, int& exitCode)
{
    siginfo_t info {};
    if (waitid(P_PIDFD, static_cast<id_t>(pidfd), &info, WEXITED | WNOHANG) < 0)
        return true; // Not ours to collect any more.
    if (info.si_pid == 0)
        return false;
    exitCode = info.si_code == CLD_EXITED ? info.si_status : signalledExitBase + info.si_status;
    return true;
}

/** Children whose handle was dropped while they ran. They are collected when the next program starts or handle goes. */
class Orphans
{
public:
    static void adopt(Descriptor child)
    {
        const std::lock_guard guard(lock);
        children.push_back(std::move(child));
        collectEnded();
    }

    static void collect()
    {
        const std::lock_guard guard(lock);
        collectEnded();
    }

private:
    static void collectEnded()
    {
        std::erase_if(children,
                      [](const Descriptor& child)
                      {
                          int ignored = 0;
                          return reap(child.get(), ignored);
                      });
    }

    static inline std::mutex lock;
    static inline std::vector<Descriptor> children;
};

class LinuxProcess : public Process
{
public:
    LinuxProcess(int processNumber, Descriptor processDescriptor, bool ownChild)
        : pid(processNumber)
        , child(ownChild)
        , pidfd(std::move(processDescriptor))
    {
    }

    ~LinuxProcess() override
    {
        if (child && !collect())
            Orphans::adopt(std::move(pidfd));
    }

    int getPid() const override { return pid; }
    int getDescriptor() const { return pidfd.get(); }

    bool isRunning() const override
    {
        return recorded(
            Step::isRunning, [this] { return runs(); }, pid);
    }

    bool runs() const
    {
        pollfd ended { pidfd.get(), POLLIN, 0 };
        if (poll(&ended, 1, 0) == 0)
            return true;
        if (child)
            collect();
        return false;
    }

    void terminate() override
    {
        recordStep(Step::kill, pid, true);
        if (const auto problem = LaunchService::end(pidfd.get()); !problem.empty())
            logger().error("cannot end process " + juce::String(pid) + ": " + problem);
    }

    int getExitCode() const override
    {
        const std::lock_guard guard(lock);
        if (child)
            collectLocked();
        return exitCode;
    }

private:
    bool collect() const
    {
        const std::lock_guard guard(lock);
        return collectLocked();
    }

    bool collectLocked() const
    {
        collected = collected || reap(pidfd.get(), exitCode);
        return collected;
    }

    const int pid;
    const bool child;
    Descriptor pidfd;
    mutable std::mutex lock;
    mutable bool collected = false;
    mutable int exitCode = -1;
};

/** Every signal is held back while it lives, so that no handler of ours runs in a new child. */
class SignalBlock
{
public:
    SignalBlock()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
    }
    ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }

private:
    sigset_t before;
};

/** Runs in the child, where only async-signal-safe calls are allowed. */
[[noreturn]] void becomeProgram(const Execution& execution, int report)
{
    const int error = execution.run();
    [[maybe_unused]] const auto written = ::write(report, &error, sizeof(error));
    _exit(failedExecStatus);
}

/** The error that kept the child from becoming the program, 0 when it became it. */
int execError(int report)
{
    int error = 0;
    ssize_t count = 0;
    while ((count = ::read(report, &error, sizeof(error))) < 0 && errno == EINTR)
    {
    }
    return count == sizeof(error) ? error : 0;
}

int parentOf(int pid)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    std::getline(file, line);
    // "PID (NAME) STATE PARENT ...", where NAME may hold anything.
    const auto nameEnd = line.rfind(") ");
    int parent = 0;
    if (nameEnd != std::string::npos && nameEnd + 4 < line.size())
        std::from_chars(line.data() + nameEnd + 4, line.data() + line.size(), parent);
    return parent;
}

} // namespace

namespace
{

ProcessHandle startChild(const juce::String& path, const Execution& execution)
{
    Orphans::collect();

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) < 0)
    {
        logFailure(logger(), "cannot start " + path, errno);
        return nullptr;
    }
    Descriptor report { ends[0] };
    Descriptor childReport { ends[1] };

    pid_t pid = -1;
    int error = 0;
    {
        const SignalBlock block;
        pid = fork();
        if (pid == 0)
            becomeProgram(execution, childReport.get());
        error = errno;
    }
    if (pid < 0)
    {
        logFailure(logger(), "cannot start " + path, error);
        return nullptr;
    }
    childReport.reset();
    error = execError(report.get());
    Descriptor pidfd { pidfd_open(pid, 0) };
    if (error != 0 || !pidfd)
    {
        logFailure(logger(), "cannot start " + path, error != 0 ? error : errno);
        if (error == 0)
            kill(pid, SIGKILL); // It runs, but we could not watch it. The number is its own until it is collected.
        while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR)
        {
        }
        return nullptr;
    }
    return std::make_shared<LinuxProcess>(pid, std::move(pidfd), true);
}

ProcessHandle refuse(const juce::String& path, const std::string& reason)
{
    logger().error("cannot start " + path + ": " + reason);
    return nullptr;
}

ProcessHandle startService(const juce::String& socket, const juce::String& user, const juce::String& path,
                           const juce::StringArray& arguments)
{
    auto started = LaunchService::start(socket, user, path, arguments);
    if (!started.error.empty())
        return refuse(path, started.error);
    return std::make_shared<LinuxProcess>(started.pid, std::move(started.pidfd), false);
}

ProcessHandle startProcess(const juce::String& path, const juce::StringArray& arguments, ProgramKind kind)
{
    const auto& configuration = Configuration::get();
    const bool isUpdate = kind == ProgramKind::update;
    if (const auto& socket = isUpdate ? configuration.updateSocket : configuration.launchSocket; socket.isNotEmpty())
        return startService(socket, isUpdate ? juce::String() : configuration.launchUser, path, arguments);
    SignedProgram program;
    if (isUpdate && configuration.updateKeys.isNotEmpty())
        program = SignedProgram::open(path.toStdString(), configuration.updateKeys.toStdString());
    if (!program.refusal.empty())
        return refuse(path, program.refusal);
    std::vector<std::string> words;
    for (const auto& argument : arguments)
        words.push_back(argument.toStdString());
    return startChild(
        path, { path.toStdString(), std::move(words), LaunchService::environment(), std::move(program.content) });
}

} // namespace

ProcessHandle createProcess(const juce::String& path, const juce::StringArray& arguments, ProgramKind kind)
{
    auto process = startProcess(path, arguments, kind);
    constexpr int none = -1;
    recordStep(Step::launch, path, arguments.joinIntoString("\n"), process != nullptr ? process->getPid() : none);
    return process;
}

ProcessHandle openProcess(int pid)
{
    std::shared_ptr<LinuxProcess> process;
    if (Descriptor pidfd { pid > 0 ? pidfd_open(pid, 0) : -1 })
        process = std::make_shared<LinuxProcess>(pid, std::move(pidfd), false);
    if (process != nullptr && !process->runs())
        process.reset();
    recordStep(Step::findProcess, pid, process != nullptr);
    return process;
}

bool isSameOrDescendant(int pid, int ancestor)
{
    // Bounded, as numbers that are used again while we read could close a circle.
    for (int depth = 0; pid > 0 && depth < longestAncestry; ++depth)
    {
        if (pid == ancestor)
            return true;
        pid = parentOf(pid);
    }
    return false;
}

struct ProcessWaiter::Backend
{
    WakeUp wakeUp;
};

ProcessWaiter::ProcessWaiter()
    : backend(std::make_unique<Backend>())
{
}

ProcessWaiter::~ProcessWaiter() = default;

int ProcessWaiter::wait(const std::vector<ProcessHandle>& processes)
{
    std::vector<pollfd> waiting { { backend->wakeUp.getDescriptor(), POLLIN, 0 } };
    for (const auto& process : processes)
    {
        const auto* known = dynamic_cast<const LinuxProcess*>(process.get());
        waiting.push_back({ known != nullptr ? known->getDescriptor() : -1, POLLIN, 0 });
    }
    while (poll(waiting.data(), waiting.size(), -1) < 0)
        if (errno != EINTR)
        {
            logFailure(logger(), "cannot wait for processes", errno);
            return failed;
        }
    if (waiting.front().revents != 0)
    {
        backend->wakeUp.clear();
        recordStep(Step::processEnd, woken);
        return woken;
    }
    const auto ended =
        std::find_if(waiting.begin() + 1, waiting.end(), [](const pollfd& each) { return each.revents != 0; });
    const auto index = static_cast<int>(ended - waiting.begin()) - 1;
    recordStep(Step::processEnd, processes[static_cast<std::size_t>(index)]->getPid());
    return index;
}

void ProcessWaiter::wake()
{
    backend->wakeUp.set();
}

} // namespace Platform
