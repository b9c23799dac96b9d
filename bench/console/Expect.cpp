#include "bench/console/Expect.h"

#include "bench/mcu/McuFrame.h"
#include "bench/network/NetworkDisplay.h"
#include "bench/text/Names.h"

#include <algorithm>

namespace Bench
{

namespace
{

constexpr const char* frontStream = "front";
constexpr const char* settledStream = "settled";

ParsedExpectation failed(std::string error)
{
    return { {}, std::move(error) };
}

std::string joined(const Words& words)
{
    std::string text;
    for (const auto& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

bool meets(const Event& event, const Expectation& expectation)
{
    return event.stream == expectation.stream &&
           (expectation.text.empty() || event.text == expectation.text ||
            (expectation.isPart && event.text.find(expectation.text) != std::string::npos));
}

ParsedExpectation expectMcu(const Words& words)
{
    if (words.size() == 2 && words[1] == "agreed")
        return { { "mcu agreed", {}, false, false, {} }, {} };
    if (words.size() == 2 && words[1] == "ready-for-power-off")
        return { { "mcu ready-for-power-off", {}, false, false, {} }, {} };
    if (words.size() >= 3 && words[1] == "source")
    {
        const auto source = findSource(std::span(words).subspan(2));
        if (!source)
            return failed("there is no source '" + words[2] + "'");
        return { { "mcu source", sourceName(*source), false, false, {} }, {} };
    }
    if (words.size() >= 3 && words[1] == "frame")
    {
        const auto command = commandOfName(words[2]);
        if (command < 0)
            return failed("there is no frame '" + words[2] + "'");
        return {
            { "frame " + unitCommandName(command), joined(Words(words.begin() + 3, words.end())), false, false, {} }, {}
        };
    }
    if (words.size() >= 3 && words[1] == "sent")
        return { { "sent " + words[2], joined(Words(words.begin() + 3, words.end())), false, false, {} }, {} };
    if (words.size() >= 3 && words[1] == "link")
        return { { "mcu link", joined(Words(words.begin() + 2, words.end())), true, false, {} }, {} };
    if (words.size() >= 3 && (words[1] == "power" || words[1] == "device-id" || words[1] == "tuner"))
        return { { "mcu " + words[1], joined(Words(words.begin() + 2, words.end())), false, false, {} }, {} };
    if (words.size() >= 2 && (words[1] == "hold" || words[1] == "flood"))
        return { { "mcu " + words[1], joined(Words(words.begin() + 2, words.end())), true, false, {} }, {} };
    return failed(
        "expect mcu source NAME | agreed | frame NAME [BYTES] | sent NAME [BYTES] | link TEXT | ready-for-power-off | "
        "power on|off | device-id BYTES | tuner TEXT | hold TEXT | flood TEXT");
}

ParsedExpectation expectPage(const Words& words)
{
    if (words.size() != 3)
        return failed("expect page NAME shown | hidden | covered | confirmed | in-front | settled");
    const auto page = findPage(words[1]);
    if (page == Pubhead::NUM_OF_PAGES)
        return failed("there is no page '" + words[1] + "'");
    if (words[2] == "in-front")
        return { { frontStream, Pubhead::pageName(page), false, true, {} }, {} };
    if (words[2] == "settled")
        return { { settledStream, Pubhead::pageName(page), false, true, {} }, {} };
    for (const auto* change : { "shown", "hidden", "covered", "confirmed" })
        if (words[2] == change)
            return { { std::string("page ") + Pubhead::pageName(page), change, false, false, {} }, {} };
    return failed("a page is shown, hidden, covered, confirmed, in-front or settled, not '" + words[2] + "'");
}

ParsedExpectation expectProgram(const Words& words)
{
    if (words.size() < 3)
        return failed("expect program NAME running | connected | gone | TEXT");
    const auto appType = findApp(words[1]);
    if (appType == Pubhead::AppUnknown)
        return failed("there is no program '" + words[1] + "'");
    const auto text = joined(Words(words.begin() + 2, words.end()));
    const bool isWhole = text == "running" || text == "connected" || text == "gone";
    return { { std::string("program ") + Pubhead::appTypeName(appType), text, !isWhole, false, {} }, {} };
}

ParsedExpectation expectRemote(const Words& words)
{
    const bool dimmer = words[1] == "dimmer";
    const bool plug = words.size() == 2 && (words[1] == "plugged" || words[1] == "unplugged");
    const auto text = joined(Words(words.begin() + (dimmer ? 2 : 1), words.end()));
    return { { dimmer ? "remote dimmer" : plug ? "remote" : "remote display", text, true, false, {} }, {} };
}

/** The whole message, because "source 1" is not "source 10 1"; of a text also its item alone. */
ParsedExpectation expectAutoTest(const Words& words)
{
    if (words.size() == 3 && words[1] == "text")
        return { { "autotest", "text " + words[2] + " \"", true, false, {} }, {} };
    if (words.size() >= 4 && words[1] == "text")
        return { { "autotest",
                   "text " + words[2] + " \"" + joined(Words(words.begin() + 3, words.end())) + "\"",
                   false,
                   false,
                   {} },
                 {} };
    return { { "autotest", joined(Words(words.begin() + 1, words.end())), false, false, {} }, {} };
}

ParsedExpectation expectDisplay(const Words& words)
{
    const bool hasStream = words[1] == "sent" || words[1] == "flood";
    if (hasStream)
        return { { "mfd " + words[1], joined(Words(words.begin() + 2, words.end())), true, false, {} }, {} };
    auto [stream, text] = NetworkDisplay::streamAndText(joined(Words(words.begin() + 1, words.end())));
    return { { std::move(stream), std::move(text), true, false, {} }, {} };
}

} // namespace

ParsedExpectation parseExpectation(const Words& words)
{
    const auto subject = words.empty() ? std::string() : words[0];
    ParsedExpectation parsed;
    if (subject == "mcu")
        parsed = expectMcu(words);
    else if (subject == "autotest")
        parsed = expectAutoTest(words);
    else if (subject == "page")
        parsed = expectPage(words);
    else if (subject == "program")
        parsed = expectProgram(words);
    else if (subject == "update" && words.size() >= 2)
        parsed = { { "update", joined(Words(words.begin() + 1, words.end())), true, false, {} }, {} };
    else if (subject == "log" && words.size() == 2)
        parsed = { { "log", words[1], true, false, {} }, {} };
    else if (subject == "engine" && words.size() >= 2)
        parsed = { { "engine", joined(Words(words.begin() + 1, words.end())), false, false, {} }, {} };
    else if (subject == "dsp" && words.size() >= 3 && words[1] == "write")
        parsed = { { "dsp write", joined(Words(words.begin() + 2, words.end())), true, false, {} }, {} };
    else if (subject == "dsp" && words.size() >= 2 && words[1] != "write")
        parsed = { { "dsp", joined(Words(words.begin() + 1, words.end())), true, false, {} }, {} };
    else if (subject == "remote" && words.size() >= 2)
        parsed = expectRemote(words);
    else if (subject == "mfd" && words.size() >= 2)
        parsed = expectDisplay(words);
    else if (subject == "n2k" && words.size() >= 2)
        parsed = { { "n2k", joined(Words(words.begin() + 1, words.end())), true, false, {} }, {} };
    else if (subject == "gpio" && words.size() == 3)
        parsed = { { "gpio " + words[1], words[2], false, false, {} }, {} };
    else
        parsed =
            failed("expect mcu | page | program | log \"TEXT\" | engine started | engine exit N | gpio LINE LEVEL | "
                   "update TEXT | remote TEXT | remote dimmer TEXT | dsp TEXT | dsp write TEXT | autotest [TEXT] | "
                   "mfd [sent|flood] TEXT | n2k TEXT");
    parsed.expectation.description = joined(words);
    return parsed;
}

Expectations::Expectations(const Journal& journalToRead)
    : journal(journalToRead)
{
}

void Expectations::forgetThePast()
{
    beginning = journal.end();
    cursors.clear();
}

Place Expectations::cursorOf(const std::string& stream) const
{
    const auto found = cursors.find(stream);
    return found != cursors.end() ? found->second : beginning;
}

std::optional<Event> Expectations::meet(const Expectation& expectation, Clock::time_point deadline)
{
    if (expectation.isState)
    {
        // The engine may be read faster than the program, which alone can be told what to do next.
        if (expectation.stream == settledStream && !journal.waitForLatest(frontStream, expectation.text, deadline))
            return {};
        if (!journal.waitForLatest(expectation.stream, expectation.text, deadline))
            return {};
        return journal.find({}, 1, isEvent(expectation.stream, expectation.text)).back();
    }
    const auto met = journal.waitFor(cursorOf(expectation.stream), deadline,
                                     [&](const Event& event) { return meets(event, expectation); });
    if (met)
        cursors[expectation.stream] = met->behind();
    return met;
}

std::string Expectations::wait(const Expectation& expectation, std::chrono::milliseconds limit)
{
    if (meet(expectation, Clock::now() + limit))
        return {};
    return seenInstead(expectation, expectation.isState ? beginning : cursorOf(expectation.stream));
}

std::string Expectations::staysAwayUntil(const Expectation& absent, const Expectation& end,
                                         std::chrono::milliseconds limit)
{
    const auto from = cursorOf(absent.stream);
    const auto met = meet(end, Clock::now() + limit);
    if (!met)
        return "missing: " + end.description + "\n" + seenInstead(end, cursorOf(end.stream));
    const auto seen = journal.waitFor(from, Clock::now(), [&](const Event& event) { return meets(event, absent); });
    if (!seen || seen->place() >= met->place())
        return {};
    return "seen although it should not be: " + seen->stream + " " + seen->text;
}

std::string Expectations::waitInOrder(const std::vector<Expectation>& inOrder, std::chrono::milliseconds limit,
                                      std::chrono::milliseconds apart)
{
    const auto deadline = Clock::now() + limit;
    auto from = beginning;
    auto earliest = Clock::time_point::min();
    for (const auto& expectation : inOrder)
    {
        from = std::max(from, cursorOf(expectation.stream));
        const auto met = journal.waitFor(from, deadline, [&](const Event& event) { return meets(event, expectation); });
        if (!met)
            return "missing: " + expectation.description + "\n" +
                   seenInstead(expectation, cursorOf(expectation.stream));
        if (met->at < earliest)
            return "too early: " + expectation.description;
        earliest = met->at + apart;
        from = met->behind();
        cursors[expectation.stream] = from;
    }
    return {};
}

bool Expectations::staysAway(const Expectation& expectation, std::chrono::milliseconds duration) const
{
    return !journal.waitFor(cursorOf(expectation.stream), Clock::now() + duration,
                            [&](const Event& event) { return meets(event, expectation); });
}

std::string Expectations::seenInstead(const Expectation& expectation, Place from) const
{
    if (journal.isInterrupted())
        return "interrupted";
    constexpr std::size_t shown = 8;
    auto seen = journal.find(from, shown, isIn(expectation.stream));
    std::string text;
    if (seen.empty())
    {
        text = "nothing on '" + expectation.stream + "'; the last on the others:";
        seen = journal.find(from, shown, [](const Event& event) { return !isDetail(event); });
    }
    for (const auto& event : seen)
        text += (text.empty() ? "" : "\n") + event.stream + " " + event.text;
    return text;
}

} // namespace Bench
