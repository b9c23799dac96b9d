#include "bench/unit/Child.h"
#include "support/Eventually.h"

#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <juce_core/juce_core.h>
#include <sys/wait.h>

/** The engine is killed and its programs go on: the bench ends them, and only when it wants to. */
TEST(Child, EndsWhatItsProcessesHaveLeftBehind)
{
    const juce::TemporaryFile numbers;
    const auto path = numbers.getFile().getFullPathName().toStdString();
    Bench::Child child;
    for (int run = 0; run < 2; ++run)
    {
        ASSERT_EQ(child.start({ "/bin/sh", { "-c", "sleep 60 & echo $! >>" + path }, {}, {}, {} }), "");
        ASSERT_TRUE(child.waitForEnd(std::chrono::seconds(60)));
    }
    std::vector<std::string> left;
    std::ifstream file(path);
    for (std::string pid; file >> pid;)
        left.push_back("/proc/" + pid);
    ASSERT_EQ(left.size(), 2u);
    for (const auto& process : left)
        EXPECT_TRUE(std::filesystem::exists(process));
    child.endOrphans();
    for (const auto& process : left)
        EXPECT_FALSE(std::filesystem::exists(process));
}

/** A line of the panel has a thread of its own, and an output that nobody reads any longer is the bench's matter alone. */
TEST(Child, OutlivesTheThreadThatStartsItAndHasEverySignalOfTheSystem)
{
    const juce::TemporaryFile output;
    const auto path = output.getFile().getFullPathName().toStdString();
    std::atomic<int> status { 0 };
    auto* const before = std::signal(SIGPIPE, SIG_IGN);
    Bench::Child child;
    std::thread(
        [&]
        {
            const auto* words = "trap 'kill -PIPE $$; exit 1' USR1; echo ready; while :; do sleep 0.02; done";
            EXPECT_EQ(child.start({ "/bin/sh", { "-c", words }, {}, path, {} }, [&](int ended) { status = ended; }),
                      "");
        })
        .join();
    std::signal(SIGPIPE, before);
    EXPECT_TRUE(eventually([&] { return output.getFile().getSize() > 0 || !child.isRunning(); }));
    child.signal(SIGUSR1);
    EXPECT_TRUE(child.waitForEnd(std::chrono::seconds(60)));
    child.end({});
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGPIPE);
}
