#include "platform/base/Logger.h"
#include "platform/base/System.h"
#include "platform/base/Threads.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <execinfo.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/SystemFaults", "System" };

#ifdef HEADUNIT_SANITIZED
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

constexpr std::array faultSignals { SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT };
constexpr unsigned exitTimeLimitSeconds = 2;
/** Holds the exit handlers too, which run on it after an overflow of the stack. */
constexpr std::size_t alternateStackSize = 256 * 1024;
constexpr int maxFrames = 64;

using Line = std::array<char, 320>;

std::atomic<bool> leaving { false };

void leaveAtOnce(int)
{
    _exit(EXIT_SUCCESS);
}

void writeToStandardError(const char* text)
{
    // Nothing can be done about an error here.
    [[maybe_unused]] const auto written = write(STDERR_FILENO, text, std::strlen(text));
}

void limitTimeOfExit()
{
    struct sigaction action = {};
    action.sa_handler = leaveAtOnce;
    sigaction(SIGALRM, &action, nullptr);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    alarm(exitTimeLimitSeconds);
}

/**
    The way out. What comes first needs neither the heap nor a lock; the log and the exit handlers may need what the
    fault has broken, or a lock that its thread holds: then the second fault or the time limit ends it.
*/
[[noreturn]] void leave(const char* description)
{
    if (leaving.exchange(true))
        leaveAtOnce(0);
    limitTimeOfExit();

    std::array<void*, maxFrames> frames {};
    const int depth = backtrace(frames.data(), maxFrames);
    writeToStandardError(description);
    writeToStandardError("\n");
    backtrace_symbols_fd(frames.data(), depth, STDERR_FILENO);

    logger().error("%s", description);
    if (char** names = backtrace_symbols(frames.data(), depth))
        for (int frame = 0; frame < depth; ++frame)
            logger().error("%s", names[frame]);
    std::exit(EXIT_SUCCESS);
}

void onSignal(int signal, siginfo_t* info, void*)
{
    std::array<char, 16> thread {};
    pthread_getname_np(pthread_self(), thread.data(), thread.size());
    Line line;
    std::snprintf(line.data(), line.size(), "fault: %s (SIG%s), address %p, thread %s", sigdescr_np(signal),
                  sigabbrev_np(signal), info->si_addr, thread.data());
    leave(line.data());
}

[[noreturn]] void onTerminate()
{
    Line line { "fault: terminate without an exception" };
    if (const auto exception = std::current_exception())
    {
        try
        {
            std::rethrow_exception(exception);
        }
        catch (const std::exception& thrown)
        {
            std::snprintf(line.data(), line.size(), "fault: unhandled exception: %s", thrown.what());
        }
        catch (...)
        {
            std::snprintf(line.data(), line.size(), "fault: unhandled exception of an unknown type");
        }
    }
    leave(line.data());
}

/** What the calling thread's faults are handled on, as its own stack may be used up, until it ends. */
class AlternateStack
{
public:
    AlternateStack()
    {
        if (memory == MAP_FAILED)
            return; // a fault is handled on the thread's own stack
        stack_t stack {};
        stack.ss_sp = memory;
        stack.ss_size = alternateStackSize;
        sigaltstack(&stack, nullptr);
    }

    ~AlternateStack()
    {
        stack_t none {};
        none.ss_flags = SS_DISABLE;
        // Refused while a fault is handled on it: then the process ends on it.
        if (memory != MAP_FAILED && sigaltstack(&none, nullptr) == 0)
            munmap(memory, alternateStackSize);
    }

    JUCE_DECLARE_NON_COPYABLE(AlternateStack)

private:
    void* memory =
        mmap(nullptr, alternateStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
};

} // namespace

void guardStack()
{
    if (sanitized)
        return;
    thread_local const AlternateStack stack;
}

void enterThread(const juce::String& name)
{
    constexpr std::size_t longest = 15;
    pthread_setname_np(pthread_self(), name.toStdString().substr(0, longest).c_str());
    guardStack();
}

void installExceptionHook()
{
    if (sanitized)
        return;
    // The first backtrace loads a library, which a handler should not do.
    std::array<void*, 1> warmUp {};
    backtrace(warmUp.data(), static_cast<int>(warmUp.size()));

    guardStack();
    struct sigaction action = {};
    action.sa_sigaction = onSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER; // a second fault has to be seen
    for (const auto signal : faultSignals)
        sigaction(signal, &action, nullptr);
    std::set_terminate(onTerminate);
}

} // namespace Platform
