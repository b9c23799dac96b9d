#include "kernel/MessageIds.h"
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

class TaskGroupTest : public KernelFixture
{
protected:
    static void postUrgent(ComponentId receiver, juce::int32 id) { postUrgentSystemMessage(receiver, id, 0, 0); }
};

} // namespace

TEST_F(TaskGroupTest, UrgentMessagesOvertakeWhatIsQueuedButNotWhatIsPending)
{
    auto* component = new Noting;
    add(component, 1);
    postSystemMessage(1, 10, 0, 0);
    postSystemMessage(1, 11, 0, 0);
    postUrgent(1, 12);
    step();
    EXPECT_EQ(component->handled, (std::vector { 12, 10, 11 }));
}

TEST_F(TaskGroupTest, ADeferredMessageWaitsAndHoldsNobodyUp)
{
    auto* deferring = new Noting;
    auto* other = new Noting;
    add(deferring, 1);
    add(other, 2);
    deferring->deferred = 10;
    postSystemMessage(1, 10, 0, 0);
    postSystemMessage(2, 20, 0, 0);
    postSystemMessage(1, 11, 0, 0);
    step();
    EXPECT_EQ(other->handled, std::vector { 20 });
    EXPECT_EQ(deferring->handled, std::vector { 11 });
    step();
    deferring->deferred = 0;
    step();
    EXPECT_EQ(deferring->handled, (std::vector { 11, 10 }));
}
