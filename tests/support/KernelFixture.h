#pragma once

#include "kernel/DeviceWorker.h"
#include "kernel/SystemEngine.h"
#include "support/Eventually.h"

#include <gtest/gtest.h>
#include <map>

/**
    An engine whose threads do not run. A test adds the components that it is about; every other address is a recorder
    that keeps what was posted to it. Messages move only when the test says so.
*/
class KernelFixture : public testing::Test
{
protected:
    struct Posted
    {
        Kernel::ComponentId receiver;
        juce::int32 id;
        juce::int32 arg1;
        juce::int32 arg2;
        juce::int32 handlerIndex;
        Kernel::Payload payload;
    };

    KernelFixture()
    {
        // What earlier tests left behind, singletons included, goes first.
        juce::DeletedAtShutdown::deleteAll();
        engine().createGroup(testedGroup, 5);
        engine().createGroup(recorderGroup, 5);
        for (Kernel::ComponentId id = 0; id <= 32; ++id)
            addRecorder(id);
    }

    ~KernelFixture() override
    {
        engine().stop();
        // A loaded machine needs longer than a unit gives its threads.
        EXPECT_TRUE(eventually([] { return engine().release(); }));
        juce::DeletedAtShutdown::deleteAll();
    }

    static Kernel::SystemEngine& engine() { return *Kernel::SystemEngine::getInstance(); }

    /** Puts a component under test at its address; runs its `initialize`. */
    void add(Kernel::SystemTask* component, Kernel::ComponentId id)
    {
        component->assignId(id);
        engine().registerComponent(testedGroup, component);
    }

    /** Lets the tested components, and the devices, handle what waits for them, until nothing is left. */
    void run()
    {
        auto* group = engine().findGroup(testedGroup);
        for (int pass = 0; pass < 1000 && (group->hasMessages() || Kernel::DeviceWorker::drainAll()); ++pass)
            group->runPass();
    }

    /** One pass only. */
    void step() { engine().findGroup(testedGroup)->runPass(); }

    /** Everything that was posted to other addresses since the last call, in order. */
    std::vector<Posted> takePosted()
    {
        auto* group = engine().findGroup(recorderGroup);
        while (group->hasMessages())
            group->runPass();
        return std::exchange(recorded, {});
    }

    /** The next message to another address is this one. */
    void expectPosted(Kernel::ComponentId receiver, juce::int32 id, juce::int32 arg1, juce::int32 arg2)
    {
        if (unread.empty())
            unread = takePosted();
        ASSERT_FALSE(unread.empty()) << "nothing was posted, expected " << std::hex << id << " to " << std::dec
                                     << receiver;
        const auto next = unread.front();
        unread.erase(unread.begin());
        EXPECT_EQ(next.receiver, receiver);
        EXPECT_EQ(next.id, id);
        EXPECT_EQ(next.arg1, arg1);
        EXPECT_EQ(next.arg2, arg2);
    }

    void expectNothingPosted()
    {
        for (const auto& each : takePosted())
            unread.push_back(each);
        for (const auto& each : unread)
            ADD_FAILURE() << "posted " << std::hex << each.id << " to " << std::dec << each.receiver << " ("
                          << each.arg1 << ", " << each.arg2 << ")";
        unread.clear();
    }

    void send(Kernel::ComponentId receiver, juce::int32 id, juce::int32 arg1 = 0, juce::int32 arg2 = 0,
              Kernel::Payload payload = nullptr)
    {
        Kernel::postSystemMessage(receiver, id, arg1, arg2, std::move(payload));
        run();
    }

private:
    static constexpr const char* testedGroup = "Tested";
    static constexpr const char* recorderGroup = "Recorders";

    class Recorder : public Kernel::SystemTask
    {
    public:
        explicit Recorder(std::vector<Posted>& target)
            : log(target)
        {
        }
        void dispatchMessage(const Kernel::SystemMessage& message) override
        {
            log.push_back(
                { message.receiver, message.id, message.arg1, message.arg2, message.handlerIndex, message.payload });
        }
        void initialize() override {}
        void onStop() override {}
        void onRelease() override {}

    private:
        std::vector<Posted>& log;
    };

    void addRecorder(Kernel::ComponentId id)
    {
        Kernel::SystemTask::Ptr recorder = new Recorder(recorded);
        recorder->assignId(id);
        engine().registerComponent(recorderGroup, recorder);
    }

    std::vector<Posted> recorded;
    std::vector<Posted> unread;
};
