#include "kernel/DeviceWorker.h"

#include "support/Eventually.h"

#include <atomic>
#include <gtest/gtest.h>

using Kernel::DeviceWorker;

namespace
{

std::vector<int> numbers(int from, int to)
{
    std::vector<int> all;
    for (int number = from; number <= to; ++number)
        all.push_back(number);
    return all;
}

} // namespace

/** A device that is behind gets the newest of each kind, and everything in order as long as it is not. */
TEST(DeviceWorkerTest, KeepsEveryJobUntilItIsBehindAndThenTheNewestOfEachKey)
{
    constexpr int patience = static_cast<int>(DeviceWorker::patience);
    std::vector<int> done;
    DeviceWorker worker("test");
    const auto post = [&](int key, int number) { worker.post(key, [&done, number] { done.push_back(number); }); };
    EXPECT_FALSE(DeviceWorker::drainAll());
    for (int number = 1; number <= patience; ++number)
        post(0, number);
    EXPECT_TRUE(DeviceWorker::drainAll());
    EXPECT_EQ(std::exchange(done, {}), numbers(1, patience));

    for (int number = 1; number <= 100 * patience; ++number)
        post(number % patience, number);
    DeviceWorker::drainAll();
    EXPECT_EQ(done, numbers(99 * patience + 1, 100 * patience));
}

/** A device does not answer: whoever wants something of it goes on, and the stop leaves what waits undone. */
TEST(DeviceWorkerTest, NobodyWaitsForADeviceAndTheStopEndsItsJobs)
{
    juce::WaitableEvent answer(true);
    juce::WaitableEvent asked;
    std::atomic<int> done { 0 };
    DeviceWorker before("before");
    before.post(0, [&done] { ++done; });
    DeviceWorker::startAll();
    DeviceWorker between("between");
    between.post(0,
                 [&]
                 {
                     asked.signal();
                     while (!between.isStopping())
                         answer.wait(1);
                     ++done;
                 });
    for (int number = 0; number < 1000; ++number)
        between.post(number, [&done] { done += 1000; });
    EXPECT_TRUE(eventually([&] { return done == 1; })) << "one device does not wait for another";
    asked.wait();
    DeviceWorker::stopAll();
    EXPECT_EQ(done, 2);
    before.post(0, [&done] { ++done; });
    EXPECT_FALSE(DeviceWorker::drainAll());
}
