#include "bench/unit/Child.h"
#include "bench/unit/HeldThread.h"
#include "support/Eventually.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

using namespace Bench;
using namespace std::chrono_literals;

namespace
{

/** The states of the process's threads, "t" for one that a tracer has stopped. */
std::string states(int process)
{
    std::string all;
    for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task"))
    {
        std::ifstream file(task.path() / "stat");
        std::string number, name, state;
        file >> number >> name >> state;
        all += state;
    }
    return all;
}

constexpr auto twoThreads = "import threading, time\n"
                            "threading.Thread(target=time.sleep, args=[600]).start()\n";

} // namespace

/** What is held stands still at once, and goes on when it is let go, when its time is over, and before another is held. */
TEST(HeldThread, StandsStillUntilItIsReleasedOrItsProcessIsKilled)
{
    Child child;
    ASSERT_EQ(child.start({ "/usr/bin/python3", { "-c", twoThreads }, {}, {}, {} }), "");
    const int process = child.pid();
    ASSERT_TRUE(eventually([&] { return states(process) == "SS"; }));
    HeldThread held;
    std::atomic<int> released { 0 };
    const auto count = [&] { ++released; };
    EXPECT_NE(held.hold(process, "nobody", 60s, count), "");

    ASSERT_EQ(held.hold(process, "python3", 60s, count), "");
    EXPECT_EQ(states(process), "St") << "the first one goes on";
    held.release();
    EXPECT_EQ(released, 1);

    ASSERT_EQ(held.hold(process, "python3", 60s, count), "");
    ASSERT_EQ(held.hold(process, "python3", 1ms, count), "");
    EXPECT_TRUE(eventually([&] { return released == 3; }));
    EXPECT_TRUE(eventually([&] { return states(process) == "SS"; }));

    ASSERT_EQ(held.hold(process, "python3", 600s, count), "");
    child.signal(SIGKILL);
    EXPECT_TRUE(child.waitForEnd(60s));
    held.release();
    EXPECT_EQ(released, 3);
}
