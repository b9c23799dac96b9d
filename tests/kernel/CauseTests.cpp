#include "kernel/Cause.h"

#include "kernel/Actor.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemTimer.h"
#include "support/KernelFixture.h"

using namespace Kernel;
using namespace std::chrono_literals;

namespace
{

constexpr ComponentId firstId = 4, secondId = 5;
constexpr juce::int32 work = 3;

/** Does what the test says, and notes why and on whose behalf it has been called. */
class Noting : public SystemTask
{
public:
    void dispatchMessage(const SystemMessage& message) override
    {
        seen.push_back({ Cause::current(), message.poster, Actor::current() });
        if (then != nullptr)
            then(message);
    }
    void initialize() override {}
    void onStop() override {}
    void onRelease() override {}

    struct Call
    {
        Cause cause;
        Actor poster, self;
    };
    std::vector<Call> seen;
    std::function<void(const SystemMessage&)> then;
};

class CauseTest : public KernelFixture
{
protected:
    CauseTest()
    {
        add(first, firstId);
        add(second, secondId);
    }

    /** A new one each time: each counts once. */
    static Cause made(Cause::Kind kind, std::chrono::milliseconds ago = 0ms)
    {
        static int number = 0;
        return { kind, Platform::Clock::now() - ago - std::chrono::nanoseconds(++number) };
    }

    Noting* first = new Noting;
    Noting* second = new Noting;
};

} // namespace

/** A key goes over two components and a device: each works on its behalf, and nothing else does. */
TEST_F(CauseTest, GoesAlongWithMessagesAndJobsAndEndsAtTimers)
{
    const auto cause = made(Cause::bytes);
    DeviceWorker worker("Slow");
    SystemTimer timers(firstId);
    Cause ofJob;
    first->then = [&](const SystemMessage& message)
    {
        if (message.id != work)
            return;
        Cause::is(Cause::key);
        Cause::is(Cause::command);
        postSystemMessage(secondId, work, 0, 0);
        timers.startTimer(1, 1'000'000);
    };
    second->then = [&](const SystemMessage&) { worker.post(1, [&] { ofJob = Cause::current(); }); };
    {
        const CauseScope scope(cause);
        postUrgentSystemMessage(firstId, work, 0, 0);
        const CauseScope inner({});
        EXPECT_EQ(Cause::current().kind, Cause::none);
    }
    EXPECT_EQ(Cause::current().kind, Cause::none);
    run();
    EXPECT_EQ(ofJob.begin, cause.begin);
    timers.expire(1);
    postSystemMessage(secondId, work, 0, 0);
    run();
    ASSERT_EQ(first->seen.size(), 2u);
    EXPECT_EQ(first->seen[0].cause.kind, Cause::bytes);
    EXPECT_EQ(first->seen[1].cause.kind, Cause::none) << "what a timer brings is its own";
    ASSERT_EQ(second->seen.size(), 2u);
    EXPECT_EQ(second->seen[0].cause.kind, Cause::key) << "what it has turned out to be first";
    EXPECT_EQ(second->seen[0].cause.begin, cause.begin);
    EXPECT_EQ(second->seen[1].cause.kind, Cause::none) << "the handler before has ended";
    EXPECT_EQ(ofJob.kind, Cause::none);
}

/** A key shows a page and moves ten volumes: the time until the first of each is what the user waits. */
TEST_F(CauseTest, CountsTheFirstTimeThatItGetsSomewhere)
{
    const auto count = [](Cause::Kind kind, Cause::Stage stage) { return Cause::times(kind, stage).count(); };
    const auto keysBefore = count(Cause::key, Cause::sound);
    const auto pagesBefore = count(Cause::key, Cause::page);
    const auto key = made(Cause::key, 20ms);
    for (int i = 0; i < 3; ++i)
        key.reached(Cause::sound);
    EXPECT_EQ(count(Cause::key, Cause::sound), keysBefore + 1);
    EXPECT_EQ(count(Cause::key, Cause::page), pagesBefore);
    EXPECT_GE(Cause::times(Cause::key, Cause::sound).at(1), 20ms);
    made(Cause::key).reached(Cause::sound);
    EXPECT_EQ(count(Cause::key, Cause::sound), keysBefore + 2);
    for (const auto kind : { Cause::none, Cause::bytes })
    {
        made(kind).reached(Cause::sound);
        EXPECT_EQ(count(kind, Cause::sound), 0u) << "nobody knows what it was for";
    }
}

/** Who asks is known as long as the handler runs, and to the one that is asked. */
TEST_F(CauseTest, AMessageKnowsInWhoseHandlerItWasPosted)
{
    first->then = [](const SystemMessage&) { postSystemMessage(secondId, work, 0, 0); };
    postHandlerMessage(firstId, 0, work, 0, 0);
    run();
    postSystemMessage(secondId, work, 0, 0);
    run();
    ASSERT_EQ(second->seen.size(), 2u);
    EXPECT_EQ(second->seen[0].poster.component, firstId);
    EXPECT_EQ(second->seen[0].poster.page, 0);
    EXPECT_TRUE(second->seen[0].poster.name().contains("(")) << "the page's name too";
    EXPECT_EQ(second->seen[0].self.component, secondId);
    EXPECT_EQ(second->seen[1].poster.component, noComponent);
    EXPECT_EQ(second->seen[1].poster.name(), "the system");
    EXPECT_EQ(Actor::current().component, noComponent);
}

/** What others see of a group while its handler hangs, and of messages that it does not take up meanwhile. */
TEST_F(CauseTest, AGroupShowsWhatItDoesAndWhatItLeavesUndone)
{
    const auto status = [] { return engine().getGroupStatus().front(); };
    const auto begin = Platform::Clock::now();
    EXPECT_EQ(status().name, "Tested");
    EXPECT_EQ(status().receiver, noComponent);
    EXPECT_FALSE(status().isStuck(0ms));
    GroupStatus during;
    first->then = [&](const SystemMessage&)
    {
        Platform::sleepFor(3ms);
        during = status();
    };
    postSystemMessage(firstId, MSG_APP_KEY, 0, 0);
    run();
    EXPECT_EQ(during.receiver, firstId);
    EXPECT_EQ(during.message, MSG_APP_KEY);
    EXPECT_GE(during.since, begin);
    EXPECT_TRUE(during.isStuck(2ms));
    EXPECT_FALSE(during.isStuck(1h));
    EXPECT_TRUE(during.describe().contains("is busy with MSG_APP_KEY of")) << during.describe();
    EXPECT_EQ(status().receiver, noComponent);
    EXPECT_FALSE(status().isStuck(0ms)) << "it waits";

    postSystemMessage(secondId, work, 0, 0);
    Platform::sleepFor(3ms);
    postUrgentSystemMessage(firstId, MSG_APP_KEY, 0, 0);
    EXPECT_EQ(status().queued, 2u);
    EXPECT_EQ(status().nextReceiver, firstId) << "the urgent one";
    EXPECT_TRUE(status().isStuck(2ms)) << "as long as the older one waits";
    EXPECT_TRUE(status().describe().contains("does not take up MSG_APP_KEY for")) << status().describe();
    first->then = nullptr;
    run();
    EXPECT_EQ(status().queued, 0u);
    EXPECT_FALSE(status().isStuck(0ms));
}
