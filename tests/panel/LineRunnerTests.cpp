#include "bench/panel/LineRunner.h"

#include <gtest/gtest.h>
#include <thread>

namespace
{

using BenchPanel::LineRunner;

// Lines that follow one another at once: nobody has looked between them. An error among them is still told, what comes behind
// `quit` is not done, and of a fast knob's lines those that find no place are counted.
TEST(LineRunner, TellsEachLineThatHasEnded)
{
    Bench::Unit unit(Bench::Unit::Options::besideThisProgram());
    LineRunner runner(unit, {});
    const auto waitUntil = [](auto condition)
    {
        while (!condition())
            std::this_thread::yield();
    };
    runner.run("wait 60s");
    waitUntil([&] { return runner.last().running; });
    for (const char* line : { "foo", "quit" })
        runner.run(line);
    for (std::size_t i = 2; i < LineRunner::mostWaiting + 3; ++i)
        runner.run("say behind");
    EXPECT_EQ(runner.last().dropped, 3);
    unit.journal.interrupt(false);
    waitUntil([&] { return runner.last().leaves; });

    const auto ended = runner.takeEnded();
    ASSERT_EQ(ended.size(), 3u);
    EXPECT_EQ(ended[0].line, "wait 60s");
    EXPECT_TRUE(ended[1].failed);
    EXPECT_NE(ended[1].answer, "");
    EXPECT_TRUE(ended[2].leaves);
    EXPECT_TRUE(runner.takeEnded().empty());
}

} // namespace
