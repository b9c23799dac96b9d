#include "bench/unit/HeldThread.h"

#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <mutex>
#include <sys/ptrace.h>
#include <sys/wait.h>

namespace Bench
{

namespace
{

/** Beside the first one; -1 when the process has no such thread. */
pid_t findThread(pid_t process, const std::string& name)
{
    constexpr std::size_t longest = 15;
    std::error_code none;
    const auto tasks = "/proc/" + std::to_string(process) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks, none))
    {
        const auto thread = static_cast<pid_t>(std::stoi(task.path().filename().string()));
        std::ifstream file(task.path() / "comm");
        if (std::string each; thread != process && std::getline(file, each) && each == name.substr(0, longest))
            return thread;
    }
    return -1;
}

bool sleeps(pid_t process, pid_t thread)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/task/" + std::to_string(thread) + "/stat");
    std::string number, name, state;
    file >> number >> name >> state;
    return state == "S";
}

/** One that runs may have a lock that every other thread needs, the allocator's for example. */
void waitUntilIdle(pid_t process, pid_t thread)
{
    constexpr std::chrono::milliseconds limit { 1000 }, pause { 1 };
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!sleeps(process, thread) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(pause);
}

std::string refusal()
{
    return std::string("the system does not let the bench hold a thread (ptrace): ") + std::strerror(errno);
}

/** The signal that the thread was about to take when it was stopped, and takes when it goes on; 0 for none. */
int pendingSignal(int status)
{
    return status >> 16 == PTRACE_EVENT_STOP ? 0 : WSTOPSIG(status);
}

/** Whether the thread is there at the end. One that is not has been reaped, or its process would never end. */
bool standStill(pid_t thread, std::chrono::milliseconds time, const std::stop_token& stop)
{
    constexpr std::chrono::milliseconds pause { 10 };
    const auto end = std::chrono::steady_clock::now() + time;
    std::mutex lock;
    std::condition_variable_any released;
    std::unique_lock guard(lock);
    while (!stop.stop_requested() && std::chrono::steady_clock::now() < end)
    {
        released.wait_for(guard, stop, pause, [] { return false; });
        int status = 0;
        if (::waitpid(thread, &status, __WALL | WNOHANG) != 0)
            return false;
    }
    return true;
}

} // namespace

std::string HeldThread::hold(pid_t process, const std::string& threadName, std::chrono::milliseconds time,
                             Released released)
{
    release();
    const auto thread = findThread(process, threadName);
    if (thread < 0)
        return "the process has no thread " + threadName;
    waitUntilIdle(process, thread);
    std::promise<std::string> begun;
    auto begin = begun.get_future();
    // What belongs to a trace is asked of the system by the thread that began it.
    holder = std::jthread(
        [thread, time, released = std::move(released), begun = std::move(begun)](const std::stop_token& stop) mutable
        {
            int status = 0;
            if (::ptrace(PTRACE_SEIZE, thread, nullptr, nullptr) != 0 ||
                ::ptrace(PTRACE_INTERRUPT, thread, nullptr, nullptr) != 0)
                return begun.set_value(refusal());
            if (::waitpid(thread, &status, __WALL) != thread || !WIFSTOPPED(status))
                return begun.set_value("the thread has ended");
            begun.set_value("");
            if (standStill(thread, time, stop) && ::ptrace(PTRACE_DETACH, thread, nullptr, pendingSignal(status)) == 0)
                released();
        });
    return begin.get();
}

void HeldThread::release()
{
    holder = {};
}

} // namespace Bench
