#include "platform/base/Counter.h"

#include "platform/base/Histogram.h"
#include "platform/base/Threads.h"
#include "platform/record/Observer.h"

#include <gmock/gmock.h>
#include <thread>

using namespace Platform;
using namespace std::chrono_literals;

TEST(Counter, ThoseOfOneNameAreOne)
{
    Counter here { "test.lost", "what was lost" };
    ++here;
    Counter there { "test.lost", "what was lost" };
    there += 2;
    EXPECT_EQ(here.get(), 3u);
    const auto all = Counter::all();
    const auto found =
        std::ranges::find_if(all, [](const auto& each) { return each.name == std::string("test.lost"); });
    ASSERT_NE(found, all.end());
    EXPECT_EQ(found->count, 3u);
    EXPECT_STREQ(found->meaning, "what was lost");
}

/** Percentiles of known values, small ones to the microsecond, others at most one step of 32 above. */
TEST(Histogram, KeepsTimesToThreePercent)
{
    for (const std::int64_t value : { 0, 1, 31, 32, 33, 63, 64, 65, 1000, 1023, 1024, 123456, 33'000'000 })
    {
        Histogram times;
        times.add(std::chrono::microseconds(value));
        const auto kept = times.at(1).count();
        EXPECT_GE(kept, value);
        EXPECT_LE(static_cast<double>(kept), static_cast<double>(value) * (1 + 1 / 32.0)) << value;
    }
    Histogram times;
    EXPECT_EQ(times.at(0.5).count(), 0);
    for (int i = 1; i <= 1000; ++i)
        times.add(std::chrono::microseconds(i));
    EXPECT_EQ(times.count(), 1000u);
    EXPECT_NEAR(static_cast<double>(times.at(0.5).count()), 500, 16);
    EXPECT_NEAR(static_cast<double>(times.at(0.99).count()), 990, 31);
    times.add(1h);
    times.add(-5us);
    EXPECT_EQ(times.count(), 1002u) << "what is out of range counts at its end";
    EXPECT_GT(times.at(1), 30s);
}

/** Whoever looks at a stuck engine does not get stuck. */
TEST(Observer, DoesNotWaitForALockThatSomebodyKeeps)
{
    Mutex lock;
    lock.lock();
    bool wasBusy = false;
    std::thread(
        [&]
        {
            const Observer observer;
            try
            {
                const std::lock_guard guard(lock);
            }
            catch (const Observer::Busy&)
            {
                wasBusy = true;
            }
        })
        .join();
    EXPECT_TRUE(wasBusy);
    lock.unlock();
    const Observer observer;
    const std::lock_guard guard(lock);
    EXPECT_TRUE(Observer::isHere());
}
