#include "bench/console/ActiveFaults.h"
#include "bench/console/CommandLine.h"
#include "bench/console/EventText.h"
#include "bench/console/ExpectLines.h"
#include "bench/console/Verb.h"
#include "bench/console/Watch.h"
#include "ctl/Columns.h"
#include "support/Golden.h"

#include <CLI/CLI.hpp>
#include <gmock/gmock.h>
#include <sstream>
#include <thread>

namespace
{

using namespace Bench;
using namespace std::chrono_literals;
using testing::HasSubstr;

Expectation expected(const std::string& line)
{
    return parseExpectation(parseLine(line).words).expectation;
}

TEST(Script, cutsLinesIntoWords)
{
    const std::pair<const char*, Words> cases[] = {
        { "mcu  source\tusb 2", { "mcu", "source", "usb", "2" } },
        { "  # a comment", {} },
        { "state # the rest", { "state" } },
        { "expect log \"a # b \\\"c\\\"\" within 3s", { "expect", "log", "a # b \"c\"", "within", "3s" } },
        { "say \"\"", { "say", "" } },
    };
    for (const auto& [line, words] : cases)
    {
        EXPECT_EQ(parseLine(line).words, words) << line;
        EXPECT_EQ(parseLine(quotedLine(words)).words, words) << quotedLine(words);
    }
    EXPECT_EQ(parseLine("expect log \"open").error, "the quotes are not closed");
}

TEST(Script, readsTimes)
{
    EXPECT_EQ(parseDuration("300ms"), 300ms);
    EXPECT_EQ(parseDuration("1.5"), 1500ms);
    for (const auto* wrong : { "", "s", "3m", "-1s", "inf", "nan", "1e9", "999999s" })
        EXPECT_FALSE(parseDuration(wrong)) << wrong;
}

class ExpectationsTest : public testing::Test
{
protected:
    std::string wait(const std::string& line, std::chrono::milliseconds limit)
    {
        return expectations.wait(expected(line), limit);
    }

    Journal journal;
    Expectations expectations { journal };
};

// Each stream has its own place. An event that met one expectation does not meet the next; the order between streams is
// free; an event from before the mark does not count.
TEST_F(ExpectationsTest, consumeEachStreamInItsOrder)
{
    journal.add("page mbMainMenu", "hidden");
    journal.add("page mbFM", "shown");
    EXPECT_EQ(wait("page fm shown", 0ms), "");
    EXPECT_EQ(wait("page menu hidden", 0ms), "");
    EXPECT_NE(wait("page fm shown", 10ms), "") << "the same event twice";

    journal.add("page mbFM", "hidden");
    EXPECT_THAT(wait("page fm shown", 10ms), HasSubstr("page mbFM hidden")) << "tells what came instead";

    journal.add("log", "first line");
    expectations.forgetThePast();
    EXPECT_NE(wait("log first", 10ms), "");

    std::jthread later([&] { journal.add("log", "[info] second line"); });
    EXPECT_EQ(wait("log second", 60s), "");
}

TEST_F(ExpectationsTest, seeStatesAndAbsence)
{
    journal.add("front", "mbEQ");
    EXPECT_EQ(wait("page eq in-front", 0ms), "");
    EXPECT_EQ(wait("page eq in-front", 0ms), "") << "a state is not used up";
    journal.add("front", "none");
    EXPECT_NE(wait("page eq in-front", 10ms), "");

    const auto key = expected("program radio key 66");
    EXPECT_TRUE(expectations.staysAway(key, 10ms));
    journal.add("program AppRadio", "key 66 0");
    EXPECT_FALSE(expectations.staysAway(key, 10ms));
    EXPECT_EQ(wait("program radio key 66", 0ms), "");
    EXPECT_TRUE(expectations.staysAway(key, 10ms)) << "what was expected before is behind";
}

// The menu goes by itself, five seconds after it came and not because a key took it away.
TEST_F(ExpectationsTest, judgeAbsenceAndTimeByWhatHasHappened)
{
    const auto begin = Clock::now() - 1min;
    const auto menu = expected("page menu shown"), source = expected("page fm shown");
    const auto status = expected("mcu frame EVENT_DEVICE_STATUS");
    const auto key = expected("program menu key");
    EXPECT_THAT(Expectations(journal).staysAwayUntil(key, status, 0ms), HasSubstr("missing: mcu frame"));

    journal.add("page mbMainMenu", "shown", begin + 1s);
    journal.add("page mbFM", "shown", begin + 6s);
    journal.add("frame EVENT_DEVICE_STATUS", "00", begin + 7s);
    journal.add("program AppMainMenu", "key 5", begin + 8s);
    journal.add("frame EVENT_DEVICE_STATUS", "01", begin + 9s);
    EXPECT_EQ(Expectations(journal).waitInOrder({ menu, source }, 0ms, 5s), "");
    EXPECT_NE(Expectations(journal).waitInOrder({ menu, source }, 0ms, 6s), "");
    EXPECT_EQ(expectations.staysAwayUntil(key, status, 0ms), "");
    EXPECT_THAT(expectations.staysAwayUntil(key, status, 0ms), HasSubstr("key 5"));
    EXPECT_EQ(expectations.staysAwayUntil(source, source, 0ms), "") << "the end of the absence may be of its kind";
}

TEST_F(ExpectationsTest, endWhenTheUserWantsToLeave)
{
    std::jthread leaver([&] { journal.interrupt(); });
    EXPECT_EQ(wait("mcu agreed", 60s), "interrupted");
}

/** The report of a program comes after what the unit answered to it, and meets what expects it all the same. */
TEST_F(ExpectationsTest, putWhatIsToldLateInItsPlace)
{
    const auto begin = Clock::now();
    const auto told = [&](const char* stream, const char* text, std::chrono::nanoseconds after)
    { journal.add(stream, text, begin + after); };
    told("page mbFM", "shown", 1ns);
    told("frame EVENT_SRC_SWITCH", "00", 4ns);
    told("program AppRadio", "gone", 5ns);
    told("page mbFM", "hidden", 3ns);
    told("program AppRadio", "running", 4ns);

    EXPECT_NE(expectations.waitInOrder({ expected("mcu frame EVENT_SRC_SWITCH"), expected("page mbFM hidden") }, 0ms),
              "");
    expectations.forgetThePast();
    EXPECT_NE(wait("page mbFM shown", 0ms), "");

    std::string all;
    for (const auto& event : journal.find({}, 10, [](const Event&) { return true; }))
        all += event.text + " ";
    EXPECT_EQ(all, "shown hidden 00 gone running ") << "one stream stays in the order in which it was told";
    EXPECT_EQ(journal.find({}, 1, isIn("program AppRadio")).front().at, begin + 5ns);

    std::jthread late([&] { told("page mbFM", "confirmed", 2ns); });
    EXPECT_TRUE(journal.waitFor({ begin, 0 }, Clock::now() + 60s, isEvent("page mbFM", "confirmed")));
}

TEST(Journal, tellsOfEverythingInOneLine)
{
    Journal journal;
    journal.add("program AppAuxIn says", "one\ntwo\x1b[2J three\r");
    EXPECT_EQ(journal.waitFor({}, Clock::now(), isIn("program AppAuxIn says"))->text, "one two [2J three ");
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

/** What is nearly right is met with what would be; lines with the same hint stand together, with / between them. */
TEST_F(ConsoleCommands, refuseNonsenseWithAHint)
{
    const std::pair<const char*, const char*> cases[] = {
        { "frobnicate/mc", "see help" },
        { "mcuu key menu", "see help. Is it mcu?" },
        { "mcu surce aux/mcu suorce aux", "Is it source?" },
        { "program raido crash", "Is it AppRadio?" },
        { "gpio foo", "'foo' is no line: 0 to 65535" },
        { "program foo", "'foo' is no program" },
        { "set 9999 1", "'9999' is no setting: a name (eq-preset) or 0 to 1793" },
        { "set eq-preset 9", "eq-preset goes from 0 to 4: Tone, Rock, Pop, Jazz, Custom" },
        { "set aux-name Flute", "aux-name is one of AUX, TV" },
        { "touch 800 0", "'800' is no x: 0 to 799" },
        { "touch 0 480", "'480' is no y: 0 to 479" },
        { "quit now", "usage: quit" },
        { "program radio text \"caf\xe9"
          "\" x",
          "the line is not UTF-8" },
        { "program radio window 1", "the engine has no window" },
        { "mcu source 300", "or a type, 0 to 255" },
        { "mcu send 99999", "'99999' is no frame: a name (EVENT_SRC_SWITCH, IND_KEY ...) or 1 to 32767" },
        { "tune 200", "87.5 to 108 on FM" },
        { "rds TOOLONGNAME x", "at most 8 characters" },
        { "mcu flood menu,soruce 10 1s", "Is it source?" },
        { "engine stall SystemGrup 1s", "Is it SystemGroup?" },
        { "program radio send RMSG_APP_EVNT", "Is it RMSG_APP_EVENT" },
        { "program bt do conect", "AppBluetooth knows no 'conect'. Is it connect?" },
        { "program bt do link opne", "Is it open?" },
        { "settings eq-prest", "Is it eq-preset?" },
        { "usb update 3", "storage 3 is not plugged: usb in 3" },
        { "dsp play none.wav out.wav", "there is no such file" },
        { "dsp play in.wav out.wav frnt", "Is it front?" },
        { "events nothing", "'nothing' is no count" },
        { "say \"x", "quotes" },
        { "mcu/mcu sing/mcu source", "usage: mcu source SOURCE" },
        { "mcu key menu 0 1s", "usage: mcu key KEY [ORIGIN]" },
        { "mcu hold menu 300 1s", "'300' is no origin: 0 to 255" },
        { "mcu flood menu,tape 10 1s", "is no key-list" },
        { "mcu send 5 1g/autotest send 1g/expect mcu frame 5 1g", "'1g' is no byte: two hexadecimal digits" },
        { "mcu drop -1/autotest damage 1001/mcu drop every x", "is no amount: 0 to 1000" },
        { "mcu silent long/pause long/expect log x within long", "'long' is no time" },
        { "program nobody crash/expect program nobody gone", "'nobody' is no program" },
        { "program radio slow", "usage: program PROGRAM slow TIME|off" },
        { "program radio slow on", "or off" },
        { "program radio crash", "AppRadio does not run" },
        { "program eq show fm", "AppEQ has no page 'fm'" },
        { "battery 25.3", "is no volts: 0 to 25.2" },
        { "dsp sing/dsp plot a b", "usage: dsp" },
        { "log/log 3/log tail/log tail 3", "nobody says where the engine's log is" },
        { "log on 3/log 3 3", "usage: log" },
        { "transcript mcu nobody", "'nobody' is no section" },
        { "expect/expect no/expect sing", "expect" },
        { "expect pge fm shown", "Is it page?" },
        { "expect page fm gone", "usage: expect page PAGE shown|hidden|covered|confirmed" },
        { "expect dsp write", "expect dsp write TEXT..." },
        { "expect order \"mcu agreed\"", "two expectations" },
    };
    for (const auto& [nonsense, hint] : cases)
    {
        std::istringstream lines(nonsense);
        for (std::string line; std::getline(lines, line, '/');)
            EXPECT_THAT(runLine(console, line).error, HasSubstr(hint)) << line;
    }
}

/** A fault is named as long as it holds, and the line that is said to end it does. */
TEST_F(ConsoleCommands, nameEachFaultAndWhatEndsIt)
{
    const std::pair<const char*, const char*> cases[] = {
        { "mcu silent 60s", "mcu silent" },
        { "mcu delay 300ms", "mcu is 300 ms slow" },
        { "mcu drop 2", "mcu loses 2 frames" },
        { "mcu drop every 3", "mcu loses 1 of 3 frames" },
        { "mcu corrupt 1 EVENT_SRC_SWITCH", "mcu damages 1 EVENT_SRC_SWITCH" },
        { "mcu repeat", "mcu repeats 1 frame" },
        { "mcu no-ack 3 EVENT_DEVICE_STATUS", "mcu ignores 3 EVENT_DEVICE_STATUS" },
        { "i2c fail", "camera bus refuses" },
        { "i2c slow 5s", "camera bus is 5000 ms slow" },
        { "gpio slow 900ms", "gpio is 900 ms slow" },
        { "mcu drop IND_KEY", "mcu loses 1 IND_KEY" },
        { "dsp fail crc always", "dsp: every CRC is wrong" },
        { "dsp fail transfer", "dsp: the next transfer will fail" },
        { "remote stall", "remote stalls" },
        { "autotest hold", "test equipment acknowledges nothing" },
        { "autotest damage 2", "test equipment damages 2 frames" },
    };
    const auto before = activeFaults(unit).size(); // of a unit that was never started
    for (const auto& [line, what] : cases)
    {
        ASSERT_EQ(runLine(console, line).error, "") << line;
        const auto faults = activeFaults(unit);
        const auto found = std::ranges::find(faults, what, &ActiveFault::what);
        ASSERT_NE(found, faults.end()) << what;
        ASSERT_EQ(runLine(console, found->cure).error, "") << found->cure;
        EXPECT_EQ(activeFaults(unit).size(), before) << found->cure << " after " << line;
    }
}

/** A file that says to replay itself would never end. */
TEST_F(ConsoleCommands, replayNoFileWithinItself)
{
    const juce::TemporaryFile scenario(".scenario");
    const auto line = "replay " + scenario.getFile().getFullPathName().toStdString();
    scenario.getFile().replaceWithText(line);
    EXPECT_EQ(runLine(console, line).kind, Outcome::failed);
    EXPECT_THAT(output.str(), HasSubstr("is being replayed"));
}

/** To a person, each command tells what it brought about or armed, or why nothing came. */
TEST_F(ConsoleCommands, tellWhatCameOfThem)
{
    console.tellsConsequences = true;
    const std::pair<const char*, const char*> cases[] = {
        { "mcu drop 2", "  mcu loses 2 frames  until mcu drop 0\n" },
        { "mcu drop 1", "  mcu loses 1 frame  until mcu drop 0\n" },
        { "mcu well", "  well again  mcu loses 1 frame\n" },
        { "dsp fail crc always", "  dsp: every CRC is wrong  until dsp fail well\n" },
        { "dsp fail transfer", "  dsp: the next transfer will fail  until dsp fail well\n" },
        { "dsp fail well", "  well again  dsp: every CRC is wrong\n" },
        { "camera on", "→ camera signal" },
        { "mark", "meets no expect" },
        { "gpio 100 1", "→ gpio 100 1 from outside" },
        { "mcu memory usb 2", "→ mcu memory usb 2 after the unit's next start" },
        { "n2k play off", "Nothing within a second: the engine does not run" },
    };
    const auto say = [&](const std::string& line)
    {
        output.str({});
        EXPECT_EQ(runLine(console, line).error, "") << line;
        return output.str();
    };
    for (const auto& [line, told] : cases)
        EXPECT_THAT(say(line), HasSubstr(told)) << line;
    EXPECT_THAT(say("mfd state"), testing::Not(HasSubstr("within a second"))) << "what tells something by itself";
    EXPECT_THAT(say("trail"), testing::Not(HasSubstr("+-"))) << "nothing came before the command that it tells of";
}

/** The live view fits the smallest terminal, and fills a large one. */
TEST_F(ConsoleCommands, drawTheUnitInTheTerminalsSize)
{
    for (int i = 0; i < 100; ++i)
        unit.journal.add("page mbFM", "shown " + std::to_string(i));
    for (const auto& [columns, rows] : { std::pair(80, 24), std::pair(80, 60), std::pair(200, 55) })
    {
        const auto lines = composeWatch(unit, Style(false), { columns, rows });
        EXPECT_LE(lines.size(), static_cast<std::size_t>(rows)) << rows;
        for (const auto& line : lines)
            EXPECT_EQ(Ctl::widthOf(line), columns) << line;
        const auto told = [&](const char* text) {
            return std::ranges::any_of(lines,
                                       [&](const std::string& line) { return line.find(text) != std::string::npos; });
        };
        EXPECT_TRUE(told("Any key ends it")) << rows;
        EXPECT_EQ(told("page mbFM shown 99"), rows > 24) << rows;
    }
}

TEST(Events, foldWhatComesByItself)
{
    Journal journal;
    const auto add = [&](int times, const char* stream, const std::string& text)
    {
        for (int i = 0; i < times; ++i)
            journal.add(stream, text);
    };
    add(2, "frame EVENT_HEAT_BEAT", "00");
    add(1, "log", "MCU received ACK arg1: 1, arg2: 0");
    add(1, "frame EVENT_HEAT_BEAT", "01");
    add(1, "log", "MCU received ACK arg1: 2, arg2: 0");
    add(2, "page mbFM", "shown");
    add(1, "frame EVENT_HEAT_BEAT", "00");
    std::string all;
    for (const auto& event : folded(journal.find({}, 100, [](const Event&) { return true; })))
        all += event.text + "; ";
    EXPECT_EQ(all, "00 × 3; MCU received ACK arg1: 1, arg2: 0 × 2; shown; shown; 00; ");
}

TEST_F(ConsoleCommands, namesEachLineThatFails)
{
    const char* lines = "# story\nsay hello\nif-display frobnicate\nexpect mcu agreed within 10ms\nsay "
                        "reached\nmark\nquit\nsay never\n";
    std::istringstream script(lines), typed(lines);
    EXPECT_FALSE(runScript(console, script, "x.scenario", AfterFailure::end));
    EXPECT_THAT(output.str(), HasSubstr("x.scenario:4"));
    EXPECT_THAT(output.str(), testing::Not(HasSubstr("\nreached")));

    EXPECT_FALSE(runScript(console, typed, "standard input", AfterFailure::nextLine)) << "one line has failed";
    EXPECT_THAT(output.str(), testing::AllOf(HasSubstr("standard input:4"), HasSubstr("\nreached")));
    EXPECT_THAT(output.str(), testing::Not(HasSubstr("never")));
}

TEST(Verbs, completeWhatMayFollow)
{
    const std::pair<const char*, const char*> cases[] = {
        { "", "expect" },
        { "mcu", "hold" },
        { "mcu drop 2", "IND_KEY" },
        { "program radio", "show" },
        { "remote", "rotary-next" },
        { "remote stall", "off" },
        { "events", "mcu" },
        { "engine stall", "SystemGroup" },
        { "settings", "eq-preset" },
        { "set eq-preset", "4" },
        { "set aux-name", "Media" },
        { "dsp play in.wav out.wav", "front" },
        { "program radio send", "RMSG_APP_EVENT" },
        { "program bt do", "connect" },
        { "program radio do seek", "up" },
        { "help", "mcu" },
        { "expect", "no" },
        { "expect page", "mbEQ" },
        { "if-display expect no page eq", "shown" },
    };
    for (const auto& [before, word] : cases)
        EXPECT_THAT(completionsFor(parseLine(before).words), testing::Contains(word)) << before;
    for (const auto* before : { "bogus", "mcu status", "expect page fm shown" })
        EXPECT_THAT(completionsFor(parseLine(before).words), testing::IsEmpty()) << before;
}

/** The tables of options and verbs, with all that stands around them as it is. */
TEST(Verbs, standInTheManual)
{
    const auto manual = juce::File(HEADUNIT_SOURCE_DIR).getChildFile("bench/README.md").loadFileAsString();
    const juce::String options = "| Option | What it does |\n", verbs = "| Say | What it does |\n";
    const auto behindOptions =
        manual.fromFirstOccurrenceOf(options, false, false).fromFirstOccurrenceOf("\n\n", true, false);
    expectGolden(
        "../bench/README.md",
        manual.upToFirstOccurrenceOf(options, false, false) + juce::String::fromUTF8(optionTable().c_str()) +
            behindOptions.fromFirstOccurrenceOf("\n", false, false).upToFirstOccurrenceOf(verbs, false, false) +
            juce::String::fromUTF8(verbTables().c_str()));
}

/** Of two that would say what happens neither is left out silently. */
TEST(Options, refuseWhatExcludesEachOther)
{
    const std::string script = "--script " HEADUNIT_SOURCE_DIR "/run ";
    for (const auto& words :
         { std::string("--panel --tour"), std::string("--panel --stdin"), std::string("--tour --stdin"),
           "--panel --transcript kept " + script, "--tour " + script, "--stdin " + script })
    {
        CLI::App app;
        CommandLine line;
        line.offerTo(app);
        EXPECT_THROW(app.parse(words), CLI::ExcludesError) << words;
    }
}

/** A program of the user's own that cannot be the one that is named is refused before anything starts. */
TEST(Options, refuseProgramsThatCannotBeStarted)
{
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        { { "aux=/bin/true" }, "" },
        { { "aux=/bin/true", "AppRadio=/bin/true" }, "" },
        { { "/bin/true" }, "it is PROGRAM=FILE" },
        { { "tape=/bin/true" }, "'tape' is no program of the unit" },
        { { "aux=/bin/nothing-here" }, "there is no file /bin/nothing-here" },
        { { "aux=/bin" }, "there is no file" },
        { { "aux=/etc/passwd" }, "cannot be executed" },
        { { "aux=/bin/true", "mbAuxin1=/bin/echo" }, "AppAuxIn has one already" },
    };
    for (const auto& [given, wrong] : cases)
    {
        CommandLine line;
        line.programs = given;
        const auto error = line.takePrograms();
        EXPECT_TRUE(*wrong == '\0' ? error.empty() : error.find(wrong) != std::string::npos) << error;
    }
}

} // namespace
