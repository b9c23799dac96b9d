#include "platform/base/Process.h"

#include "support/ErrorLog.h"
#include "support/Eventually.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Platform;

namespace
{

ProcessHandle shell(const juce::String& script)
{
    return createProcess("/bin/sh", { "-c", script, "shell", "a b", juce::String::fromUTF8("\xc3\xbc\"'"), "" });
}

ProcessHandle sleeper()
{
    return createProcess("/bin/sleep", { "60" });
}

int exitCodeOf(const ProcessHandle& process)
{
    EXPECT_NE(process, nullptr);
    if (process == nullptr)
        return -1;
    EXPECT_EQ(ProcessWaiter().wait({ process }), 0);
    EXPECT_FALSE(process->isRunning());
    return process->getExitCode();
}

bool exists(int pid)
{
    return std::filesystem::exists("/proc/" + std::to_string(pid));
}

std::ptrdiff_t openDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

} // namespace

TEST(ProcessTest, ReportsHowAChildEnded)
{
    const struct
    {
        const char* script;
        int code;
    } cases[] {
        { "exit 0", 0 },
        { "exit 7", 7 },
        { "kill -KILL $$", 137 },
        // Arguments arrive one by one as they are.
        { "test $# = 3 -a \"$1\" = 'a b' -a \"$2\" = '\xc3\xbc\"'\"'\" -a -z \"$3\"", 0 },
    };
    for (const auto& each : cases)
        EXPECT_EQ(exitCodeOf(shell(juce::String::fromUTF8(each.script))), each.code) << each.script;
}

TEST(ProcessTest, AProgramThatCannotBeStartedLeavesNothingBehind)
{
    const juce::TemporaryFile file;
    ASSERT_TRUE(file.getFile().replaceWithText("no program"));
    for (const auto& path :
         { juce::String("/no/such/program"), juce::String("/usr"), file.getFile().getFullPathName(), juce::String() })
    {
        ErrorLog log;
        const auto descriptors = openDescriptors();
        EXPECT_EQ(createProcess(path, {}), nullptr);
        EXPECT_EQ(log.count("cannot start " + path.toStdString() + ": "), 1);
        EXPECT_EQ(openDescriptors(), descriptors);
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was not collected";
    }
}

/** The engine ignores broken pipes and holds signals back in places; a program must not inherit any of that. */
TEST(ProcessTest, AChildStartsWithDefaultSignalsAndNoDescriptors)
{
    const auto before = std::signal(SIGTERM, SIG_IGN);
    sigset_t blocked;
    sigset_t previous;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &blocked, &previous);
    EXPECT_EQ(exitCodeOf(shell("kill -TERM $$; exit 3")), 128 + SIGTERM);
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    std::signal(SIGTERM, before);

    constexpr int leaking = 77;
    ASSERT_EQ(dup2(STDERR_FILENO, leaking), leaking);
    EXPECT_EQ(exitCodeOf(shell("test ! -e /proc/$$/fd/77 -a -e /proc/$$/fd/2")), 0);
    close(leaking);
}

/** The engine's threads may have a real-time priority, and the engine what its service grants it. */
TEST(ProcessTest, AChildHasNoPrivilegesOfTheStartingThread)
{
    int code = -1;
    bool hasPrivileges = false;
    std::thread(
        [&]
        {
            constexpr sched_param realTime { 1 };
            const bool isRealTime = sched_setscheduler(0, SCHED_RR, &realTime) == 0;
            __user_cap_header_struct version { _LINUX_CAPABILITY_VERSION_3, 0 };
            __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3] {};
            syscall(SYS_capget, &version, sets);
            sets[0].inheritable |= sets[0].permitted & (1u << CAP_KILL);
            syscall(SYS_capset, &version, sets);
            hasPrivileges = prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_RAISE, CAP_KILL, 0, 0) == 0 && isRealTime;
            code = exitCodeOf(shell("grep -q '^CapAmb:[[:space:]]*0*$' /proc/self/status || exit 1\n"
                                    "test $(ulimit -r) = 0 || exit 2\n"
                                    // Field 41, the policy; the first two are cut.
                                    "test $(sed 's/.*) //' /proc/self/stat | cut -d' ' -f39) = 0 || exit 3\n"));
        })
        .join();
    EXPECT_EQ(code, 0);
    if (!hasPrivileges)
        GTEST_SKIP() << "the thread has nothing to hand on here";
}

TEST(ProcessTest, TheWaiterNamesTheProcessThatEnded)
{
    const auto first = sleeper();
    const auto second = sleeper();
    ASSERT_TRUE(first != nullptr && second != nullptr);
    ProcessWaiter waiter;
    std::thread([&] { waiter.wake(); }).join();
    EXPECT_EQ(waiter.wait({ first, second }), ProcessWaiter::woken) << "a wake-up from before is remembered";

    std::thread ending([&] { second->terminate(); });
    EXPECT_EQ(waiter.wait({ first, second }), 1) << "and wakes once only";
    ending.join();
    EXPECT_TRUE(first->isRunning());
    EXPECT_EQ(first->getExitCode(), -1);
    EXPECT_EQ(second->getExitCode(), 137);
    second->terminate();

    std::thread waking([&] { waiter.wake(); });
    EXPECT_EQ(waiter.wait({ first }), ProcessWaiter::woken);
    waking.join();
    first->terminate();
    EXPECT_EQ(exitCodeOf(first), 137);
}

TEST(ProcessTest, ADroppedChildIsCollectedAfterItsEnd)
{
    auto child = sleeper();
    ASSERT_NE(child, nullptr);
    const int pid = child->getPid();
    const auto opened = openProcess(pid);
    ASSERT_NE(opened, nullptr);
    child.reset();
    EXPECT_TRUE(opened->isRunning()) << "a dropped handle ends nothing";
    opened->terminate();
    EXPECT_EQ(exitCodeOf(opened), -1) << "only the handle of the start knows the status";
    EXPECT_EQ(exitCodeOf(shell("exit 0")), 0);
    EXPECT_FALSE(exists(pid));
    EXPECT_EQ(openProcess(pid), nullptr);
}

TEST(ProcessTest, OnlyRunningProcessesCanBeOpened)
{
    const auto child = sleeper();
    ASSERT_NE(child, nullptr);
    child->terminate();
    EXPECT_TRUE(eventually([&] { return openProcess(child->getPid()) == nullptr; })) << "ended, though not collected";
    EXPECT_EQ(openProcess(0), nullptr);
    EXPECT_EQ(openProcess(-1), nullptr);
    EXPECT_NE(openProcess(getppid()), nullptr);
}

TEST(ProcessTest, DescentIsFollowedThroughProgramsOfAnyName)
{
    // A name that looks like the fields behind it.
    const juce::TemporaryFile place;
    const auto folder = place.getFile();
    ASSERT_TRUE(folder.createDirectory().wasOk());
    const auto odd = folder.getChildFile("x) S 1 (");
    ASSERT_TRUE(std::filesystem::copy_file("/bin/sh", odd.getFullPathName().toStdString()));
    const auto number = folder.getChildFile("number");
    const auto middle =
        createProcess(odd.getFullPathName(), { "-c", "sleep 60 & echo $! >\"$0\"; wait", number.getFullPathName() });
    ASSERT_NE(middle, nullptr);
    ASSERT_TRUE(eventually([&] { return number.loadFileAsString().endsWithChar('\n'); }));
    const int grandchild = number.loadFileAsString().getIntValue();

    EXPECT_TRUE(isSameOrDescendant(grandchild, grandchild));
    EXPECT_TRUE(isSameOrDescendant(grandchild, middle->getPid()));
    EXPECT_TRUE(isSameOrDescendant(grandchild, getpid()));
    EXPECT_TRUE(isSameOrDescendant(middle->getPid(), getppid()));
    EXPECT_FALSE(isSameOrDescendant(middle->getPid(), grandchild));
    EXPECT_FALSE(isSameOrDescendant(getpid(), middle->getPid()));
    EXPECT_FALSE(isSameOrDescendant(-1, -1));
    EXPECT_FALSE(isSameOrDescendant(0, 0));

    kill(grandchild, SIGKILL);
    EXPECT_EQ(exitCodeOf(middle), 0);
    folder.deleteRecursively();
}

/** Music plays on while the engine starts anew; who did not start the program sees its end all the same. */
TEST(ProcessTest, AProgramOutlivesWhoStartedItAndIsWatchedByOthers)
{
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const auto starter = fork();
    if (starter == 0)
    {
        const auto program = sleeper();
        const int pid = program != nullptr ? program->getPid() : -1;
        _exit(write(ends[1], &pid, sizeof pid) == sizeof pid ? 0 : 1);
    }
    close(ends[1]);
    int pid = -1;
    ASSERT_EQ(read(ends[0], &pid, sizeof pid), static_cast<ssize_t>(sizeof pid));
    close(ends[0]);
    waitpid(starter, nullptr, 0);

    const auto program = openProcess(pid);
    ASSERT_NE(program, nullptr);
    EXPECT_TRUE(program->isRunning());
    program->terminate();
    EXPECT_EQ(exitCodeOf(program), -1);
}
