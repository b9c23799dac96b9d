#include "bench/unit/Child.h"
#include "bench/unit/HeldThread.h"
#include "support/Eventually.h"

#include <fstream>
#include <gtest/gtest.h>

using namespace Bench;
using namespace std::chrono_literals;

namespace
{

/** Whether a tracer has stopped it. */
bool isHeld(int process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string number, name, state;
    file >> number >> name >> state;
    return state == "t";
}

} // namespace

/** What is held stands still at once, and goes on when it is let go, when its time is over, and before another is held. */
TEST(HeldThread, StandsStillUntilItIsReleased)
{
    Child child;
    ASSERT_EQ(child.start({ "/bin/sh", { "-c", "while :; do sleep 0.01; done" }, {}, {}, {} }), "");
    const int process = child.pid();
    HeldThread held;
    std::atomic<int> released { 0 };
    const auto count = [&] { ++released; };
    EXPECT_NE(held.hold(process, "nobody", 60s, count), "");

    ASSERT_EQ(held.hold(process, "sh", 60s, count), "");
    EXPECT_TRUE(isHeld(process));
    held.release();
    EXPECT_FALSE(isHeld(process));
    EXPECT_EQ(released, 1);

    ASSERT_EQ(held.hold(process, "sh", 60s, count), "");
    ASSERT_EQ(held.hold(process, "sh", 1ms, count), "");
    EXPECT_TRUE(eventually([&] { return released == 3; }));
    EXPECT_FALSE(isHeld(process));
}
