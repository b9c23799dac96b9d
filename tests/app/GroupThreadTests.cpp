#include "kernel/SystemEngine.h"
#include "platform/base/System.h"

#include <gtest/gtest.h>
#include <iostream>
#include <sched.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#ifndef HEADUNIT_SANITIZED

namespace
{

/** Uses its stack up. */
class Overflowing : public Kernel::ComponentTask
{
public:
    void handleMessage(juce::int32, juce::int32, juce::int32, const Kernel::Payload&) override
    {
        const volatile int first = 0;
        recurse(&first, 1'000'000'000);
    }

private:
    int recurse(const volatile int* previous, long depth)
    {
        const volatile int page[1024] = { *previous + 1 };
        return depth == 0 ? 0 : recurse(page, depth - 1) + page[0];
    }
};

void overflowOnAGroupThread()
{
    Platform::installExceptionHook();
    std::atexit([] { std::cerr << "exit handlers ran" << std::endl; });
    auto* engine = Kernel::SystemEngine::getInstance();
    engine->createGroup("GeneralNormalGroup", 5);
    const Kernel::SystemTask::Ptr component = new Overflowing;
    component->assignId(40);
    engine->registerComponent("GeneralNormalGroup", component);
    engine->start();
    for (;;)
        pause();
}

} // namespace

TEST(GroupThreadDeathTest, AnOverflowOfItsStackIsAFaultLikeAnyOther)
{
    EXPECT_EXIT(overflowOnAGroupThread(), testing::ExitedWithCode(0),
                "^fault: .*SIGSEGV.*, thread GeneralNormal\n(.*\n)*exit handlers ran");
}

#endif

TEST(GroupThread, RealTimePriorityIsNotInherited)
{
    std::thread(
        []
        {
            if (!Platform::requestRealtimePriority())
                GTEST_SKIP() << "the system does not allow it";
            EXPECT_EQ(sched_getscheduler(0), SCHED_RR | SCHED_RESET_ON_FORK);
            std::thread([] { EXPECT_EQ(sched_getscheduler(0), SCHED_OTHER); }).join();
            const auto child = fork();
            if (child == 0)
                _exit(sched_getscheduler(0));
            int status = -1;
            waitpid(child, &status, 0);
            EXPECT_EQ(WEXITSTATUS(status), SCHED_OTHER);
        })
        .join();
}
