#include "FakeEngine.h"

#include "bench/console/Verb.h"

#include <gmock/gmock.h>
#include <sstream>

namespace
{

using namespace Bench;
using testing::HasSubstr;
using Json = Diagnostics::Json;

/** The console of a unit that has only its bus, and an engine's answers on it. */
class ConsoleOfAnEngine : public testing::Test
{
protected:
    ConsoleOfAnEngine()
    {
        EXPECT_EQ(unit.start(), "");
        engine = std::make_unique<FakeEngine>(unit.engine().busAddress());
    }

    std::string say(const std::string& line)
    {
        output.str("");
        return runLine(console, line).error;
    }

    Unit unit { Unit::Options::besideThisProgram() };
    std::ostringstream output;
    Console console { unit, Style(false), output, false };
    std::unique_ptr<FakeEngine> engine;
};

} // namespace

TEST_F(ConsoleOfAnEngine, PrintsWhatItAnswers)
{
    engine->answer("Why", { { "sentence", "It is behind mbEQ." }, { "facts", { "mbEQ is on top." } } });
    engine->answer("Counters",
                   { { { "counter", "losses" }, { "count", 0 } }, { { "counter", "drops" }, { "count", 2 } } });
    EXPECT_EQ(say("why page fm"), "");
    EXPECT_EQ(output.str(), "It is behind mbEQ.\n  - mbEQ is on top.\n");
    EXPECT_EQ(engine->called("Why"), Json({ "page", "mbFM" }));
    EXPECT_EQ(say("why not running radio"), "");
    EXPECT_EQ(engine->called("Why"), Json({ "program", "AppRadio" }));
    EXPECT_EQ(say("counters"), "");
    EXPECT_EQ(output.str(), "  count  of\n      2  drops\n");
    EXPECT_EQ(say("counters all"), "");
    EXPECT_THAT(output.str(), HasSubstr("losses"));
    EXPECT_THAT(say("why tape"), HasSubstr("usage: why"));
    EXPECT_THAT(say("why page tape"), HasSubstr("'tape' is no page"));
}

/** What only the bench knows stands below; it is there without an engine, too. */
TEST_F(ConsoleOfAnEngine, PutsItBeforeWhatTheDevicesKnow)
{
    engine->answer("State", { { "version", "9" }, { "front", "mbEQ" } });
    engine->answer("Dsp", { { "channel", "tuner" } });
    const std::tuple<const char*, const char*, const char*> cases[] = {
        { "state", "Head unit 9", "heartbeat" },
        { "dsp", "channel         tuner", "Equalisers" },
    };
    for (const auto& [line, ofEngine, ofBench] : cases)
    {
        EXPECT_EQ(say(line), "") << line;
        EXPECT_LT(output.str().find(ofEngine), output.str().find(ofBench)) << output.str();
    }
    engine.reset();
    for (const auto& [line, ofEngine, ofBench] : cases)
    {
        EXPECT_EQ(say(line), "") << line;
        EXPECT_THAT(output.str(), HasSubstr("no engine answers")) << line;
        EXPECT_THAT(output.str(), HasSubstr(ofBench)) << line;
    }
}

TEST_F(ConsoleOfAnEngine, ExpectsASentence)
{
    engine->answer("Why", { { "sentence", "Nothing plays." }, { "facts", { "The unit is muted." } } });
    EXPECT_EQ(say("expect why silent \"Nothing plays\" within 1ms"), "");
    EXPECT_EQ(output.str().substr(0, output.str().rfind("  ")), "  ✓ why silent \"Nothing plays\"");
    EXPECT_EQ(say("expect why silent muted within 1ms"),
              "not said within 1 ms: why silent \"muted\"\nNothing plays.\n  - The unit is muted.\n")
        << "a fact is not the sentence";
    std::jthread later([&] { engine->answer("Why", { { "sentence", "It is muted." } }); });
    EXPECT_EQ(say("expect why silent is muted"), "") << "waits for it";
    engine.reset();
    EXPECT_THAT(say("expect why page fm \"x\" within 1ms"), HasSubstr("no engine answers"));
    unit.journal.interrupt();
    EXPECT_EQ(say("expect why silent x"), "interrupted");
}
