#include "kernel/MessageIds.h"
#include "kernel/SystemTimer.h"
#include "support/KernelFixture.h"

using namespace Kernel;

namespace
{

/** Notes what it handles; defers ids that the test names. */
class Noting : public ComponentTask
{
public:
    bool acceptMessage(const SystemMessage& message) override { return message.id != deferred; }
    void handleMessage(juce::int32 id, juce::int32, juce::int32, const Payload&) override { handled.push_back(id); }

    juce::int32 deferred = 0;
    std::vector<juce::int32> handled;
};

using TaskGroupTest = KernelFixture;

} // namespace

TEST_F(TaskGroupTest, AnUrgentMessageOvertakesAndADeferredOneHoldsNobodyUp)
{
    auto* deferring = new Noting;
    auto* other = new Noting;
    add(deferring, 1);
    add(other, 2);
    deferring->deferred = 10;
    postSystemMessage(1, 10, 0, 0);
    postSystemMessage(2, 20, 0, 0);
    postSystemMessage(1, 11, 0, 0);
    postUrgentSystemMessage(1, 12, 0, 0);
    step();
    EXPECT_EQ(other->handled, std::vector { 20 });
    EXPECT_EQ(deferring->handled, (std::vector { 12, 11 }));
    step();
    deferring->deferred = 0;
    step();
    EXPECT_EQ(deferring->handled, (std::vector { 12, 11, 10 }));
}

/** A timer runs out, and is stopped or started anew before its owner gets to it: that time is not over. */
TEST_F(TaskGroupTest, AnExpiryCountsOnlyForTheStartThatItBelongsTo)
{
    constexpr int timer = 4;
    constexpr int farOffMs = 1000000;
    const auto handled = [this](const std::function<void(SystemTimer&)>& meanwhile, juce::int32 deferred = 0)
    {
        auto* owner = new Noting;
        add(owner, 1);
        SystemTimer timers(1);
        timers.startTimer(timer, farOffMs);
        timers.expire(timer);
        owner->deferred = deferred;
        if (deferred != 0)
            step();
        meanwhile(timers);
        owner->deferred = 0;
        step();
        return owner->handled;
    };
    const std::vector<juce::int32> once { MSG_SYS_TIMER };
    const std::vector<juce::int32> never;
    const auto startAnew = [](SystemTimer& timers) { timers.startTimer(timer, farOffMs); };
    EXPECT_EQ(handled([](SystemTimer&) {}), once);
    EXPECT_EQ(handled([](SystemTimer& timers) { timers.startTimer(timer + 1, farOffMs); }), once);
    EXPECT_EQ(handled([](SystemTimer& timers) { timers.stopTimer(timer); }), never);
    EXPECT_EQ(handled(startAnew), never);
    EXPECT_EQ(handled(startAnew, MSG_SYS_TIMER), never) << "the owner had put it off";
    EXPECT_EQ(handled(
                  [](SystemTimer& timers)
                  {
                      timers.stopTimer(timer);
                      timers.expire(timer);
                      timers.startTimer(timer, farOffMs);
                      timers.expire(timer);
                  }),
              once);
    EXPECT_EQ(handled(
                  [](SystemTimer& timers)
                  {
                      timers.startTimer(timer, farOffMs);
                      timers.timerCallback(timer);
                  }),
              never)
        << "the start before has expired while this one began";
}
