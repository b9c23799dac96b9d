#include "bench/unit/Child.h"
#include "support/Eventually.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <juce_core/juce_core.h>

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
