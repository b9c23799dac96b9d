#include "EngineApi/Catalogue.h"
#include "EngineLayer/schedule/ConflictRules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace EngineApi;
using namespace EngineLayer;
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

namespace
{

struct Case
{
    ScheduleInfo page, other;
    int pageState, otherState;
};

ScheduleInfo page(std::int32_t level, bool rear = false, std::int32_t channel = Dsp::eAudioWince)
{
    ScheduleInfo info;
    info.playLevel = info.audioLevel = level;
    info.isRear = rear;
    info.audioChannel = channel;
    return info;
}

} // namespace

TEST(ConflictRules, Play)
{
    constexpr int plays = PageStates::playing, mixes = PageStates::mixed, silent = PageStates::stopped;
    const Case cases[] {
        { page(21), page(20), plays, silent },
        { page(20), page(20), silent, plays },
        { page(39), page(20), plays, silent },
        { page(40), page(20), mixes, mixes },
        { page(49), page(20), mixes, mixes },
        { page(50), page(20), plays, silent },
        { page(21), page(40), mixes, mixes },
        { page(21), page(41), silent, plays },
        { page(20, true), page(20, true), plays, silent },
        { page(20, true), page(21, true), silent, plays },
        { page(60, true), page(20), silent, plays },
    };
    for (auto each : cases)
    {
        each.other.states.playState = plays;
        applyPlayRule(each.page, each.other);
        SCOPED_TRACE(std::to_string(each.page.playLevel) + " against " + std::to_string(each.other.playLevel));
        EXPECT_EQ(each.page.states.playState, each.pageState);
        EXPECT_EQ(each.other.states.playState, each.otherState);
    }
}

TEST(ConflictRules, AudioAcrossTheZonesIsAboutTheChannel)
{
    constexpr int held = PageStates::held, lost = PageStates::notHeld;
    const Case cases[] {
        { page(20), page(20, true, Dsp::eAudioAux1), held, held },
        { page(21), page(20, true), held, lost },
        { page(20), page(20, true), lost, held },
        { page(20, false, Dsp::noAudioChannel), page(20, true, Dsp::noAudioChannel), held, held },
        { page(20), page(30), held, lost },
        { page(30, true), page(20, true), lost, held },
    };
    for (auto each : cases)
    {
        each.page.states.playState = PageStates::playing;
        each.other.states.audioState = held;
        applyAudioRule(each.page, each.other);
        EXPECT_EQ(each.page.states.audioState, each.pageState);
        EXPECT_EQ(each.other.states.audioState, each.otherState);
    }
}

TEST(ConflictRules, VideoConflictsOnlyInTheFrontZone)
{
    for (const auto& [rear, otherRear, mine, theirs] :
         { std::tuple { false, false, 1, 2 }, { true, false, 1, 1 }, { false, true, 1, 1 }, { true, true, 2, 1 } })
    {
        auto wants = page(20, rear), has = page(20, otherRear);
        has.states.videoState = PageStates::held;
        applyVideoRule(wants, has);
        EXPECT_EQ(wants.states.videoState, mine);
        EXPECT_EQ(has.states.videoState, theirs);
    }
}
