#include "kernel/ComponentRegistration.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemTimer.h"
#include "platform/base/Threads.h"
#include "support/Eventually.h"
#include "support/KernelFixture.h"

#include <thread>

using namespace Kernel;

namespace
{

class SystemEngineTest : public KernelFixture
{
};

/** Writes what happens to it into a list that all of them share. */
class Journalling : public ComponentTask
{
public:
    Journalling(std::vector<std::string>& target, std::string name)
        : journal(target)
        , ownName(std::move(name))
    {
    }
    void initialize() override { journal.push_back(ownName + " initialize"); }
    void onStop() override { journal.push_back(ownName + " stop"); }
    void onRelease() override { journal.push_back(ownName + " release"); }
    void handleMessage(juce::int32, juce::int32, juce::int32, const Payload&) override {}

private:
    std::vector<std::string>& journal;
    std::string ownName;
};

class PayloadProbe : public juce::ReferenceCountedObject
{
};

} // namespace

TEST_F(SystemEngineTest, AMessageKeepsItsPayloadAndGoesBackEmptyToAPoolThatIsBounded)
{
    MessagePool::clear();
    Payload payload = new PayloadProbe;
    postSystemMessage(5, 42, 1, 2, payload);
    postHandlerMessage(5, 52, 43, 0, 0);
    EXPECT_EQ(payload->getReferenceCount(), 2);
    {
        const auto posted = takePosted();
        ASSERT_EQ(posted.size(), 2u);
        EXPECT_EQ(posted[0].payload, payload);
        EXPECT_EQ(posted[0].handlerIndex, -1);
        EXPECT_EQ(posted[1].handlerIndex, 52);
    }
    EXPECT_EQ(payload->getReferenceCount(), 1) << "the pooled message must not hold the payload";
    EXPECT_EQ(MessagePool::size(), 2);
    std::vector<SystemMessage::Ptr> taken;
    for (int count = 0; count < MessagePool::capacity + 1; ++count)
        taken.push_back(MessagePool::obtain());
    EXPECT_EQ(taken[0]->id, -1);
    EXPECT_EQ(taken[0]->handlerIndex, -1);
    EXPECT_EQ(taken[0]->receiver, 0);
    auto held = taken.front();
    MessagePool::recycle(taken.front());
    EXPECT_EQ(MessagePool::size(), 0) << "somebody holds it";
    held = nullptr;
    for (auto& message : taken)
        MessagePool::recycle(message);
    EXPECT_EQ(MessagePool::size(), MessagePool::capacity);
}

TEST_F(SystemEngineTest, WhatHasNoRouteOrComesTooLateIsDropped)
{
    EXPECT_FALSE(engine().createGroup("Tested", 7));
    MessagePool::clear();
    postSystemMessage(33, 1, 0, 0);
    EXPECT_EQ(MessagePool::size(), 1) << "nobody kept the message without a route";
    std::vector<std::string> journal;
    SystemTask::Ptr homeless = new Journalling(journal, "homeless");
    homeless->assignId(34);
    engine().registerComponent("no such group", homeless);
    postSystemMessage(34, 1, 0, 0);
    engine().stop();
    postSystemMessage(5, 1, 0, 0);
    EXPECT_EQ(MessagePool::size(), 1);
}

TEST_F(SystemEngineTest, ComponentsStopGroupByGroupAndReleaseInIdOrder)
{
    std::vector<std::string> journal;
    engine().createGroup("Second", 5);
    for (const int id : { 41, 40 })
    {
        SystemTask::Ptr component = new Journalling(journal, std::to_string(id));
        component->assignId(id);
        engine().registerComponent(id == 41 ? "Tested" : "Second", component);
    }
    add(new Journalling(journal, "39"), 39);
    journal.clear();
    engine().stop();
    engine().release();
    EXPECT_EQ(journal,
              (std::vector<std::string> { "39 stop", "41 stop", "40 stop", "39 release", "41 release", "40 release" }));
}

namespace
{

/** Its handler runs until the test lets it go, and then uses what it has. */
class Straggling : public ComponentTask
{
public:
    void onStop() override { stopped = true; }
    void onRelease() override { used = nullptr; }
    void handleMessage(juce::int32, juce::int32, juce::int32, const Payload&) override
    {
        entered.signal();
        gate.wait();
        usable = used != nullptr && used->getReferenceCount() == 1;
    }

    juce::WaitableEvent entered, gate;
    std::atomic<bool> usable { false };
    bool stopped = false;

private:
    Payload used = new PayloadProbe;
};

} // namespace

/** A handler hangs while the unit is switched off. Whatever it may still touch stays, until it has ended. */
TEST_F(SystemEngineTest, NothingIsTakenDownUnderAHandlerThatStillRuns)
{
    juce::ReferenceCountedObjectPtr<Straggling> component = new Straggling;
    add(component.get(), 45);
    EXPECT_FALSE(Platform::hasStragglers());
    engine().start();
    postSystemMessage(45, 1, 0, 0);
    component->entered.wait();
    engine().stop();
    EXPECT_TRUE(Platform::hasStragglers());
    EXPECT_FALSE(component->stopped);
    engine().release();
    EXPECT_NE(engine().findGroup("Tested"), nullptr);
    component->gate.signal();
    EXPECT_TRUE(eventually([] { return !engine().findGroup("Tested")->isRunning(); }));
    EXPECT_TRUE(component->usable);
    engine().stop();
    EXPECT_TRUE(component->stopped);
    engine().release();
    EXPECT_EQ(component->getReferenceCount(), 1);
}

namespace
{

class CountingTask : public SingalTask
{
public:
    std::atomic<int> runs { 0 };

private:
    void runTask(const SystemMessage&) override
    {
        ++runs;
        while (!isStopRequested())
            waitForWakeUp(50);
    }
};

class Counting : public ComponentTask
{
public:
    std::atomic<int> handled { 0 };
    std::atomic<int> outOfOrder { 0 };
    juce::WaitableEvent done;
    int expected = 0;

private:
    void handleMessage(juce::int32 id, juce::int32 poster, juce::int32 sequence, const Payload&) override
    {
        if (id != 7)
            return;
        if (sequence != next[static_cast<std::size_t>(poster)]++)
            ++outOfOrder;
        if (++handled == expected)
            done.signal();
    }
    std::array<int, 4> next {};
};

} // namespace

/** A run is asked to end by another thread; a request that came before the run does not count. */
TEST_F(SystemEngineTest, ASignalTaskEndsWhenAskedDuringItsRun)
{
    juce::ReferenceCountedObjectPtr<CountingTask> task = new CountingTask;
    add(task.get(), 50);
    task->requestStop();
    engine().start();
    postSystemMessage(50, SingalTask::runMessage, 0, 0);
    EXPECT_TRUE(eventually([&] { return task->runs == 1 && !task->isIdle(); }));
    task->requestStop();
    EXPECT_TRUE(eventually([&] { return task->isIdle(); }));
}

/** Four threads post to one group while it works and sleeps: nothing is lost, and each poster's order is kept. */
TEST_F(SystemEngineTest, NoPostIsLostBetweenThreads)
{
    constexpr int perPoster = 5000;
    engine().createGroup("Busy", 7);
    juce::ReferenceCountedObjectPtr<Counting> component = new Counting;
    component->expected = 4 * perPoster;
    component->assignId(51);
    engine().registerComponent("Busy", component.get());
    engine().start();
    std::vector<std::thread> posters;
    for (int poster = 0; poster < 4; ++poster)
        posters.emplace_back(
            [poster]
            {
                for (int sequence = 0; sequence < perPoster; ++sequence)
                {
                    postSystemMessage(51, 7, poster, sequence);
                    if (sequence % 100 == 0)
                        std::this_thread::yield();
                }
            });
    for (auto& poster : posters)
        poster.join();
    EXPECT_TRUE(component->done.wait(60000));
    EXPECT_EQ(component->handled, component->expected);
    EXPECT_EQ(component->outOfOrder, 0);
}
