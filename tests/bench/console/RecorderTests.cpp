#include "bench/console/Recorder.h"

#include <gtest/gtest.h>

namespace
{

using namespace Bench;
using namespace std::chrono_literals;

// Two lines and what came of them: each event is expected between the lines where it was seen, the waits are those between what was seen
// and the next line, and what a scenario does not mind is left out.
TEST(Recorder, WritesLinesTimesAndWhatCameOfThem)
{
    const auto begin = Clock::time_point() + 1h;
    const std::vector<SaidLine> said { { begin + 500ms, "mcu source aux" }, { begin + 2s, "touch 150 468" } };
    const std::vector<Event> events {
        { 1, begin + 520ms, "mcu source", "aux" },        { 2, begin + 530ms, "page mbAuxin2", "shown" },
        { 3, begin + 531ms, "page mbFM", "hidden" },      { 4, begin + 1s, "frame EVENT_HEAT_BEAT", "" },
        { 5, begin + 2100ms, "mcu source", "type 30 1" },
    };
    EXPECT_EQ(
        composeScenario("mbFM", begin, said, events, begin + 3s),
        "# What a person did, as `record` wrote it: `replay` does it again, and no other page or source may come.\n"
        "expect page mbFM in-front\n"
        "mark\n"
        "wait 500ms\n"
        "mcu source aux\n"
        "expect mcu source aux\n"
        "expect page mbAuxin2 shown\n"
        "wait 1470ms\n"
        "touch 150 468\n"
        "expect mcu source 30 1\n"
        "wait 900ms\n");
    EXPECT_EQ(composeScenario("none", begin, {}, {}, begin).find("in-front"), std::string::npos);
}

// A recording that is done again must bring the same pages and the same sources: another one, one between, one too many is a difference;
// that one kind comes before the other, or the same page again, is none. A scenario that a person wrote may bring what it does not name.
TEST(Recorder, FindsAPageOrSourceThatWasNotRecorded)
{
    const Event menu { 1, {}, "page mbMainMenu", "shown" }, aux { 2, {}, "page mbAuxin2", "shown" },
        eq { 3, {}, "page mbEQ", "shown" }, toAux { 4, {}, "mcu source", "aux" },
        hidden { 5, {}, "page mbFM", "hidden" };
    const auto recording = composeScenario("mbFM", {}, {}, std::vector { menu, menu, aux, toAux }, {});
    const auto follow = [&](const std::vector<Event>& events)
    {
        auto changes = RecordedChanges::of(recording).value();
        std::string difference;
        for (const auto& event : events)
            difference = difference.empty() ? changes.follow(event) : difference;
        return difference;
    };
    EXPECT_EQ(follow({ menu, aux, toAux }), "");
    EXPECT_EQ(follow({ toAux, hidden, menu, menu, aux, aux }), "");
    EXPECT_EQ(follow({ aux }), "page mbAuxin2 shown came, where the recording has page mbMainMenu shown");
    EXPECT_EQ(follow({ menu, eq }), "page mbEQ shown came, where the recording has page mbAuxin2 shown");
    EXPECT_EQ(follow({ menu, aux, eq }), "page mbEQ shown came, where the recording has nothing more");
    EXPECT_EQ(follow({ toAux, { 6, {}, "mcu source", "fm" } }),
              "mcu source fm came, where the recording has nothing more");
    EXPECT_FALSE(RecordedChanges::of("expect page mbAuxin2 shown\n"));
}

} // namespace
