#include "ScheduleUnit.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <set>

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;

/** Random days of a unit. A scenario that breaks a property prints itself as the bench's console takes it. */
namespace
{

/** The faults that were found here took some hundred scenarios to show; a run may ask for another number. */
[[maybe_unused]] const int numberOfScenarios = setenv("RC_PARAMS", "max_success=1000", 0);

struct Scenario
{
    std::vector<Step> steps;
};

void showValue(const Scenario& scenario, std::ostream& out)
{
    for (const auto& step : scenario.steps)
        out << '\n' << step;
}

/** Requests for every registered page and for one that nobody registered, now and then a call or a setting. */
rc::Gen<Scenario> anyScenario()
{
    std::vector<std::int32_t> pages { mbDiscAudio };
    for (int page = 0; page < NUM_OF_PAGES; ++page)
        if (pageScheduleConfig(page) != nullptr)
            pages.push_back(page);
    const auto action =
        rc::gen::element(AppAction::ToRun, AppAction::ToPlay, AppAction::ToShow, AppAction::ToHide, AppAction::ToStop);
    const auto request = rc::gen::construct<RequestInfo>(rc::gen::elementOf(pages), action, rc::gen::arbitrary<bool>());
    const auto step = rc::gen::construct<Step>(
        rc::gen::weightedElement<Step::Kind>({ { 20, Step::request }, { 2, Step::call }, { 1, Step::bluetooth } }),
        request, rc::gen::arbitrary<bool>());
    return rc::gen::construct<Scenario>(rc::gen::container<std::vector<Step>>(step));
}

/**
    The one way to two pages on top: the system asks for the page that is on top and may not raise it (setup, after the
    user has switched off what plays). The page keeps its number and the page below it moves up beside it.
*/
bool raisesBesideTop(const ScheduleUnit& unit, const Step& step)
{
    const auto& info = step.info;
    return step.kind == Step::request && unit.runs(info.page) && unit.states(info.page).showState == 1 &&
           (info.action == AppAction::ToRun || info.action == AppAction::ToShow) &&
           !Scheduler::showAllowed(unit.describe(info));
}

/**
    What page handlers let through: a page that does not run is run, not shown, and leaving a source is entering "off".
*/
Step throughHandler(const ScheduleUnit& unit, Step step)
{
    auto& info = step.info;
    if (!unit.runs(info.page) && (info.action == AppAction::ToShow || info.action == AppAction::ToHide))
        info.action = AppAction::ToRun;
    if (info.action == AppAction::ToStop && info.page == unit.remembered().lastNormalSource)
        info = { mbAVOff, AppAction::ToRun, info.autoSwitch };
    return step;
}

void expectOnePageOnTop(const ScheduleUnit& unit)
{
    const auto top = unit.onTop();
    RC_ASSERT(top.size() <= 1u);
    if (!top.empty())
        RC_ASSERT(top.front() == unit.remembered().frontShowPage);
}

void expectUsersWish(const ScheduleUnit& unit, const Step& step)
{
    const auto& info = step.info;
    if (step.kind != Step::request || info.autoSwitch || pageScheduleConfig(info.page) == nullptr)
        return;
    if (info.action == AppAction::ToRun || info.action == AppAction::ToShow)
        RC_ASSERT(unit.states(info.page).showState == 1);
    if (info.action == AppAction::ToHide)
        RC_ASSERT(unit.states(info.page).showState == PageStates::notShown);
}

void expectOneFrontPageHeard(const ScheduleUnit& unit)
{
    if (unit.sentOrders().empty())
        return; // a call that has come or gone counts from the next schedule on
    // Once its call is over the phone competes with nobody, even if it plays on; nor does "off", which plays nothing
    // aloud: a source that is stopped during a call leaves it behind the menu.
    const auto front = [&](auto condition)
    {
        return [&unit, condition](const ScheduleInfo& info) {
            return !info.isRear && info.page != mbAVOff && (info.page != mbBTPhone || unit.isCalling()) &&
                   condition(info);
        };
    };
    const auto playing =
        unit.running(front([](const ScheduleInfo& info) { return info.states.playState != PageStates::stopped; }));
    RC_ASSERT(playing ==
              unit.running(front([](const ScheduleInfo& info) { return info.states.audioState == PageStates::held; })));
    RC_ASSERT(playing.size() <= 1u);
}

/** It may lie behind a page that does without the video: the phone, a menu. */
void expectOneFrontPageWithVideo(const ScheduleUnit& unit)
{
    const auto seen = unit.running([](const ScheduleInfo& info)
                                   { return !info.isRear && info.states.videoState == PageStates::held; });
    RC_ASSERT(seen.size() <= 1u);
    for (const int page : seen)
        RC_ASSERT(unit.states(page).showState != PageStates::notShown);
}

/** Each page gets one order, what ends before what begins, and what then runs is what the tables say. */
void expectOrdersToLeadToTheTables(const ScheduleUnit& unit, const Step& step)
{
    if (unit.sentOrders().empty())
        return;
    std::set<int> ordered;
    bool started = false;
    for (const auto& order : unit.sentOrders())
    {
        RC_ASSERT(pageScheduleConfig(order->page) != nullptr);
        RC_ASSERT(ordered.insert(order->page).second);
        const bool starts = order->switchType == SwitchType::ToRun || order->switchType == SwitchType::ToShowTopLevel;
        RC_ASSERT((starts || !started));
        started = starts;
    }
    const auto& tables = unit.remembered();
    auto next = tables.nextFront;
    if (tables.nextRear != nullptr)
        next.push_back(tables.nextRear);
    std::set<int> left;
    for (const auto& info : next)
    {
        RC_ASSERT(unit.runs(info->page));
        RC_ASSERT((unit.states(info->page) == info->states));
        RC_ASSERT(info->states.showState >= 1);
        RC_ASSERT(info->states.showState <= PageStates::notShown);
        left.insert(info->page);
    }
    const auto running = unit.running([](const ScheduleInfo&) { return true; });
    RC_ASSERT((left == std::set<int>(running.begin(), running.end())));
    if (step.kind == Step::request && step.info.action == AppAction::ToStop && step.info.page != mbAVOff)
        RC_ASSERT(!unit.runs(step.info.page));
}

std::vector<int> rearPages(const ScheduleUnit& unit)
{
    return unit.running([](const ScheduleInfo& info) { return info.isRear; });
}

} // namespace

TEST(SchedulerProperties, HoldAfterEveryStep)
{
    EXPECT_TRUE(rc::check("after every step",
                          []
                          {
                              const auto scenario = *anyScenario();
                              ScheduleUnit unit;
                              bool twoOnTop = false;
                              for (const auto& step : scenario.steps)
                              {
                                  twoOnTop = twoOnTop || raisesBesideTop(unit, step);
                                  unit.apply(step);
                                  if (!twoOnTop)
                                      expectOnePageOnTop(unit);
                                  expectUsersWish(unit, step);
                                  expectOneFrontPageHeard(unit);
                                  expectOneFrontPageWithVideo(unit);
                                  RC_ASSERT(rearPages(unit).size() <= 1u);
                                  expectOrdersToLeadToTheTables(unit, step);
                              }
                          }));
}

TEST(SchedulerProperties, BehindHandlersTheRememberedPagesAreThoseThatRun)
{
    EXPECT_TRUE(rc::check("remembered pages",
                          []
                          {
                              const auto scenario = *anyScenario();
                              ScheduleUnit unit;
                              for (const auto& step : scenario.steps)
                              {
                                  unit.apply(throughHandler(unit, step));
                                  const auto sources =
                                      unit.running([](const ScheduleInfo& info) { return info.isNormalSource; });
                                  RC_ASSERT(sources.size() <= 1u);
                                  // "Off" also starts unremembered: behind the menu, when no source is left.
                                  if (!sources.empty() && sources.front() != mbAVOff)
                                      RC_ASSERT(sources.front() == unit.remembered().lastNormalSource);
                                  if (const auto rear = rearPages(unit); !rear.empty())
                                      RC_ASSERT(rear.front() == unit.remembered().rearPage);
                              }
                          }));
}
