// What a person does, written down and done again.
#include "bench/console/Verb.h"
#include "bench/text/Names.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <thread>
#include <utility>

namespace Bench
{

namespace
{

Outcome record(Console& console, const Arguments& given)
{
    if (auto error = console.recorder.start(given[0]); !error.empty())
        return failed(error);
    console.output << "  recording into " << given[0] << "; record off ends it\n";
    return {};
}

Outcome stopRecording(Console& console, const Arguments&)
{
    if (!console.recorder.isRecording())
        return failed("nothing is recorded");
    const auto file = console.recorder.file();
    if (auto error = console.recorder.stop(); !error.empty())
        return failed(error);
    console.output << "  recorded: replay " << file << " does it again\n";
    return {};
}

/** Looks on while a recording is done again, and gives up its waits as soon as it comes out otherwise. */
class Lookout
{
public:
    Lookout(Unit& unit, RecordedChanges changesToFollow)
        : journal(unit.journal)
        , changes(std::move(changesToFollow))
        , nextPage(journal.end())
        , nextSource(nextPage)
    {
        const auto mcu = unit.mcu->state();
        if (const auto source = mcu.wanted ? mcu.wanted : mcu.source)
            changes.begin({ 0, {}, "mcu source", sourceName(*source) });
        changes.begin({ 0, {}, std::string("page ") + Pubhead::pageName(unit.programs.pageInFront()), "shown" });
        thread = std::jthread([this](const std::stop_token& stop) { watch(stop); });
    }

    /** Empty when there was none until now. */
    std::string end()
    {
        thread = {};
        look(Clock::now());
        return difference;
    }

private:
    Journal& journal;
    RecordedChanges changes;
    Place nextPage, nextSource; ///< of what has not been looked at; a program reports a page late
    std::string difference;
    std::jthread thread; // last: it uses all the others

    void watch(const std::stop_token& stop)
    {
        constexpr std::chrono::milliseconds lookAround { 100 };
        while (!stop.stop_requested() && !journal.isInterrupted())
            if (!look(Clock::now() + lookAround))
                return journal.interrupt(false);
    }

    /** At what comes by then. False when it is not what was recorded. */
    bool look(Clock::time_point deadline)
    {
        while (difference.empty())
        {
            const auto nextOf = [this](const Event& event) -> Place&
            { return event.stream.starts_with("page ") ? nextPage : nextSource; };
            const auto isNew = [&](const Event& event) {
                return (event.stream.starts_with("page ") || event.stream == "mcu source") &&
                       event.place() >= nextOf(event);
            };
            const auto event = journal.waitFor(std::min(nextPage, nextSource), deadline, isNew);
            if (!event)
                return true;
            nextOf(*event) = event->behind();
            difference = changes.follow(*event);
        }
        return false;
    }
};

/** Stops at the first line that fails: that is the first difference; for a recording it is any other page or source, too. */
Outcome replay(Console& console, const Arguments& given)
{
    std::ifstream file(given[0]);
    if (!file)
        return failed(given[0] + ": cannot be read");
    std::string text { std::istreambuf_iterator<char>(file), {} };
    std::erase(text, '\r');
    // What comes before the mark leads to where the recording began.
    const auto changes = RecordedChanges::of(text);
    const auto begin = changes ? text.find("\nmark\n") + 1 : 0;
    const auto headLines = static_cast<std::size_t>(std::ranges::count(text.substr(0, begin), '\n'));
    const auto name = std::filesystem::path(given[0]).filename().string();
    const auto before = std::exchange(console.speed, given.speed(1));
    const bool told = std::exchange(console.tellsConsequences, false);
    const auto run = [&](const std::string& part)
    {
        std::istringstream lines(part);
        return runScript(console, lines, name, AfterFailure::end);
    };
    bool same = run(text.substr(0, begin));
    std::string difference;
    if (same)
    {
        std::optional<Lookout> lookout;
        if (changes)
            lookout.emplace(console.unit, *changes);
        same = run(std::string(headLines, '\n') + text.substr(begin));
        difference = lookout ? lookout->end() : "";
    }
    console.speed = before;
    console.tellsConsequences = told;
    if (!difference.empty())
        console.unit.journal.goOn();
    return same && difference.empty()
               ? Outcome {}
               : failed("stopped at the first difference" + (difference.empty() ? "" : ": " + difference));
}

} // namespace

Verbs recordVerbs()
{
    return {
        { "record FILE", "Writes what is done from now on into a file, with times and what came of it: a scenario.",
          record },
        { "record off", "Ends that.", stopRecording },
        { "replay FILE [SPEED]", "Does a scenario again, SPEED times as fast; stops at the first difference.", replay },
    };
}

} // namespace Bench
