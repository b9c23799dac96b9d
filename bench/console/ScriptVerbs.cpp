// What scenarios are made of, and help.
#include "bench/console/ExpectLines.h"
#include "bench/console/Near.h"
#include "bench/console/Verb.h"
#include "ctl/Columns.h"
#include "ctl/Table.h"

#include <algorithm>
#include <ostream>
#include <utility>

namespace Bench
{

namespace
{

/** Of what was waited for in vain: a person who gives up has not waited for all of the time. */
Outcome notSeen(const Console& console, const std::string& error)
{
    return failed(console.unit.journal.isInterrupted() ? "interrupted" : error);
}

/** What can never come is an error, too. */
ParsedExpectation parseFor(const Console& console, const Words& words)
{
    auto parsed = parseExpectation(words);
    if (parsed.error.empty())
        parsed.error = console.unit.whyUnseen(parsed.expectation.stream, parsed.expectation.text);
    return parsed;
}

Outcome expect(Console& console, const Arguments& given)
{
    auto words = given.words(0);
    auto limit = Expectations::defaultLimit;
    if (auto error = takeTime(words, "within", limit); !error.empty())
        return failed(error);
    const auto parsed = parseFor(console, words);
    if (!parsed.error.empty())
        return failed(parsed.error);
    const auto start = Clock::now();
    const auto instead = console.expectations.wait(parsed.expectation, limit);
    if (!instead.empty())
        return notSeen(console, "not seen within " + std::to_string(limit.count()) +
                                    " ms: " + parsed.expectation.description + "\n" + instead);
    return met(console, parsed.expectation.description, start);
}

Outcome expectAbsence(Console& console, const Arguments& given)
{
    auto words = given.words(0);
    const bool hasEnd = std::ranges::find(words, "until") != words.end();
    auto limit = hasEnd ? Expectations::defaultLimit : Expectations::defaultAbsence;
    if (auto error = takeTime(words, "within", limit); !error.empty())
        return failed(error);
    const auto until = std::ranges::find(words, "until");
    const auto absent = parseFor(console, { words.begin(), until });
    const auto end = hasEnd ? parseFor(console, { until + 1, words.end() }) : ParsedExpectation();
    for (const auto& error : { absent.error, end.error })
        if (!error.empty())
            return failed(error);
    if (hasEnd)
    {
        if (auto wrong = console.expectations.staysAwayUntil(absent.expectation, end.expectation, limit);
            !wrong.empty())
            return notSeen(console, wrong);
    }
    else if (!console.expectations.staysAway(absent.expectation, limit))
        return failed("seen although it should not be: " + absent.expectation.description);
    else if (console.unit.journal.isInterrupted())
        return failed("interrupted");
    return met(console,
               "no " + absent.expectation.description + (hasEnd ? " until " + end.expectation.description : ""));
}

Outcome expectOrder(Console& console, const Arguments& given)
{
    auto words = given.words(0);
    auto limit = Expectations::defaultLimit;
    std::chrono::milliseconds apart { 0 };
    if (auto error = takeTime(words, "within", limit); !error.empty())
        return failed(error);
    if (auto error = takeTime(words, "apart", apart); !error.empty())
        return failed(error);
    std::vector<Expectation> inOrder;
    std::string all;
    for (const auto& word : words)
    {
        auto parsed = parseFor(console, parseLine(word).words);
        if (!parsed.error.empty())
            return failed(parsed.error);
        all += (all.empty() ? "" : ", then ") + parsed.expectation.description;
        inOrder.push_back(std::move(parsed.expectation));
    }
    if (inOrder.size() < 2)
        return failed("an order is of two expectations or more, each in quotes");
    if (const auto instead = console.expectations.waitInOrder(inOrder, limit, apart); !instead.empty())
        return notSeen(console, "not seen in this order within " + std::to_string(limit.count()) + " ms; " + instead);
    return met(console, all);
}

/** For a person, where nothing else is seen of a line. */
Outcome remarked(Console& console, const char* text)
{
    if (console.tellsConsequences)
        console.output << console.style.dim(std::string("  ") + text) << "\n";
    return {};
}

Outcome chooseSections(Console& console, const Arguments& given)
{
    if (console.chosenSections)
        return failed("the transcript's sections have been chosen already");
    auto& sections = console.chosenSections.emplace();
    for (const auto& word : given.words(0))
        if (word == "mcu")
            sections.mcu = true;
        else if (word == "devices")
            sections.devices = true;
        else
            sections.programs.insert(findApp(word));
    return remarked(console, "compared at the end of a script with --transcript");
}

Outcome say(Console& console, const Arguments& given)
{
    console.output << "\n" << console.style.bold(given.text(0)) << "\n";
    console.headline = console.unit.journal.end();
    return {};
}

Outcome wait(Console& console, const Arguments& given)
{
    auto& journal = console.unit.journal;
    const auto time = std::chrono::duration_cast<Clock::duration>(given.time(0) / console.speed);
    journal.waitFor(journal.end(), Clock::now() + time, [](const Event&) { return false; });
    return {};
}

Outcome pause(Console& console, const Arguments& given)
{
    // For the eye only: nothing that a script checks may rest on it, so without an onlooker it is left out.
    return console.watched ? wait(console, given) : Outcome {};
}

Outcome ifDisplay(Console& console, const Arguments& given)
{
    if (!console.unit.engine().display().empty())
        return runLine(console, given.words(0));
    console.output << console.style.dim("    left out without a display") << "\n";
    return {};
}

/** What is too long for the terminal goes on below its column. */
std::string helpLine(const Style& style, const std::string& command, const std::string& rest)
{
    constexpr int indent = 2, between = 1, longest = 27;
    constexpr int column = indent + longest + between;
    return std::string(indent, ' ') + Ctl::padded(command, longest + between) +
           style.dim(Ctl::broken(rest, style.width > column ? style.width - column : 0, column)) + "\n";
}

Outcome help(Console& console, const Arguments& given)
{
    const auto& style = console.style;
    auto& output = console.output;
    if (given.has(0))
    {
        const auto lines = helpFor(given[0]);
        for (const auto& [line, text] : lines)
            output << "  " << style.accent(line) << "\n      " << text << "\n";
        return lines.empty()
                   ? failed("there is no command '" + given[0] + "'." + nearText(given[0], completionsFor({})))
                   : Outcome {};
    }
    for (const auto& group : allVerbs())
    {
        output << style.bold(group.title) << "\n";
        for (const auto& [command, rest] : commandsOf(group))
            output << helpLine(style, command, rest);
    }
    output << style.dim(
                  "help WORD tells the rest. Names are the system's (mbEQ, AppRadio) or short (eq, radio, fm, aux). "
                  "Tab completes.")
           << "\n";
    return {};
}

} // namespace

Outcome met(Console& console, const std::string& what, std::optional<Clock::time_point> start)
{
    console.output << "  " << console.style.good("✓") << " " << what;
    if (start)
        console.output << console.style.dim(
            "  " +
            std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - *start).count()) +
            " ms");
    console.output << "\n";
    return {};
}

Verbs scriptVerbs()
{
    return {
        { "expect EXPECTATION...",
          "Waits until it is so, 60 s unless 'within TIME' ends the line. Each stream has its own place: what met one "
          "expectation is behind.",
          expect },
        { "expect no EXPECTATION...",
          "That it stays away until something else has happened ('until EXPECTATION'), or for 1 s ('within TIME').",
          expectAbsence },
        { "expect order EXPECTATION...",
          "Each in quotes: one after the other, with at least so much time between them if 'apart TIME' ends the line.",
          expectOrder },
        { "mark", "From here on, expect looks only at what comes now.",
          [](Console& console, auto&)
          {
              console.expectations.forgetThePast();
              return remarked(console, "what came before meets no expect any more");
          } },
        { "transcript SECTION...",
          "Chooses, once in a script, whose part of what the unit sends --transcript compares; else it is all.",
          chooseSections },
        { "switches COUNT",
          "So many changes of the page in front, one after the other, by keys, the menu, the network and programs. "
          "Fails when one takes longer than 200 ms, or when the unit waits for an answer in vain.",
          switchPages },
        { "switches COUNT within TIME", "The same with another limit.", switchPages },
        { "say [TEXT...]", "A headline.", say },
        { "pause TIME", "Gives the eye time. Left out when nobody watches.", pause },
        { "wait TIME", "Lets so much time pass.", wait },
        { "if-display WORD...", "Leaves the rest of the line out when nothing is drawn.", ifDisplay },
        { "help [WORD]", "The commands, or all that begins with this word.", help },
        { "quit", "Ends the unit and leaves.", [](Console&, auto&) -> Outcome { return { Outcome::leave }; } },
    };
}

} // namespace Bench
