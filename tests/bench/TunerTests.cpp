#include "bench/Tuner.h"

#include <gtest/gtest.h>

using namespace Bench;

TEST(Tuner, SeeksAndStepsThroughItsBand)
{
    Tuner tuner;
    const struct
    {
        Bytes request;
        const char* text;
    } cases[] {
        { { 5, 0, 0x27, 0x7E }, "FM 101.10" },
        { { 3 }, "FM 104.70" }, // seek up
        { { 3 }, "FM 88.50" },  // and round
        { { 1 }, "FM 104.70" }, // seek down
        { { 4 }, "FM 104.90" }, // step up
        { { 2 }, "FM 104.70" },
        { { 5, 0, 0xFF, 0xFF }, "FM 107.90" },
        { { 4 }, "FM 87.50" },
        { { 7, 1 }, "FM 87.50" }, // Europe: finer steps
        { { 4 }, "FM 87.55" },
        { { 5, 1, 0x03, 0xE8 }, "AM 1000" },
        { { 1 }, "AM 999" },
        { { 4 }, "AM 1008" },
        { { 5, 2, 0, 9 }, "WX 7" },
        { { 3 }, "WX 3" },
        { { 5, 9, 1, 1 }, "WX 3" }, // no such band
        { { 5, 0 }, "WX 3" },       // cut short
        { {}, "WX 3" },
    };
    for (const auto& each : cases)
    {
        const auto reports = tuner.hear(15, each.request);
        EXPECT_EQ(tuner.text(), each.text) << hex(each.request);
        EXPECT_TRUE(reports.empty() || reports.front().data.size() == 5);
    }
}

TEST(Tuner, UnderstandsFrequenciesAsPeopleWriteThem)
{
    using Parsed = std::optional<std::pair<Tuner::Band, int>>;
    EXPECT_EQ(Tuner::parseFrequency("101.1"), Parsed({ Tuner::fm, 10110 }));
    EXPECT_EQ(Tuner::parseFrequency("88"), Parsed({ Tuner::fm, 8800 }));
    EXPECT_EQ(Tuner::parseFrequency("1000"), Parsed({ Tuner::am, 1000 }));
    for (const auto* wrong : { "", "x", "101.1x", "-88", "300", "1000.5", "99999" })
        EXPECT_EQ(Tuner::parseFrequency(wrong), Parsed()) << wrong;
}
