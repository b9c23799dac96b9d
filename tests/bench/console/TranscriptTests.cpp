#include "bench/console/Transcript.h"

#include <gtest/gtest.h>

namespace
{

using namespace Bench;

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
