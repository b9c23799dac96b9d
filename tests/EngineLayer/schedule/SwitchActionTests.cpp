#include "EngineLayer/schedule/SwitchAction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

SwitchAction::Ptr actionOf(std::initializer_list<std::pair<int, SwitchType>> orders)
{
    SwitchAction::Ptr action = new SwitchAction();
    for (const auto& [page, type] : orders)
    {
        AppStateSwitch::Ptr order = new AppStateSwitch();
        order->page = page;
        order->switchType = type;
        action->orders.push_back(order);
    }
    return action;
}

std::vector<int> pagesOf(const SwitchAction::Orders& orders)
{
    std::vector<int> pages;
    for (const auto& order : orders)
        pages.push_back(order->page);
    return pages;
}

} // namespace

TEST(SwitchAction, StopsAndChangesGoFirstTheRestAfterTheFirstReport)
{
    const auto action = actionOf({ { mbUSBAudio, SwitchType::ToStop },
                                   { mbMainMenu, SwitchType::ToChange },
                                   { mbSetup, SwitchType::ToShowTopLevel },
                                   { mbFM, SwitchType::ToRun } });
    EXPECT_THAT(pagesOf(action->sendNext()), ElementsAre(mbUSBAudio, mbMainMenu));
    EXPECT_FALSE(action->allSent());
    action->markPage(mbFM, false);
    EXPECT_EQ(action->orders[3]->progress, OrderProgress::notSent) << "a report that nobody asked for";
    action->markPage(mbUSBAudio, true);
    EXPECT_THAT(pagesOf(action->sendNext()), ElementsAre(mbSetup, mbFM));
    EXPECT_TRUE(action->allSent());
    EXPECT_THAT(action->sendNext(), IsEmpty());

    for (const int page : { mbMainMenu, mbSetup })
        action->markPage(page, true);
    EXPECT_FALSE(action->allFinished());
    action->markPage(mbFM, true);
    EXPECT_TRUE(action->allFinished() && action->allSucceeded());
}

TEST(SwitchAction, AResourceSwitchIsAwaitedOnlyWhenThereIsOne)
{
    const auto action = actionOf({});
    EXPECT_TRUE(action->allSent() && action->allFinished() && action->allSucceeded());
    EXPECT_FALSE(action->hasAction());

    action->resourceSwitch = new AppResourceSwitch();
    EXPECT_TRUE(action->hasAction());
    EXPECT_FALSE(action->allSent() || action->allFinished() || action->allSucceeded());
    action->markPage(NUM_OF_PAGES, true);
    EXPECT_FALSE(action->allFinished()) << "it was not sent";
    action->resourceSwitch->progress = OrderProgress::sent;
    action->markPage(NUM_OF_PAGES, true);
    EXPECT_TRUE(action->allFinished() && action->allSucceeded());
}
