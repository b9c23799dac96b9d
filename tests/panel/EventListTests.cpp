#include "bench/panel/EventList.h"

#include <gtest/gtest.h>

namespace
{

using namespace Bench;
using namespace std::chrono_literals;
using BenchPanel::EventList;

/** What a journal would have given out. */
class EventListTest : public testing::Test
{
protected:
    void add(Clock::duration at, const std::string& stream, const std::string& text)
    {
        journal.add(stream, text, start + at);
        list.take(journal.find({}, 100, [](const Event&) { return true; }));
    }
    std::vector<std::string> words() const
    {
        std::vector<std::string> all;
        for (const auto& line : list.lines())
            all.push_back(BenchPanel::wordsOf(line.event));
        return all;
    }

    const Clock::time_point start = Clock::now() - 1min;
    Journal journal;
    EventList list;
};

using Words = std::vector<std::string>;

// A key and what comes of it: one line for each thing that a person would tell, in words, and no more of it.
TEST_F(EventListTest, TellsWhatHappensInWordsAndFoldsTheRest)
{
    add(0ms, saidStream, "mcu key volume-up");
    add(1ms, "sent IND_KEY", "00 0d");
    add(2ms, "log", "12:00:00 a key");
    add(3ms, "dsp write", "1 5 000000");
    add(4ms, "dsp", "speaker volume -23.0 dB");
    add(4ms, "dsp", "line volume -25.0 dB");
    add(4ms, "dsp", "output A -20.5 dB");
    add(5ms, "frame EVENT_PGN_SEND_CAN", "16 fe");
    add(5ms, "mfd zone 1", "volume 42 %");
    add(6ms, "remote display", "|                |Zone1 Vol.21    |");
    for (int i = 0; i < 14; ++i)
        add(1500ms * (i + 1), "frame EVENT_HEAT_BEAT", "00");
    add(30s, "page mbFM", "shown");
    add(30s, "sent EVENT_SRC_SWITCH", "05 00");
    EXPECT_EQ(words(),
              (Words { "> mcu key volume-up", "key volume-up", "speaker volume -23.0 dB, 2 more", "zone 1 volume 42 %",
                       "Zone1 Vol.21", "heartbeat × 14", "FM radio shown", "src switch aux" }));
    EXPECT_EQ(list.lines()[1].after, 1ms);

    list.want(*findSubject("mcu"), false);
    list.want(*findSubject("sound"), false);
    list.want(*findSubject("log"), true);
    EXPECT_EQ(words(), (Words { "> mcu key volume-up", "12:00:00 a key", "zone 1 volume 42 %", "Zone1 Vol.21",
                                "FM radio shown" }));
}

// A program's report comes late: it stands where it belongs, once, and what it came with is what was there then.
TEST_F(EventListTest, PutsALateReportInItsPlace)
{
    add(0ms, "frame EVENT_PGN_SEND_CAN", "16 fe");
    add(0ms, "mfd zone 1", "volume 42 %");
    add(10ms, "log", "near");
    add(30ms, "log", "farther");
    add(2s, "usb", "1 plugged");
    add(1s, "program AppRadio", "running");
    EXPECT_EQ(words(), (Words { "zone 1 volume 42 %", "AppRadio running", "usb 1 plugged" }));
    const auto lines = list.lines();
    const auto origin = list.originOf(lines[0].event);
    EXPECT_EQ(origin.frame, "EVENT_PGN_SEND_CAN  16 fe");
    EXPECT_EQ(origin.log, "near");
    EXPECT_EQ(list.originOf(lines[1].event).frame, "") << "nothing was on the link then";
}

} // namespace
