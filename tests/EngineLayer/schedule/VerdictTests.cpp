#include "ScheduleUnit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

/** "silences mbFM mbAM 21 20": the rule, the page, the other one and their levels. */
std::string text(const Verdict& verdict)
{
    constexpr std::array rules { "onTop",      "behind",   "notRaised",  "neverShown",    "uncovered",
                                 "plays",      "silences", "silencedBy", "outplayed",     "mixes",
                                 "neverPlays", "heir",     "displaced",  "startedInstead" };
    std::string line = std::string(rules[static_cast<std::size_t>(verdict.rule)]) + " " + pageName(verdict.page);
    if (verdict.other != NUM_OF_PAGES && verdict.other != verdict.page)
        line += std::string(" ") + pageName(verdict.other);
    if (verdict.level != 0 || verdict.otherLevel != 0)
        line += " " + std::to_string(verdict.level) + " " + std::to_string(verdict.otherLevel);
    return line;
}

std::vector<std::string> verdicts(const ScheduleUnit& unit)
{
    std::vector<std::string> texts;
    for (const auto& each : unit.remembered().verdicts)
        texts.push_back(text(each));
    return texts;
}

PageScheduleConfig levels(int page, std::int32_t show, std::int32_t play)
{
    PageScheduleConfig config;
    config.page = page;
    config.showLevel = show;
    config.playLevel = config.audioLevel = play;
    return config;
}

} // namespace

// Whoever asks has one level more for this once; a page of a higher level stays in front of it.
TEST(Verdict, SaysWhoIsOnTopOfWhomAndWhoStaysBehind)
{
    ScheduleUnit unit;
    unit.run(mbFM);
    EXPECT_THAT(verdicts(unit), ElementsAre("onTop mbFM 21 21", "plays mbFM 21 21"));
    unit.show(mbEQ);
    EXPECT_THAT(verdicts(unit), ElementsAre("onTop mbEQ mbFM 21 20"));
    unit.hide(mbEQ);
    EXPECT_THAT(verdicts(unit), ElementsAre("uncovered mbFM mbEQ 20 20"));

    unit.add(levels(mbThirdPart, 30, PageScheduleConfig::noCompetition));
    unit.show(mbThirdPart).show(mbEQ);
    EXPECT_THAT(verdicts(unit), ElementsAre("behind mbEQ mbThirdPart 21 30"));
    unit.stop(mbThirdPart);
    EXPECT_THAT(verdicts(unit), ElementsAre("uncovered mbEQ mbThirdPart 20 30"));

    unit.add(levels(mbTuner, PageScheduleConfig::noCompetition, PageScheduleConfig::noCompetition));
    unit.run(mbTuner);
    EXPECT_THAT(verdicts(unit), ElementsAre("neverShown mbTuner", "neverPlays mbTuner"));
}

TEST(Verdict, SaysWhoPlaysInPlaceOfWhom)
{
    ScheduleUnit unit;
    unit.run(mbFM).call(true).run(mbBTPhone);
    EXPECT_THAT(verdicts(unit), ElementsAre("onTop mbBTPhone mbFM 21 20", "silences mbBTPhone mbFM 61 20",
                                            "silencedBy mbFM mbBTPhone 20 61"));
    unit.play(mbFM);
    EXPECT_THAT(verdicts(unit), ElementsAre("outplayed mbFM mbBTPhone 21 60"));
    unit.stop(mbBTPhone);
    EXPECT_THAT(verdicts(unit), ElementsAre("heir mbFM mbBTPhone 20 60", "uncovered mbFM mbBTPhone 20 20"));

    unit.add(levels(mbNavi, 20, 40));
    unit.play(mbNavi);
    EXPECT_THAT(verdicts(unit), ElementsAre("mixes mbNavi mbFM 41 20"));
}

TEST(Verdict, SaysWhichSourceGivesItsPlaceUp)
{
    ScheduleUnit unit;
    unit.run(mbFM).run(mbUSBAudio);
    EXPECT_THAT(verdicts(unit), testing::Contains("displaced mbFM mbUSBAudio"));
    unit.run(mbRearAV1).run(mbRearAV2);
    EXPECT_THAT(verdicts(unit), testing::Contains("displaced mbRearAV1 mbRearAV2"));
    unit.show(mbMainMenu).stop(mbUSBAudio);
    EXPECT_THAT(verdicts(unit), testing::Contains("startedInstead mbAVOff mbUSBAudio"));
}

// What the unit itself asks for plays, and leaves the setup screen in front; the same from a person comes to the front.
TEST(Verdict, SaysWhatTheUnitItselfDoesNotPushAway)
{
    ScheduleUnit unit;
    unit.run(mbBTAudio).show(mbSetup).bluetooth(false).run(mbFM, true);
    EXPECT_THAT(verdicts(unit), testing::Contains("notRaised mbFM mbSetup"));
    EXPECT_THAT(verdicts(unit), testing::Not(testing::Contains(testing::StartsWith("onTop"))));
    unit.run(mbBTAudio).show(mbSetup).run(mbFM);
    EXPECT_THAT(verdicts(unit), testing::Contains("onTop mbFM mbSetup 21 20"));

    ScheduleUnit withNavigation;
    withNavigation.add(levels(mbNavi, 20, 40));
    withNavigation.run(mbFM).show(mbNavi).run(mbUSBAudio, true);
    EXPECT_THAT(verdicts(withNavigation), testing::Contains("notRaised mbUSBAudio mbNavi"));

    withNavigation.request({ mbEQ, AppAction::None, false });
    EXPECT_THAT(verdicts(withNavigation), IsEmpty()) << "they are those of one schedule";
}
