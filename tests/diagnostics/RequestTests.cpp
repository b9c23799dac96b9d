#include "diagnostics/Sentences.h"
#include "support/StateFixture.h"

#include <gmock/gmock.h>

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using Diagnostics::becauseOf;
using Status = RequestRecord::Status;
using testing::HasSubstr;

namespace
{

class RequestLogTest : public StateFixture
{
protected:
    RequestRecord last() { return states.getRequests().back(); }
};

} // namespace

TEST_F(RequestLogTest, ARequestIsFollowedFromItsAskerToItsEnd)
{
    enterNormalRun();
    request(mbFM, AppAction::ToRun);
    EXPECT_EQ(last().status, Status::switching);
    EXPECT_FALSE(last().isOver());
    EXPECT_EQ(last().missingPage(), mbAVOff);

    request(mbAM, AppAction::ToRun);
    EXPECT_EQ(last().status, Status::waiting);
    EXPECT_THAT(becauseOf(last()), HasSubstr("Another request"));

    answer(mbAVOff);
    answer(mbFM);
    const auto first = states.getRequests()[states.getRequests().size() - 2];
    EXPECT_EQ(first.status, Status::done);
    EXPECT_EQ(first.missingPage(), NUM_OF_PAGES);
    ASSERT_TRUE(first.scheduled && first.ordered && first.finished);
    EXPECT_TRUE(first.asked <= *first.scheduled && *first.scheduled <= *first.ordered &&
                *first.ordered <= *first.finished);
    EXPECT_EQ(last().status, Status::switching) << "its turn has come";
    EXPECT_EQ(last().number, first.number + 1);
}

TEST_F(RequestLogTest, ARefusalSaysWhy)
{
    request(mbFM, AppAction::ToRun);
    EXPECT_EQ(last().status, Status::refused);
    EXPECT_THAT(becauseOf(last()), HasSubstr("kBooting"));
    enterNormalRun();
    request(mbFM, AppAction::ToStop);
    EXPECT_THAT(becauseOf(last()), HasSubstr("did not run"));
    request(mbDVBT, AppAction::ToRun);
    EXPECT_EQ(last().status, Status::failed);
    EXPECT_THAT(becauseOf(last()), HasSubstr("serves"));
    request(mbFM, AppAction::None);
    EXPECT_THAT(becauseOf(last()), HasSubstr("already"));
}

TEST_F(RequestLogTest, AFailureNamesThePageThatIsMissing)
{
    enterNormalRun();
    request(mbFM, AppAction::ToRun);
    states.expire(SystemStateManager::timerId);
    run();
    EXPECT_EQ(last().status, Status::failed);
    EXPECT_THAT(becauseOf(last()), HasSubstr("mbAVOff"));
    EXPECT_THAT(becauseOf(last()), HasSubstr("within 3 s"));

    request(mbAM, AppAction::ToRun);
    send(Kernel::systemStateManagerId, Kernel::MSG_POWER_OFF);
    EXPECT_TRUE(last().isOver());
    EXPECT_THAT(becauseOf(last()), HasSubstr("switching off"));
}

TEST_F(RequestLogTest, KeepsTheLastSixtyFour)
{
    for (int i = 0; i < 70; ++i)
        request(mbFM, AppAction::ToRun);
    const auto all = states.getRequests();
    EXPECT_EQ(all.size(), RequestLog::capacity);
    EXPECT_EQ(all.back().number, all.front().number + RequestLog::capacity - 1);
}
