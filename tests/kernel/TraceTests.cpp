#include "kernel/Trace.h"

#include "support/Eventually.h"
#include "support/KernelFixture.h"

#include <algorithm>
#include <thread>

using namespace Kernel;

namespace
{

using Event = Trace::Event;

constexpr juce::int32 relayMessage = 3;

class TraceTest : public KernelFixture
{
protected:
    ~TraceTest() override { Trace::end(); }

    static std::vector<Event> taken()
    {
        std::vector<Event> events;
        Trace::take(events);
        return events;
    }
};

/** Sends the message on, to and fro, as often as its first argument says. */
class Relay : public ComponentTask
{
public:
    explicit Relay(ComponentId partnerToUse)
        : partner(partnerToUse)
    {
    }
    void handleMessage(juce::int32 id, juce::int32 left, juce::int32, const Payload&) override
    {
        if (id == relayMessage && left > 0)
            postSystemMessage(partner, relayMessage, left - 1, 0);
    }

private:
    const ComponentId partner;
};

} // namespace

/** A message that goes between two groups: whoever reads the trace finds the way from each handler to the next. */
TEST_F(TraceTest, FollowsAChainOfMessagesOverTwoGroups)
{
    constexpr int hops = 6;
    for (const ComponentId id : { 40, 41 })
    {
        const auto group = id == 40 ? "NearGroup" : "FarGroup";
        engine().createGroup(group, 5);
        SystemTask::Ptr relay = new Relay(81 - id);
        relay->assignId(id);
        engine().registerComponent(group, relay);
    }
    engine().start();
    ASSERT_TRUE(Trace::begin());
    EXPECT_FALSE(Trace::begin()) << "there is one at a time";
    const auto before = Trace::here();
    postSystemMessage(40, relayMessage, hops, 7);
    std::vector<Event> handled;
    ASSERT_TRUE(eventually(
        [&]
        {
            for (const auto& event : taken())
                if (event.kind == Trace::Kind::message && event.numbers[1] == relayMessage)
                    handled.push_back(event);
            return handled.size() == hops + 1;
        }));
    std::ranges::sort(handled, {}, &Event::begin); // the first may end when the second has ended
    EXPECT_EQ(handled.front().origin.thread, before.thread);
    EXPECT_GE(handled.front().origin.at, before.at);
    EXPECT_EQ(handled.front().numbers, (Trace::Numbers { 40, relayMessage, hops, 7, -1 }));
    for (std::size_t i = 1; i < handled.size(); ++i)
    {
        const auto& cause = handled[i - 1];
        EXPECT_EQ(handled[i].origin.thread, cause.thread);
        EXPECT_GT(handled[i].origin.at, cause.begin);
        EXPECT_LT(handled[i].origin.at, cause.end);
        EXPECT_GT(handled[i].begin, handled[i].origin.at);
        EXPECT_EQ(Trace::threadName(handled[i].thread), i % 2 == 0 ? "Near" : "Far");
    }
}

TEST_F(TraceTest, SaysNothingOfWhatWasThereBeforeIt)
{
    add(new Relay(5), 4);
    postSystemMessage(4, relayMessage, 0, 0);
    Trace::note(Trace::Kind::programState, 1, 2);
    ASSERT_TRUE(Trace::begin());
    EXPECT_TRUE(taken().empty());
    step();
    const auto events = taken();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].origin.thread, Trace::noThread) << "it was posted before";
    Trace::end();
    Trace::note(Trace::Kind::programState, 1, 2);
    EXPECT_EQ(Trace::here().thread, Trace::noThread);
    EXPECT_TRUE(taken().empty());
}

TEST_F(TraceTest, AJobHasItsPosterAndTheTimeThatItTook)
{
    DeviceWorker worker("Slow");
    ASSERT_TRUE(Trace::begin());
    worker.post(12, [] { Platform::sleepFor(std::chrono::milliseconds(3)); });
    const auto afterPost = Trace::here();
    worker.post(13,
                []
                {
                    TraceScope scope(Trace::Kind::block, 0x8001, 6), inner(Trace::Kind::block, 2);
                    scope.set(3, 1);
                });
    DeviceWorker::drainAll();
    const auto events = taken();
    ASSERT_EQ(events.size(), 4u);
    EXPECT_EQ(events[0].numbers[0], 12);
    EXPECT_EQ(events[0].origin.thread, afterPost.thread);
    EXPECT_LT(events[0].origin.at, afterPost.at);
    EXPECT_GE(events[0].end - events[0].begin, std::chrono::milliseconds(3));
    EXPECT_EQ(events[2].numbers, (Trace::Numbers { 0x8001, 6, 0, 1, 0 }));
    EXPECT_LE(events[3].begin, events[2].begin) << "the job is around what it does";
    EXPECT_GE(events[3].end, events[2].end);
}

/** A flood: the first events are kept, the others counted, and there is room again for what comes after the reader. */
TEST_F(TraceTest, CountsWhatFindsNoRoom)
{
    constexpr int tooMany = 10;
    ASSERT_TRUE(Trace::begin());
    for (int round = 0; round < 2; ++round)
    {
        for (int i = 0; i < static_cast<int>(Trace::capacity) + tooMany; ++i)
            Trace::note(Trace::Kind::job, i);
        EXPECT_EQ(Trace::countLost(), static_cast<std::uint64_t>((round + 1) * tooMany));
        const auto events = taken();
        ASSERT_EQ(events.size(), Trace::capacity);
        for (std::size_t i = 0; i < events.size(); ++i)
            ASSERT_EQ(events[i].numbers[0], static_cast<int>(i));
    }
    Trace::note(Trace::Kind::job, 1);
    Trace::end();
    ASSERT_TRUE(Trace::begin());
    EXPECT_EQ(Trace::countLost(), 0u);
    EXPECT_TRUE(taken().empty()) << "what nobody has taken went with its trace";
}

TEST_F(TraceTest, OfManyThreadsEveryEventIsTakenInOrderOrCounted)
{
    constexpr int writers = 4, each = 30'000;
    ASSERT_TRUE(Trace::begin());
    std::atomic<int> running { writers };
    std::vector<std::thread> threads;
    for (int writer = 0; writer < writers; ++writer)
        threads.emplace_back(
            [&, writer]
            {
                for (int i = 0; i < each; ++i)
                    Trace::note(Trace::Kind::job, writer, i, ~i);
                --running;
            });
    std::array<int, writers> last {};
    last.fill(-1);
    std::uint64_t count = 0;
    for (bool more = true; more;)
    {
        more = running > 0;
        for (const auto& event : taken())
        {
            const auto [writer, number, inverse, unused, alsoUnused] = event.numbers;
            ASSERT_EQ(inverse, ~number) << "half of it was written";
            ASSERT_GT(number, last[static_cast<std::size_t>(writer)]);
            last[static_cast<std::size_t>(writer)] = number;
            ++count;
        }
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(count + Trace::countLost(), static_cast<std::uint64_t>(writers * each));
}
