#include "bench/unit/Child.h"

#include "platform/base/Descriptor.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <future>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace Bench
{

namespace
{

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& additions)
{
    std::vector<std::string> entries;
    for (char** entry = environ; *entry != nullptr; ++entry)
    {
        const std::string text = *entry;
        if (!additions.contains(text.substr(0, text.find('='))))
            entries.push_back(text);
    }
    for (const auto& [name, value] : additions)
        entries.push_back(name + "=" + value);
    return entries;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (auto& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

Child::~Child()
{
    signal(SIGKILL);
    if (watcher.joinable())
        watcher.join();
}

std::string Child::start(const Options& options, Ended ended)
{
    if (watcher.joinable())
        watcher.join();
    // The system ends a child with the thread that has forked it, which therefore lives as long as the child.
    std::promise<std::string> started;
    auto result = started.get_future();
    watcher = std::thread(
        [this, &options, started = std::move(started), ended = std::move(ended)]() mutable
        {
            auto error = launch(options);
            const auto child = process;
            const bool runs = error.empty();
            started.set_value(std::move(error));
            if (runs)
                watch(child, ended);
        });
    return result.get();
}

std::string Child::launch(const Options& options)
{
    using Platform::Descriptor;
    // Everything that allocates happens before the fork: between fork and exec only plain system calls are allowed.
    auto arguments = options.arguments;
    arguments.insert(arguments.begin(), options.program);
    auto environment = environmentWith(options.environment);
    const auto argumentPointers = pointersTo(arguments);
    const auto environmentPointers = pointersTo(environment);
    const Descriptor output(::open(options.outputFile.empty() ? "/dev/null" : options.outputFile.c_str(),
                                   O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
    const Descriptor input(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    int failurePipe[2] { -1, -1 };
    if (output.get() < 0 || input.get() < 0 || ::pipe2(failurePipe, O_CLOEXEC) != 0)
        return options.program + ": " + std::strerror(errno);
    const Descriptor failure(failurePipe[0]);
    Descriptor failing(failurePipe[1]);

    if (options.adopts)
        ::prctl(PR_SET_CHILD_SUBREAPER, 1);
    const auto parent = ::getpid();
    const auto forked = ::fork();
    if (forked == 0)
    {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (::getppid() != parent)
            ::_exit(1);
        ::dup2(input.get(), STDIN_FILENO);
        ::dup2(output.get(), STDOUT_FILENO);
        ::dup2(output.get(), STDERR_FILENO);
        for (const auto descriptor : options.keptDescriptors)
            ::fcntl(descriptor, F_SETFD, 0);
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::signal(SIGPIPE, SIG_DFL);
        ::setpgid(0, 0); // Ctrl-C at the console is the bench's alone
        ::execve(options.program.c_str(), argumentPointers.data(), environmentPointers.data());
        const int error = errno;
        [[maybe_unused]] const auto written = ::write(failing.get(), &error, sizeof error);
        ::_exit(127);
    }
    if (forked < 0)
        return options.program + ": " + std::strerror(errno);
    failing.reset();
    int execError = 0;
    if (::read(failure.get(), &execError, sizeof execError) == sizeof execError)
    {
        ::waitpid(forked, nullptr, 0);
        return options.program + ": " + std::strerror(execError);
    }
    {
        const std::scoped_lock guard(lock);
        process = forked;
    }
    groups.push_back(forked);
    return {};
}

void Child::watch(pid_t watched, const Ended& ended)
{
    siginfo_t info {};
    while (::waitid(P_PID, static_cast<id_t>(watched), &info, WEXITED | WNOWAIT) != 0 && errno == EINTR)
    {
    }
    int status = 0;
    {
        const std::scoped_lock guard(lock);
        ::waitpid(watched, &status, 0);
        process = -1;
    }
    if (ended)
        ended(status);
    changed.notify_all();
}

bool Child::isRunning() const
{
    const std::scoped_lock guard(lock);
    return process > 0;
}

int Child::pid() const
{
    const std::scoped_lock guard(lock);
    return process;
}

bool Child::signal(int number)
{
    const std::scoped_lock guard(lock);
    return process > 0 && ::kill(process, number) == 0;
}

bool Child::waitForEnd(std::chrono::milliseconds limit) const
{
    std::unique_lock guard(lock);
    return changed.wait_for(guard, limit, [this] { return process <= 0; });
}

void Child::end(std::chrono::milliseconds limit)
{
    if (signal(SIGTERM) && !waitForEnd(limit))
        signal(SIGKILL);
    if (watcher.joinable())
        watcher.join();
}

void Child::endOrphans()
{
    for (const auto group : std::exchange(groups, {}))
    {
        // As long as one is left, no later process has its number.
        siginfo_t info {};
        if (::waitid(P_PGID, static_cast<id_t>(group), &info, WEXITED | WNOHANG | WNOWAIT) != 0)
            continue;
        ::kill(-group, SIGKILL);
        while (::waitpid(-group, nullptr, 0) > 0 || errno == EINTR)
        {
        }
    }
}

std::string readLine(int descriptor, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    std::string line;
    for (char letter = 0;; line += letter)
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd wait { descriptor, POLLIN, 0 };
        if (left.count() <= 0 || ::poll(&wait, 1, static_cast<int>(left.count())) != 1 ||
            ::read(descriptor, &letter, 1) != 1)
            return {};
        if (letter == '\n')
            return line;
    }
}

std::string describeStatus(int status)
{
    if (WIFSIGNALED(status))
        return "signal " + std::to_string(WTERMSIG(status));
    return "exit " + std::to_string(WEXITSTATUS(status));
}

} // namespace Bench
