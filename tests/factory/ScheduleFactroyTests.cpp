#include "factory/ScheduleFactroy.h"

#include "support/FakePageHandler.h"

#include <gtest/gtest.h>
#include <set>

using namespace Pubhead;

namespace
{

class ScheduleFactroyTest : public testing::Test
{
protected:
    ~ScheduleFactroyTest() override { juce::DeletedAtShutdown::deleteAll(); }

    static Factory::ScheduleFactroy& policy() { return *Factory::ScheduleFactroy::getInstance(); }
};

} // namespace

TEST_F(ScheduleFactroyTest, McuSourcesAndPagesNameEachOther)
{
    std::set<std::pair<int, int>> named;
    for (int page = 0; page <= NUM_OF_PAGES; ++page)
    {
        const auto source = policy().mcuSourceForPage(page);
        if (source == std::pair { 0, 0 } && page != mbAM)
            continue;
        EXPECT_TRUE(named.insert(source).second) << pageName(page);
        EXPECT_EQ(policy().pageForMcuSource(source.first, source.second), page) << pageName(page);
    }
    EXPECT_EQ(named.size(), 18u) << "eleven sources and seven further USB pages";
    EXPECT_EQ(policy().mcuSourceForPage(mbAuxin1), (std::pair { 0, 0 }));
    EXPECT_EQ(policy().mcuSourceForPage(mbUSBAudio4), (std::pair { 10, 3 }));
}

TEST_F(ScheduleFactroyTest, EveryCodeOfTheMcuLeadsToAPage)
{
    struct Case
    {
        int type, number, page;
    };
    constexpr Case cases[] { { 10, 8, mbUSBAudio }, { 10, -1, mbUSBAudio }, { 30, 0, mbFM },         { 3, 0, mbFM },
                             { -1, 0, mbFM },       { 0, 9, mbAM },         { 21, 5, mbiPodPandora } };
    for (const auto& each : cases)
        EXPECT_EQ(policy().pageForMcuSource(each.type, each.number), each.page) << each.type << ", " << each.number;
}

TEST_F(ScheduleFactroyTest, PagesOutsideTheEnumerationBecomeNone)
{
    for (const int bad : { -1, 56, 1000 })
    {
        EXPECT_FALSE(policy().isValidPage(bad));
        EXPECT_EQ(policy().validPage(bad), NUM_OF_PAGES);
    }
    for (const int good : { 0, 54, 55 })
        EXPECT_EQ(policy().validPage(good), good);
    EXPECT_TRUE(policy().isTunerPage(mbTuner) && policy().isTunerPage(mbHDRadioISR));
    EXPECT_FALSE(policy().isTunerPage(-1) || policy().isTunerPage(mbDiscAudio) || policy().isTunerPage(mbFM));
}

TEST_F(ScheduleFactroyTest, AnUnusablePageBecomesItsFallback)
{
    const FakePageHandler::Ptr fm = new FakePageHandler(mbFM), rear = new FakePageHandler(mbRearAV1);
    EngineApi::registerHandler(fm.get());
    EngineApi::registerHandler(rear.get());
    EXPECT_EQ(policy().checkNormalSource(mbFM), mbFM);
    EXPECT_EQ(policy().checkRearPage(mbRearAV1), mbRearAV1);
    EXPECT_EQ(policy().checkNormalSource(mbRearAV1), mbAVOff) << "not a normal source";
    EXPECT_EQ(policy().checkNormalSource(mbUSBAudio), mbAVOff) << "not registered";
    EXPECT_EQ(policy().checkRearPage(mbFM), mbRearOff);
    fm->available = rear->available = false;
    EXPECT_EQ(policy().checkNormalSource(mbFM), mbAVOff);
    EXPECT_EQ(policy().checkRearPage(mbRearAV1), mbRearOff);
    EngineApi::unregisterHandler(fm.get());
    EngineApi::unregisterHandler(rear.get());
}
