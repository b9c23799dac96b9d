#include "bench/panel/LineRunner.h"

#include <gtest/gtest.h>
#include <latch>

namespace
{

using BenchPanel::LineRunner;

// Lines that follow one another at once: nobody has looked between them. An error among them is still told, what comes behind
// `quit` is not done, and of a fast knob's lines those that find no place are counted.
TEST(LineRunner, TellsEachLineThatHasEnded)
{
    Bench::Unit unit(Bench::Unit::Options::besideThisProgram());
    std::latch allSaid(1), over(1);
    LineRunner* said = nullptr;
    LineRunner runner(unit, {},
                      [&]
                      {
                          allSaid.wait();
                          if (!said->last().running && said->last().leaves)
                              over.count_down();
                      });
    said = &runner;
    runner.run("say first");
    while (!runner.last().running)
        std::this_thread::yield();
    for (const char* line : { "foo", "quit" })
        runner.run(line);
    for (std::size_t i = 2; i < LineRunner::mostWaiting + 3; ++i)
        runner.run("say behind");
    EXPECT_EQ(runner.last().dropped, 3);
    allSaid.count_down();
    over.wait();

    const auto ended = runner.takeEnded();
    ASSERT_EQ(ended.size(), 3u);
    EXPECT_EQ(ended[0].line, "say first");
    EXPECT_TRUE(ended[1].failed);
    EXPECT_NE(ended[1].answer, "");
    EXPECT_TRUE(ended[2].leaves);
    EXPECT_TRUE(runner.takeEnded().empty());
}

} // namespace
