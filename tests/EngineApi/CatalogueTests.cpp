#include "EngineApi/Catalogue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace EngineApi;
using namespace Pubhead;

TEST(Catalogue, NamesEndWhereTheEnumerationsEnd)
{
    for (const char* name :
         { sourceName(NUM_OF_SOURCES + 1), Dsp::audioChannelName(Dsp::noAudioChannel), videoChannelName(noVideoChannel),
           actionName(6), switchTypeName(5), sourceName(-1), pageName(NUM_OF_PAGES + 1) })
        EXPECT_STREQ(name, "");
}

TEST(Catalogue, PagesAreWhatTheSchedulerTakesThemFor)
{
    int registered = 0;
    std::vector<int> rear, silent;
    for (int page = -1; page <= NUM_OF_PAGES + 1; ++page)
    {
        const auto* config = pageScheduleConfig(page);
        if (config == nullptr)
            continue;
        ++registered;
        SCOPED_TRACE(pageName(page));
        EXPECT_EQ(config->page, page);
        EXPECT_NE(config->ownerId, Kernel::noComponent);
        EXPECT_FALSE(config->isNormalSource && config->isRear);
        EXPECT_TRUE(config->isSourcePage || !(config->isNormalSource || config->isRear));
        EXPECT_EQ(config->isSourcePage, config->source != NUM_OF_SOURCES);
        EXPECT_EQ(config->initialStates, PageStates {});
        EXPECT_STRNE(Dsp::audioChannelName(config->audioChannel), "");
        EXPECT_STRNE(videoChannelName(config->videoChannel), "");
        EXPECT_STRNE(appTypeName(config->appType), "");
        if (config->isRear)
            rear.push_back(page);
        if (config->playLevel == PageScheduleConfig::noCompetition)
            silent.push_back(page);
    }
    EXPECT_EQ(registered, 23);
    EXPECT_THAT(rear, testing::ElementsAre(mbRearAV1, mbRearAV2, mbReariPod));
    EXPECT_THAT(silent, testing::ElementsAre(mbCamera, mbMainMenu, mbSetup, mbStandby, mbAntitheft, mbEQ));
    EXPECT_EQ(pageScheduleConfig(mbSirius)->audioChannel, Dsp::eAudioXM);
}
