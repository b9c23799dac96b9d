#include "ScheduleUnit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using testing::ElementsAre;

namespace
{

constexpr auto notShown = PageStates::notShown;
constexpr PageStates playsOnTop { 1, PageStates::playing, PageStates::held, PageStates::held };

PageScheduleConfig mixingPage(int page, std::int32_t playLevel)
{
    PageScheduleConfig config;
    config.page = page;
    config.showLevel = config.audioLevel = config.videoLevel = 20;
    config.playLevel = playLevel;
    config.isSourcePage = true;
    return config;
}

} // namespace

// The user starts FM from the menu, goes back to the menu and starts USB.
TEST(Scheduler, ASourceComesOverTheMenuAndDisplacesTheSourceBefore)
{
    ScheduleUnit unit;
    unit.run(mbMainMenu).run(mbFM);
    EXPECT_THAT(unit.orders(), ElementsAre("ToChange mbMainMenu hide(mbFM)", "ToRun mbFM enter on top"));
    EXPECT_EQ(unit.states(mbFM), playsOnTop);
    EXPECT_EQ(unit.states(mbMainMenu).showState, 2);

    unit.show(mbMainMenu);
    EXPECT_THAT(unit.orders(), ElementsAre("ToChange mbFM hide(mbMainMenu)", "ToChange mbMainMenu show"));
    EXPECT_TRUE(unit.plays(mbFM) && unit.isHeard(mbFM));

    unit.run(mbUSBAudio);
    EXPECT_THAT(unit.orders(), ElementsAre("ToStop mbFM exit(mbUSBAudio)", "ToChange mbMainMenu hide(mbUSBAudio)",
                                           "ToRun mbUSBAudio enter on top"));
    EXPECT_EQ(unit.remembered().lastNormalSource, mbUSBAudio);
    EXPECT_TRUE(unit.remembered().normalSourceChanged && unit.remembered().frontShowChanged);

    unit.run(mbUSBAudio);
    EXPECT_THAT(unit.orders(), ElementsAre("ToShowTopLevel mbUSBAudio show"));
    EXPECT_FALSE(unit.remembered().normalSourceChanged || unit.remembered().lastSourceChanged ||
                 unit.remembered().frontShowChanged);
    EXPECT_EQ(unit.remembered().request->showLevel, 20) << "the advantage lasts for one schedule only";
    EXPECT_EQ(unit.remembered().request->playLevel, 20);
}

// Two sources are left running when one was only shown; a third stops both.
TEST(Scheduler, ANewSourceStopsEveryOtherOne)
{
    ScheduleUnit unit;
    unit.run(mbFM).show(mbUSBAudio);
    EXPECT_TRUE(unit.plays(mbFM)) << "showing takes no sound";
    unit.play(mbSirius);
    EXPECT_THAT(unit.orders(),
                ElementsAre("ToStop mbUSBAudio exit(mbSirius)", "ToStop mbFM exit(mbSirius)", "ToRun mbSirius enter"));
}

// The phone rings over FM, the user looks at the settings, the call ends.
TEST(Scheduler, ACallSilencesTheSourceAndGivesTheSoundBack)
{
    ScheduleUnit unit;
    unit.run(mbFM).call(true).run(mbBTPhone);
    EXPECT_THAT(unit.orders(), ElementsAre("ToChange mbFM hide(mbBTPhone)", "ToRun mbBTPhone show"));
    EXPECT_EQ(unit.states(mbBTPhone), (PageStates { 1, PageStates::playing, PageStates::held, PageStates::notHeld }));
    EXPECT_EQ(unit.states(mbFM), (PageStates { 2, PageStates::stopped, PageStates::notHeld, PageStates::held }));
    EXPECT_EQ(unit.remembered().lastSourcePage, mbBTPhone);

    unit.run(mbSetup);
    EXPECT_TRUE(unit.plays(mbBTPhone)) << "a screen without sound takes none";
    EXPECT_EQ(unit.states(mbSetup).playState, PageStates::stopped);

    unit.run(mbUSBAudio);
    EXPECT_FALSE(unit.plays(mbUSBAudio)) << "no source outranks the call";

    unit.stop(mbBTPhone);
    EXPECT_THAT(unit.orders(), testing::Contains("ToStop mbBTPhone hide(mbUSBAudio)"));
    EXPECT_EQ(unit.states(mbUSBAudio), playsOnTop);
    EXPECT_EQ(unit.remembered().lastSourcePage, mbUSBAudio);
}

TEST(Scheduler, WithoutACallThePhonePageIsOnlyAScreen)
{
    ScheduleUnit unit;
    unit.run(mbFM).run(mbBTPhone);
    EXPECT_TRUE(unit.plays(mbFM) && unit.isHeard(mbFM));
    EXPECT_EQ(unit.states(mbBTPhone).playState, PageStates::stopped);
    // The call ends while its page is up: running the page again lets go of the sound.
    unit.call(true).run(mbBTPhone).call(false).run(mbBTPhone);
    EXPECT_TRUE(unit.plays(mbFM) && unit.isHeard(mbFM));
    EXPECT_FALSE(unit.plays(mbBTPhone) || unit.isHeard(mbBTPhone));
}

// Hiding keeps a page running; the next schedule that numbers the stack puts it at its end.
TEST(Scheduler, AHiddenPagePlaysOnAndASilentHiddenPageStopsWithTheNextRequest)
{
    ScheduleUnit unit;
    unit.run(mbMainMenu).run(mbFM).hide(mbFM);
    EXPECT_THAT(unit.orders(), ElementsAre("ToChange mbFM hide(mbMainMenu)", "ToChange mbMainMenu show"));
    EXPECT_EQ(unit.states(mbFM), (PageStates { notShown, PageStates::playing, PageStates::held, PageStates::notHeld }));
    unit.show(mbSetup);
    EXPECT_EQ(unit.states(mbFM).showState, 2);

    unit.hide(mbSetup).play(mbFM);
    EXPECT_THAT(unit.orders(), testing::Contains("ToStop mbSetup hide(mbFM)"));
}

TEST(Scheduler, WhenTheLastSourceStopsBehindTheMenuOffPlays)
{
    ScheduleUnit unit;
    unit.run(mbFM).run(mbMainMenu).stop(mbFM);
    EXPECT_THAT(unit.orders(), ElementsAre("ToStop mbFM exit(mbFM)", "ToRun mbAVOff"));
    EXPECT_EQ(unit.states(mbAVOff), (PageStates { 2, PageStates::playing, PageStates::held, PageStates::notHeld }));

    ScheduleUnit inSetup;
    inSetup.run(mbFM).run(mbSetup).stop(mbFM);
    EXPECT_FALSE(inSetup.runs(mbAVOff)) << "the menu is not on top";

    ScheduleUnit withAnother;
    withAnother.run(mbFM).show(mbUSBAudio).show(mbMainMenu).stop(mbFM);
    EXPECT_FALSE(withAnother.runs(mbAVOff));
    EXPECT_TRUE(withAnother.plays(mbUSBAudio)) << "the source that is left takes over";
}

TEST(Scheduler, StoppingASourcePageTurnsBackToTheRememberedSource)
{
    ScheduleUnit unit;
    unit.run(mbFM).run(mbCamera);
    EXPECT_EQ(unit.remembered().lastSourcePage, mbCamera);
    unit.run(mbSetup).stop(mbCamera);
    EXPECT_EQ(unit.remembered().lastSourcePage, mbFM);
    EXPECT_TRUE(unit.remembered().lastSourceChanged);
    EXPECT_EQ(unit.remembered().frontShowPage, mbSetup);
}

// A mixing page joins the source; both are heard until one of them leaves. The request counts with its boost of one level.
TEST(Scheduler, AMixingPageSharesTheSound)
{
    for (const auto& [level, mixes] : { std::pair { 38, false }, { 39, true }, { 48, true }, { 49, false } })
    {
        SCOPED_TRACE(level);
        ScheduleUnit unit;
        unit.add(mixingPage(mbNavi, level));
        unit.run(mbFM).run(mbNavi);
        EXPECT_EQ(unit.states(mbNavi).playState, mixes ? PageStates::mixed : PageStates::playing);
        EXPECT_EQ(unit.states(mbFM).playState, mixes ? PageStates::mixed : PageStates::stopped);
        EXPECT_EQ(unit.states(mbFM).audioState, mixes ? PageStates::held : PageStates::notHeld);
        unit.stop(mbNavi);
        EXPECT_EQ(unit.states(mbFM), playsOnTop);
    }

    // The source comes second: the page of that level mixes with what would be silent beside it.
    ScheduleUnit unit;
    unit.add(mixingPage(mbNavi, 40));
    unit.run(mbNavi).run(mbFM);
    EXPECT_EQ(unit.states(mbFM).playState, PageStates::mixed);
    EXPECT_EQ(unit.states(mbNavi).playState, PageStates::mixed);
}

// One page of the rear zone after the other, over FM on the unit's own screen.
TEST(Scheduler, TheRearZoneSharesTheScreenButNotTheSound)
{
    ScheduleUnit unit;
    unit.run(mbFM).run(mbRearAV1);
    EXPECT_THAT(unit.orders(), ElementsAre("ToChange mbFM hide(mbRearAV1)", "ToRun mbRearAV1 enter on top"));
    EXPECT_EQ(unit.states(mbRearAV1), playsOnTop);
    EXPECT_TRUE(unit.plays(mbFM) && unit.isHeard(mbFM) && unit.isSeen(mbFM));
    EXPECT_EQ(unit.remembered().lastSourcePage, mbFM) << "only front pages are remembered as source page";

    unit.run(mbRearAV2);
    EXPECT_THAT(unit.orders(), ElementsAre("ToStop mbRearAV1 exit(mbRearAV2)", "ToRun mbRearAV2 enter on top"));

    unit.run(mbUSBAudio);
    EXPECT_THAT(unit.orders(), ElementsAre("ToStop mbFM exit(mbUSBAudio)", "ToChange mbRearAV2 hide(mbUSBAudio)",
                                           "ToRun mbUSBAudio enter on top"));
    EXPECT_TRUE(unit.plays(mbRearAV2) && unit.isHeard(mbRearAV2));

    unit.show(mbRearAV2);
    EXPECT_THAT(unit.orders(), ElementsAre("ToChange mbUSBAudio hide(mbRearAV2)", "ToChange mbRearAV2 show"));
    unit.stop(mbRearAV2);
    EXPECT_THAT(unit.orders(), ElementsAre("ToStop mbRearAV2 exit(mbRearOff)", "ToChange mbUSBAudio show"));
    EXPECT_TRUE(unit.remembered().rearChanged);
    EXPECT_EQ(unit.remembered().rearPage, mbRearOff);

    for (const auto action : { AppAction::ToHide, AppAction::ToPlay })
    {
        unit.run(mbRearAV1).request({ mbRearAV1, action, false });
        EXPECT_FALSE(unit.runs(mbRearAV1)) << actionName(static_cast<int>(action)) << " empties it";
        EXPECT_TRUE(unit.runs(mbUSBAudio));
    }
}

TEST(Scheduler, WhatTheSystemAsksForDoesNotPushCertainPagesAway)
{
    struct Case
    {
        int front, source, page;
        AppAction action;
        bool bluetooth, pandora, allowed;
    };
    using enum AppAction;
    constexpr Case cases[] {
        { mbMainMenu, mbFM, mbUSBAudio, ToRun, true, true, true },
        { mbNavi, mbFM, mbUSBAudio, ToRun, true, true, false },
        { mbNavi, mbFM, mbBTPhone, ToShow, true, true, false },
        { mbNavi, mbFM, mbBTPhone, ToPlay, true, true, true },
        { mbNavi, mbFM, mbSetup, ToRun, true, true, true },
        { mbSetup, mbBTAudio, mbFM, ToRun, false, true, false },
        { mbSetup, mbBTAudio, mbFM, ToRun, true, false, true },
        { mbSetup, mbiPodPandora, mbFM, ToStop, true, false, false },
        { mbSetup, mbFM, mbUSBAudio, ToRun, false, false, true },
        { mbThirdPart, mbFM, mbUSBAudio, ToShow, true, true, false },
        { mbThirdPart, mbFM, mbBTPhone, ToRun, true, true, true },
        { mbMainMenu, mbDiscAuto, mbDiscAudio, ToRun, true, true, false },
        { mbDiscAuto, mbDiscAuto, mbDiscVideo, ToRun, true, true, true },
        { mbMainMenu, mbDiscAuto, mbFM, ToRun, true, true, true },
    };
    for (const auto& each : cases)
    {
        auto input = ScheduleUnit().describe({ each.page, each.action, true });
        input.frontShow = each.front;
        input.normalSource = each.source;
        input.bluetoothSetting = each.bluetooth;
        input.pandoraSetting = each.pandora;
        EXPECT_EQ(Scheduler::showAllowed(input), each.allowed)
            << pageName(each.page) << ' ' << actionName(static_cast<int>(each.action)) << " over "
            << pageName(each.front);
        input.request.autoSwitch = false;
        EXPECT_TRUE(Scheduler::showAllowed(input)) << "the user may always";
    }
}

// The user switches Bluetooth off in the settings; the source that follows must not close them.
TEST(Scheduler, ASourceThatMayNotComeToTheFrontPlaysBehindIt)
{
    ScheduleUnit unit;
    unit.run(mbBTAudio).run(mbSetup).bluetooth(false).run(mbFM, true);
    EXPECT_THAT(unit.orders(), ElementsAre("ToStop mbBTAudio exit(mbFM)", "ToRun mbFM enter"));
    EXPECT_EQ(unit.states(mbFM), (PageStates { notShown, PageStates::playing, PageStates::held, PageStates::notHeld }));
    EXPECT_THAT(unit.onTop(), ElementsAre(mbSetup));

    // Asking for the settings themselves in that moment leaves their number alone while the page below moves up.
    ScheduleUnit twice;
    twice.run(mbBTAudio).run(mbSetup).bluetooth(false).run(mbSetup, true);
    EXPECT_THAT(twice.onTop(), ElementsAre(mbBTAudio, mbSetup));
}
