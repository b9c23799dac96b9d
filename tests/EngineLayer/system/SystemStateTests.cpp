#include "support/LogCapture.h"
#include "support/StateFixture.h"

#include <thread>

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;

namespace
{

/** A base that comes first, so that the first line is seen. */
struct WithLog
{
    const LogCapture log;
};

class SystemStateTest : private WithLog, public StateFixture
{
protected:
    void fireTimeOut()
    {
        ASSERT_TRUE(states.isTimerRunning(SystemStateManager::timerId));
        states.expire(SystemStateManager::timerId);
        run();
    }
    void unlock() { send(Kernel::systemStateManagerId, Kernel::MSG_SYS_ANTITHEFT_EXIT, 1); }
};

} // namespace

TEST_F(SystemStateTest, BootsInSilenceUntilAnotherThreadsWishIsTakenUp)
{
    EXPECT_EQ(LogCapture::count("State: kBooting | SubState: kIdle"), 1);
    request(mbFM, AppAction::ToRun);
    EXPECT_EQ(events(), Events { "mbFM = 2" });
    std::thread([] { switchSystemState(kNormalRun, kIdle); }).join();
    EXPECT_EQ(getSystemState(), kBooting) << "it is posted";
    run();
    EXPECT_EQ(getSystemState(), kNormalRun);
    EXPECT_EQ(events().front(), "ready to 3");
}

// A user chooses FM while the unit plays nothing: the old source leaves first, FM starts after its report, everybody
// concerned hears of the new source before FM hears that it is done.
TEST_F(SystemStateTest, CarriesOneRequestFromOrderToResult)
{
    enterNormalRun();
    request(mbFM, AppAction::ToRun);
    EXPECT_EQ(events(), Events { "mbAVOff stop" });
    EXPECT_EQ(getSystemSubState(), kSwitch);
    EXPECT_EQ(states.getTimerInterval(SystemStateManager::timerId), 3000);
    EXPECT_EQ(getNormalSource(), mbAVOff);
    EXPECT_EQ(getLastNormalSource(), mbFM);

    answer(mbAVOff);
    EXPECT_EQ(events(), Events { "mbFM run" });
    answer(mbFM);
    EXPECT_EQ(events(),
              (Events { "last source mbFM", "normal mbFM to 1", "normal mbFM to 3", "normal mbFM to 21", "mbFM = 1" }));
    EXPECT_EQ(getSystemSubState(), kIdle);
    EXPECT_EQ(getNormalSource(), mbFM);
    EXPECT_EQ(getFrontShow(), mbFM);
    EXPECT_FALSE(states.isTimerRunning(SystemStateManager::timerId));
    EXPECT_EQ(LogCapture::count("State: kNormalRun | SubState: kSwitch"), 2);
}

TEST_F(SystemStateTest, RefusesWhatCannotBeScheduled)
{
    enterNormalRun();
    request(mbFM, AppAction::ToStop);
    request(mbFM, AppAction::None);
    request(mbFM, static_cast<AppAction>(77));
    EXPECT_EQ(events(), (Events { "mbFM = 2", "mbFM = 2", "mbFM = 2" }));
    // Pages that nobody registered, or that are none, leave no trace and stop nothing.
    for (const int page : { static_cast<int>(mbDVBT), static_cast<int>(NUM_OF_PAGES), -1, 5000 })
        request(page, AppAction::ToRun);
    complete(mbFM);
    EXPECT_EQ(getNormalSource(), mbFM);
}

TEST_F(SystemStateTest, RequestsWaitTheirTurnBehindARunningSwitch)
{
    enterNormalRun();
    request(mbFM, AppAction::ToRun);
    events();
    for (const int page : { mbAM, mbWB, mbAM })
        request(page, AppAction::ToRun);
    EXPECT_EQ(events(), (Events { "mbAM = 3", "mbWB = 3", "mbAM = 3" }));

    answerAll();
    Events results;
    for (const auto& each : events())
        if (each.find(" = ") != std::string::npos || each.find(" run") != std::string::npos)
            results.push_back(each);
    EXPECT_EQ(results, (Events { "mbFM run", "mbFM = 1", "mbAM run", "mbAM = 1", "mbWB run", "mbWB = 1", "mbAM run",
                                 "mbAM = 1" }));
    EXPECT_EQ(applications.getTimerInterval(ApplicationManager::backgroundTimer), 5000);
}

TEST_F(SystemStateTest, ASwitchThatFailsOrTimesOutFailsForEveryPageThatHadAnOrder)
{
    enterNormalRun();
    request(mbFM, AppAction::ToRun);
    events();
    fireTimeOut();
    EXPECT_EQ(events(), Events { "mbAVOff = 4" });
    EXPECT_FALSE(isSystemBusy());

    orders.clear();
    request(mbAM, AppAction::ToRun);
    answer(mbAVOff);
    fireTimeOut();
    EXPECT_EQ(events(), (Events { "mbAVOff stop", "mbAM run", "mbAVOff = 4", "mbAM = 4" }));
    answer(mbAM);
    complete(mbWB);
    EXPECT_EQ(getNormalSource(), mbWB);

    request(mbFM, AppAction::ToRun);
    answer(mbWB, false);
    answer(mbFM);
    const auto all = events();
    EXPECT_EQ(Events(all.end() - 2, all.end()), (Events { "mbWB = 4", "mbFM = 4" }));
}

// FM's report comes after its switch was given up, while AM's switch waits for a stop: AM must not start yet.
TEST_F(SystemStateTest, ALateReportDoesNotStartTheNextSourceEarly)
{
    enterNormalRun();
    request(mbFM, AppAction::ToRun);
    answer(mbAVOff);
    fireTimeOut();
    events();
    orders.clear();
    complete(mbWB);
    request(mbAM, AppAction::ToRun);
    EXPECT_EQ(events(), Events { "mbWB stop" });
    for (const int page : { mbFM, mbAM }) // AM has not been told anything yet
        send(Kernel::systemStateManagerId, Kernel::MSG_SWITCH_REPORT, page, 1);
    EXPECT_EQ(events(), Events {});
    answer(mbWB);
    EXPECT_EQ(events(), Events { "mbAM run" });
}

TEST_F(SystemStateTest, StatesAskedForDuringASwitchFollowInTheirOrder)
{
    enterNormalRun();
    Kernel::postSystemMessage(Kernel::systemStateManagerId, Kernel::MSG_SCHEDULE_REQUEST, mbFM,
                              RequestInfo { mbFM, AppAction::ToRun }.toArgument());
    step();
    ASSERT_EQ(getSystemSubState(), kSchedule);
    switchSystemState(kISRMode, kIdle);
    switchSystemState(kDummyPowerOff, kIdle);
    run();
    EXPECT_EQ(getSystemState(), kNormalRun);
    EXPECT_EQ(getSystemSubState(), kSwitch);
    answerAll();
    EXPECT_EQ(getSystemState(), kDummyPowerOff);
    EXPECT_EQ(getPreviousSystemState(), kISRMode);
    EXPECT_EQ(getISRReturnPage(), mbFM);
}

// The microcontroller starts anew in the middle of a switch, and the unit is told to enter the state that it is in.
TEST_F(SystemStateTest, TheSameStateAskedForDuringASwitchDoesNotCutItShort)
{
    enterNormalRun();
    request(mbFM, AppAction::ToRun);
    switchSystemState(kNormalRun, kIdle);
    run();
    EXPECT_EQ(getSystemSubState(), kSwitch);
    request(mbAM, AppAction::ToRun);
    answerAll();
    EXPECT_EQ(getNormalSource(), mbAM);
}

TEST_F(SystemStateTest, RefusedTransitionsAreLoggedAndHoldNobodyUp)
{
    enterNormalRun();
    for (const int state : { kBooting, kAntitheft, kLocked })
    {
        enter(state);
        EXPECT_EQ(LogCapture::count(std::string("SystemState can not switch to ") + systemStateName(state)), 1);
    }
    enter(99);
    EXPECT_EQ(LogCapture::count("SystemState can not switch to "), 1);
    EXPECT_EQ(getSystemState(), kNormalRun);

    request(mbFM, AppAction::ToRun);
    switchSystemState(kLocked, kIdle);
    request(mbAM, AppAction::ToRun);
    answerAll();
    EXPECT_EQ(LogCapture::count("SystemState can not switch to kLocked"), 2);
    EXPECT_EQ(getNormalSource(), mbAM);
}

TEST_F(SystemStateTest, TheLockLetsOnlyItsPageRun)
{
    enter(kAntitheft);
    EXPECT_EQ(events(), Events { "mbAntitheft run" });
    request(mbFM, AppAction::ToRun);
    EXPECT_EQ(events(), Events { "mbFM = 2" });
    // Unlocked while its page still comes up: not lost.
    unlock();
    EXPECT_EQ(getSystemState(), kAntitheft);
    answerAll();
    EXPECT_EQ(getSystemState(), kNormalRun);
    EXPECT_EQ(events(), (Events { "mbAntitheft = 1", "ready to 3" }));
    complete(mbFM);
    EXPECT_EQ(getFrontShow(), mbFM);
}

TEST_F(SystemStateTest, StoppingTheAntitheftPageEndsTheLock)
{
    enter(kAntitheft);
    answerAll();
    events();
    request(mbAntitheft, AppAction::ToHide);
    EXPECT_EQ(events(), Events { "mbAntitheft = 2" });
    request(mbAntitheft, AppAction::ToStop);
    EXPECT_EQ(getSystemState(), kNormalRun);
    EXPECT_EQ(events(), (Events { "ready to 3", "mbAntitheft stop" }));
}

TEST_F(SystemStateTest, UnlockingGoesThroughTheAntitheftState)
{
    enter(kAntitheft);
    answerAll();
    send(Kernel::systemStateManagerId, Kernel::MSG_SYS_ANTITHEFT_EXIT, 2);
    EXPECT_EQ(getSystemState(), kLocked);
    events();
    request(mbAntitheft, AppAction::ToStop);
    request(mbFM, AppAction::ToRun);
    EXPECT_EQ(events(), Events { "mbFM = 2" });
    EXPECT_EQ(getSystemState(), kLocked);
    enter(kNormalRun);
    EXPECT_EQ(getSystemState(), kLocked);
    unlock();
    EXPECT_EQ(getSystemState(), kNormalRun);
    EXPECT_EQ(getPreviousSystemState(), kAntitheft);
    EXPECT_EQ(events(), Events { "ready to 3" });
}

TEST_F(SystemStateTest, IsrModeTurnsOffAndBringsTheSourceBack)
{
    for (const bool registered : { true, false })
    {
        SCOPED_TRACE(registered);
        if (getSystemState() == kBooting)
            enterNormalRun();
        complete(mbFM);
        enter(kISRMode);
        answerAll();
        EXPECT_EQ(getNormalSource(), mbAVOff);
        EXPECT_EQ(getISRReturnPage(), mbFM);
        if (!registered)
            unregisterHandler(pages[mbFM].get());
        events();

        request(mbSetup, AppAction::ToStop);
        EXPECT_EQ(getSystemState(), kNormalRun);
        answerAll();
        EXPECT_EQ(getNormalSource(), registered ? mbFM : mbAVOff);
    }
}

TEST_F(SystemStateTest, WhatWaitsInIsrModeWaitsForTheNextRequest)
{
    enterNormalRun();
    enter(kISRMode);
    answerAll();
    complete(mbMainMenu);
    request(mbFM, AppAction::ToRun);
    request(mbSetup, AppAction::ToRun);
    answerAll();
    EXPECT_EQ(getNormalSource(), mbFM);
    EXPECT_FALSE(pages[mbSetup]->isRunning());
    events();
    request(mbEQ, AppAction::ToRun);
    EXPECT_EQ(events().front(), "mbSetup = 3");
    answerAll();
    EXPECT_TRUE(pages[mbSetup]->isRunning());
}

TEST_F(SystemStateTest, DummyPowerOffResumesBothZones)
{
    enterNormalRun();
    complete(mbFM);
    complete(mbRearAV1);
    complete(mbMainMenu);
    complete(mbFM, AppAction::ToShow);
    ASSERT_EQ(getRearPage(), mbRearAV1);
    enter(kDummyPowerOff);
    answerAll();
    EXPECT_EQ(getNormalSource(), mbAVOff);
    EXPECT_EQ(getFrontShow(), mbAVOff);
    events();

    const int before = pages[mbRearAV1]->requests;
    enter(kNormalRun);
    answerAll();
    EXPECT_EQ(getNormalSource(), mbFM);
    EXPECT_EQ(getFrontShow(), mbFM);
    EXPECT_EQ(pages[mbRearAV1]->requests, before + 1);

    // Something else is in front when the unit resumes: the source plays without coming to the front.
    enter(kDummyPowerOff);
    answerAll();
    complete(mbSetup);
    enter(kNormalRun);
    answerAll();
    EXPECT_EQ(getNormalSource(), mbFM);
    EXPECT_EQ(getFrontShow(), mbSetup);
    EXPECT_EQ(pages[mbFM]->getRunState().states.playState, PageStates::playing);
}

// In ISR mode what waits is only taken when another request comes: one more makes room for itself.
TEST_F(SystemStateTest, AFullQueueRefusesWhatIsTooManyAndIsNotStuckInISRMode)
{
    enterNormalRun();
    enter(kISRMode);
    answerAll();
    request(mbFM, AppAction::ToRun);
    for (std::size_t sent = 0; sent < SystemStateManager::requestCapacity; ++sent)
        request(mbAM, AppAction::ToRun);
    events();
    for (const int page : { mbWB, mbWB })
        request(page, AppAction::ToRun);
    EXPECT_EQ(events(), (Events { "mbWB = 2", "mbWB = 2" }));
    EXPECT_EQ(LogCapture::count("too many requests wait, mbWB is refused"), 1);
    answerAll();
    events();
    ASSERT_FALSE(isSystemBusy());
    request(mbWB, AppAction::ToRun);
    EXPECT_EQ(events(), (Events { "mbAM = 3", "mbFM stop" }));
}
