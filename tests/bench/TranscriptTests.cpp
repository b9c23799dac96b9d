#include "bench/console/Transcript.h"

#include "platform/Pubhead.h"

#include <gtest/gtest.h>

namespace
{

using namespace Bench;

std::vector<Event> eventsOf(std::initializer_list<std::pair<const char*, const char*>> list)
{
    std::vector<Event> events;
    for (const auto& [stream, text] : list)
        events.push_back({ events.size(), {}, stream, text });
    return events;
}

const auto run = eventsOf({ { "engine", "started" },
                            { "frame EVENT_GET_LAST_MEMORY", "" },
                            { "frame EVENT_HEAT_BEAT", "00" },
                            { "frame EVENT_GET_LAST_MEMORY", "" },
                            { "sent EVENT_SRC_SWITCH", "01 00" },
                            { "program AppRadio", "running" },
                            { "program AppRadio", "started with {}" },
                            { "frame EVENT_KEY", "00 07 00" },
                            { "program AppRadio", "command-line sourceEnter mbFM onTop" },
                            { "frame EVENT_KEY", "00 07 00" },
                            { "program AppRadio", "connected" },
                            { "frame EVENT_AUTOTEST_INFO", "aa ee 00 07 82 02 23" },
                            { "frame EVENT_DEVICE_STATUS", "00 10" },
                            { "page mbEQ", "shown" },
                            { "page mbFM", "shown" },
                            { "front", "mbFM" },
                            { "program AppRadio", "did key 3" },
                            { "program AppRadio", "key next" },
                            { "frame EVENT_AUTOTEST_INFO", "aa ee 01 07 82 02 24" },
                            { "program AppRadio", "refused 1" },
                            { "page mbFM", "hidden" },
                            { "page mbAM", "shown" },
                            { "program AppEQ", "gone" },
                            { "program ?", "sent a packet that is no event" } });

constexpr const char* whole = "# to the microcontroller\n"
                              "EVENT_AUTOTEST_INFO aa ee 01 07 82 02 24\n"
                              "EVENT_DEVICE_STATUS 00 10\n"
                              "EVENT_GET_LAST_MEMORY\n"
                              "EVENT_KEY 00 07 00\n"
                              "EVENT_KEY 00 07 00\n"
                              "# to AppRadio\n"
                              "command-line sourceEnter mbFM onTop\n"
                              "key next\n"
                              "# pages of AppRadio\n"
                              "mbFM shown\n"
                              "mbFM hidden\n"
                              "mbAM shown\n"
                              "# pages of AppEQ\n"
                              "mbEQ shown\n";

TEST(Transcript, holdsWhatTheUnitSentAndNotWhatAClockOrAProgramDid)
{
    EXPECT_EQ(composeTranscript(run, TranscriptSections::all()), whole);
    EXPECT_EQ(composeTranscript(run, { false, false, { Pubhead::AppEQ, Pubhead::AppUSB } }),
              "# pages of AppEQ\nmbEQ shown\n");
}

TEST(Transcript, namesTheFirstLineThatDiffers)
{
    struct Case
    {
        const char* story;
        const char* kept;
        const char* seen;
        const char* difference;
    };
    const Case cases[] = {
        { "the same", "a\nb\n", "a\nb\n", "" },
        { "another line, with what is around it", "a\nb\nc\nd\nold\ne\nf\ng\n", "a\nb\nc\nd\nnew\ne\n",
          "line 5, - kept, + seen:\n    b\n    c\n    d\n  - old\n  - e\n  - f\n  + new\n  + e" },
        { "less than before", "a\nb\n", "a\n", "line 2, - kept, + seen:\n    a\n  - b" },
        { "a file that was only begun", "", "a\n", "line 1, - kept, + seen:\n  + a" },
    };
    for (const auto& each : cases)
        EXPECT_EQ(transcriptDifference(each.kept, each.seen), each.difference) << each.story;
}

} // namespace
