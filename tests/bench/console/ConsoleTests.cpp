#include "bench/console/Console.h"

#include <gmock/gmock.h>
#include <sstream>
#include <thread>

namespace
{

using namespace Bench;
using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(Script, cutsLinesIntoWords)
{
    struct Case
    {
        const char* line;
        Words words;
        bool malformed;
    };
    const Case cases[] = {
        { "mcu  source\tusb 2", { "mcu", "source", "usb", "2" }, false },
        { "  # a comment", {}, false },
        { "state # the rest", { "state" }, false },
        { "expect log \"a # b \\\"c\\\"\" within 3s", { "expect", "log", "a # b \"c\"", "within", "3s" }, false },
        { "say \"\"", { "say", "" }, false },
        { "expect log \"open", {}, true }
    };
    for (const auto& each : cases)
    {
        const auto line = parseLine(each.line);
        EXPECT_EQ(line.words, each.words) << each.line;
        EXPECT_EQ(!line.error.empty(), each.malformed) << each.line;
    }
}

TEST(Script, readsTimesAndLimits)
{
    EXPECT_EQ(parseDuration("300ms"), 300ms);
    EXPECT_EQ(parseDuration("1.5s"), 1500ms);
    EXPECT_EQ(parseDuration("2"), 2000ms);
    for (const auto* wrong : { "", "s", "3m", "-1s", "inf", "nan", "1e9", "999999s" })
        EXPECT_FALSE(parseDuration(wrong)) << wrong;

    auto limit = 5000ms;
    Words words { "page", "fm", "shown", "within", "3s" };
    EXPECT_EQ(takeTime(words, "within", limit), "");
    EXPECT_EQ(words, (Words { "page", "fm", "shown" }));
    EXPECT_EQ(limit, 3000ms);
    Words without { "page", "fm", "shown", "within" };
    EXPECT_NE(takeTime(without, "within", limit), "");
}

TEST(Expectation, isRefusedWhenNoStreamCouldMeetIt)
{
    for (const auto& wrong :
         { Words {}, Words { "page", "nowhere", "shown" }, Words { "page", "fm", "gone" },
           Words { "mcu", "source", "tape" }, Words { "mcu", "frame", "EVENT_NONE" }, Words { "log" },
           Words { "program", "radio" }, Words { "dsp" }, Words { "dsp", "write" } })
        EXPECT_NE(parseExpectation(wrong).error, "");
}

// Each stream has its own place. An event that met one expectation does not meet the next; the order between streams is
// free; an event from before the mark does not count.
TEST(Expectations, consumeEachStreamInItsOrder)
{
    Journal journal;
    Expectations expectations(journal);
    const auto wait = [&](const Words& words, std::chrono::milliseconds limit)
    { return expectations.wait(parseExpectation(words).expectation, limit); };
    journal.add("page mbMainMenu", "hidden");
    journal.add("page mbFM", "shown");
    EXPECT_EQ(wait({ "page", "fm", "shown" }, 0ms), "");
    EXPECT_EQ(wait({ "page", "menu", "hidden" }, 0ms), "");
    EXPECT_NE(wait({ "page", "fm", "shown" }, 10ms), "") << "the same event twice";

    journal.add("page mbFM", "hidden");
    EXPECT_THAT(wait({ "page", "fm", "shown" }, 10ms), HasSubstr("page mbFM hidden")) << "tells what came instead";

    journal.add("log", "first line");
    expectations.forgetThePast();
    EXPECT_NE(wait({ "log", "first" }, 10ms), "");

    std::jthread later([&] { journal.add("log", "[info] second line"); });
    EXPECT_EQ(wait({ "log", "second" }, 60s), "");
}

TEST(Expectations, seeStatesAndAbsence)
{
    Journal journal;
    Expectations expectations(journal);
    const auto inFront = parseExpectation({ "page", "eq", "in-front" }).expectation;
    journal.add("front", "mbEQ");
    EXPECT_EQ(expectations.wait(inFront, 0ms), "");
    EXPECT_EQ(expectations.wait(inFront, 0ms), "") << "a state is not used up";
    journal.add("front", "none");
    EXPECT_NE(expectations.wait(inFront, 10ms), "");

    const auto key = parseExpectation({ "program", "radio", "key", "66" }).expectation;
    EXPECT_TRUE(expectations.staysAway(key, 10ms));
    journal.add("program AppRadio", "key 66 0");
    EXPECT_FALSE(expectations.staysAway(key, 10ms));
    EXPECT_EQ(expectations.wait(key, 0ms), "");
    EXPECT_TRUE(expectations.staysAway(key, 10ms)) << "what was expected before is behind";
}

// The menu goes by itself, five seconds after it came and not because a key took it away.
TEST(Expectations, judgeAbsenceAndTimeByWhatHasHappened)
{
    Journal journal;
    const auto begin = Clock::now() - 1min;
    const auto expected = [](const Words& words) { return parseExpectation(words).expectation; };
    const auto menu = expected({ "page", "menu", "shown" }), source = expected({ "page", "fm", "shown" });
    const auto status = expected({ "mcu", "frame", "EVENT_DEVICE_STATUS" });
    const auto key = expected({ "program", "menu", "key" });
    EXPECT_THAT(Expectations(journal).staysAwayUntil(key, status, 0ms), HasSubstr("missing: mcu frame"));

    journal.add("page mbMainMenu", "shown", begin + 1s);
    journal.add("page mbFM", "shown", begin + 6s);
    journal.add("frame EVENT_DEVICE_STATUS", "00", begin + 7s);
    journal.add("program AppMainMenu", "key 5", begin + 8s);
    journal.add("frame EVENT_DEVICE_STATUS", "01", begin + 9s);
    EXPECT_EQ(Expectations(journal).waitInOrder({ menu, source }, 0ms, 5s), "");
    EXPECT_NE(Expectations(journal).waitInOrder({ menu, source }, 0ms, 6s), "");
    Expectations expectations(journal);
    EXPECT_EQ(expectations.staysAwayUntil(key, status, 0ms), "");
    EXPECT_THAT(expectations.staysAwayUntil(key, status, 0ms), HasSubstr("key 5"));
    EXPECT_EQ(expectations.staysAwayUntil(source, source, 0ms), "") << "the end of the absence may be of its kind";
}

TEST(Expectations, endWhenTheUserWantsToLeave)
{
    Journal journal;
    Expectations expectations(journal);
    std::jthread leaver([&] { journal.interrupt(); });
    EXPECT_EQ(expectations.wait(parseExpectation({ "mcu", "agreed" }).expectation, 60s), "interrupted");
}

/** The report of a program comes after what the unit answered to it, and meets what expects it all the same. */
TEST(Journal, putsWhatIsToldLateInItsPlace)
{
    Journal journal;
    Expectations expectations(journal);
    const auto begin = Clock::now();
    const auto told = [&](const char* stream, const char* text, std::chrono::nanoseconds after)
    { journal.add(stream, text, begin + after); };
    told("page mbFM", "shown", 1ns);
    told("frame EVENT_SRC_SWITCH", "00", 4ns);
    told("program AppRadio", "gone", 5ns);
    told("page mbFM", "hidden", 3ns);
    told("program AppRadio", "running", 4ns);

    const auto expected = [](Words words) { return parseExpectation(words).expectation; };
    EXPECT_NE(expectations.waitInOrder(
                  { expected({ "mcu", "frame", "EVENT_SRC_SWITCH" }), expected({ "page", "mbFM", "hidden" }) }, 0ms),
              "");
    expectations.forgetThePast();
    EXPECT_NE(expectations.wait(expected({ "page", "mbFM", "shown" }), 0ms), "");

    std::string all;
    for (const auto& event : journal.find({}, 10, [](const Event&) { return true; }))
        all += event.text + " ";
    EXPECT_EQ(all, "shown hidden 00 gone running ") << "one stream stays in the order in which it was told";
    EXPECT_EQ(journal.find({}, 1, isIn("program AppRadio")).front().at, begin + 5ns);

    std::jthread late([&] { told("page mbFM", "confirmed", 2ns); });
    EXPECT_TRUE(journal.waitFor({ begin, 0 }, Clock::now() + 60s, isEvent("page mbFM", "confirmed")));
}

TEST(Journal, forgetsTheOldestAndCountsIt)
{
    Journal journal;
    constexpr std::size_t extra = 5;
    for (std::size_t i = 0; i < Journal::capacity + extra; ++i)
        journal.add("log", std::to_string(i));
    EXPECT_EQ(journal.forgotten(), extra);
    EXPECT_EQ(journal.waitFor({}, Clock::now(), isIn("log"))->text, std::to_string(extra));
}

/** A console on a unit that was never started: enough for everything that is refused. */
class ConsoleCommands : public testing::Test
{
protected:
    Unit unit { Unit::Options::besideThisProgram() };
    std::ostringstream output;
    Console console { unit, Style(false), output, false };
};

TEST_F(ConsoleCommands, refuseNonsenseWithAHint)
{
    std::istringstream lines(
        "mcu source|mcu source tape|mcu key 256|mcu key menu 0 1s|mcu hold menu|mcu hold menu,next 1s|"
        "mcu flood menu 1s|mcu flood menu,tape 10 1s|mcu send 5 1g|mcu drop -1|mcu sing|"
        "autotest|autotest sing|autotest volume 256|autotest enter 1|autotest send 1g|autotest damage -1|"
        "program nobody crash|program radio crash|program eq show fm|usb in 9|camera maybe|engine fly|"
        "dsp sing|dsp plot a b|dsp plot /nowhere/x.png|dsp play nothing.wav x.wav|"
        "dsp fail slow|dsp fail transfer 0|dsp fail crc twice|"
        "log tail 0|pause long|transcript|transcript mcu nobody|frobnicate|"
        "expect|say \"x");
    for (std::string line; std::getline(lines, line, '|');)
    {
        const auto outcome = console.run(line);
        EXPECT_EQ(outcome.kind, Outcome::failed) << line;
        EXPECT_THAT(outcome.error, testing::Not(IsEmpty())) << line;
    }
}

TEST_F(ConsoleCommands, namesTheLineOfAScriptThatFails)
{
    std::istringstream script("# story\nsay hello\nexpect mcu agreed within 10ms\nsay not reached\n");
    EXPECT_FALSE(console.runScript(script, "x.scenario"));
    EXPECT_THAT(output.str(), HasSubstr("x.scenario:3"));
    EXPECT_THAT(output.str(), testing::Not(HasSubstr("not reached")));
}

TEST_F(ConsoleCommands, completesWhatMayFollow)
{
    using testing::Contains;
    EXPECT_THAT(Console::completionsFor({}), Contains("expect"));
    EXPECT_THAT(Console::completionsFor({ "expect", "page" }), Contains("mbEQ"));
    EXPECT_THAT(Console::completionsFor({ "bogus" }), IsEmpty());
}

} // namespace
