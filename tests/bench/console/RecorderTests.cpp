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
    EXPECT_EQ(composeScenario("mbFM", begin, said, events),
              "# What a person did, as `record` wrote it: `replay` does it again.\n"
              "expect page mbFM in-front\n"
              "mark\n"
              "wait 500ms\n"
              "mcu source aux\n"
              "expect mcu source aux\n"
              "expect page mbAuxin2 shown\n"
              "wait 1470ms\n"
              "touch 150 468\n"
              "expect mcu source 30 1\n");
    const auto recording = composeScenario("mbFM", begin, said, events);
    EXPECT_TRUE(isRecording(recording));
    EXPECT_EQ(differenceFrom(recording, events), "");
    EXPECT_EQ(differenceFrom(recording, std::span(events).first(2)), "") << "the rest may still come";
    auto others = events;
    others.insert(others.begin(), { 0, begin, "page mbEQ", "shown" });
    EXPECT_EQ(differenceFrom(recording, others), "page mbEQ shown, where the recording has page mbAuxin2 shown");
    EXPECT_EQ(differenceFrom(recording, std::vector<Event> { events[1], events[1] }),
              "page mbAuxin2 shown, where the recording has nothing any more");
    EXPECT_EQ(composeScenario("none", begin, {}, {}).find("in-front"), std::string::npos);
}

} // namespace
