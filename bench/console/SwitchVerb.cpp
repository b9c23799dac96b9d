// Many changes of the page in front, one after the other, and how long the unit takes for each.
#include "bench/console/Verb.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <set>
#include <sstream>

namespace Bench
{

using namespace Pubhead;

namespace
{

struct Step
{
    const char* way;
    const char* command;
    int page; ///< that comes to the front
};

/**
    Which page comes back when one goes is the scheduler's business; a source that does not play is never among them,
    and comes next here.
*/
constexpr int any = NUM_OF_PAGES;

/** A round, over and over. */
constexpr Step steps[] = {
    { "menu", "menu aux", mbAuxin2 },         { "keys", "mcu key source", mbMainMenu },
    { "keys", "mcu key source", any },        { "network", "mfd phone", mbBTAudio },
    { "programs", "program eq show", mbEQ },  { "menu", "menu usb", mbUSBAudio },
    { "keys", "mcu key camera", mbCamera },   { "keys", "mcu key camera", any },
    { "programs", "program am show", mbAM },  { "network", "mfd phone", mbBTAudio },
    { "menu", "menu satellite", mbSirius },   { "programs", "program aux1 show aux1", mbAuxin1 },
    { "keys", "mcu key source", mbMainMenu }, { "network", "mfd phone", mbBTAudio },
    { "menu", "menu setup", mbSetup },        { "programs", "program fm show", mbFM },
    { "menu", "menu ipod", mbiPodAudio },     { "programs", "program eq show", mbEQ },
    { "keys", "mcu key source", mbMainMenu }, { "keys", "mcu key return", any },
    { "network", "mfd phone", mbBTAudio },    { "programs", "program fm show", mbFM },
};

/** Without those to pages whose program neither runs nor can be started, and the ways back from them. */
std::vector<Step> possibleSteps(Unit& unit, std::set<std::string>& leftOut)
{
    const auto running = unit.programs.running();
    std::vector<Step> possible;
    bool wasPossible = true;
    for (const auto& step : steps)
    {
        const auto* info = pageInfo(step.page);
        if (info != nullptr)
            wasPossible = running.contains(info->appType) || unit.programFiles.canStart(info->appType);
        if (wasPossible)
            possible.push_back(step);
        else if (info != nullptr)
            leftOut.insert(appTypeName(info->appType));
    }
    return possible;
}

using Milliseconds = std::chrono::milliseconds;

Journal::Matches isLogged(std::string text)
{
    return [text = std::move(text)](const Event& event)
    { return event.stream == "log" && event.text.find(text) != std::string::npos; };
}

/** The unit has waited for an answer in vain: "ViewManager ... mbFM does not answer its hide". */
bool isSilence(const Event& event)
{
    return event.stream == "log" && event.text.find("ViewManager") != std::string::npos &&
           event.text.find(" does not ") != std::string::npos;
}

/** Of a line of the engine's log, "2026-11-24 21:40:32.123 ...", since midnight. */
Milliseconds timeOfDay(const std::string& line)
{
    constexpr std::size_t timeAt = 11;
    int hours = 0, minutes = 0, seconds = 0, milliseconds = 0;
    char separator = 0;
    std::istringstream text(line.size() > timeAt ? line.substr(timeAt) : "");
    text >> hours >> separator >> minutes >> separator >> seconds >> separator >> milliseconds;
    return std::chrono::hours(hours) + std::chrono::minutes(minutes) + std::chrono::seconds(seconds) +
           Milliseconds(milliseconds);
}

Milliseconds between(const Event& earlier, const Event& later)
{
    const auto difference = timeOfDay(later.text) - timeOfDay(earlier.text);
    return difference < Milliseconds(0) ? difference + std::chrono::hours(24) : difference; // over midnight
}

/** The log's "CurrShowPage : mbFM | CurrPageState : kAppShow". */
std::string shownText(int page)
{
    return std::string("CurrShowPage : ") + pageName(page) + " | CurrPageState : kAppShow";
}

/**
    By the engine's log, from the request that the scheduler takes up until another page is there and the unit is idle;
    empty when that does not happen. `inFront` is the text of the page that is there before and afterwards.
*/
std::optional<Milliseconds> timeTaken(const Journal& journal, Place from, std::string& inFront, int page)
{
    constexpr std::chrono::seconds patience { 60 }; // only bounds a hang
    const auto deadline = Clock::now() + patience;
    const auto request = journal.waitFor(from, deadline, isLogged("ReqAPP: "));
    if (!request)
        return {};
    const auto isShown = [before = isLogged(inFront),
                          wanted = isLogged(page == any ? "| CurrPageState : kAppShow" : shownText(page))](
                             const Event& event) { return wanted(event) && !before(event); };
    const auto shown = journal.waitFor(request->place(), deadline, isShown);
    const auto idle = journal.waitFor(request->place(), deadline, isLogged("| SubState: kIdle"));
    if (!shown || !idle)
        return {};
    inFront = shown->text.substr(shown->text.find("CurrShowPage"));
    return std::max(between(*request, *shown), between(*request, *idle));
}

std::string summary(std::vector<Milliseconds> times)
{
    std::ranges::sort(times);
    const auto at = [&](std::size_t percent)
    { return std::to_string(times[std::min(times.size() * percent / 100, times.size() - 1)].count()) + " ms"; };
    return std::to_string(times.size()) + " switches, median " + at(50) + ", p99 " + at(99) + ", longest " + at(100);
}

} // namespace

Outcome switchPages(Console& console, const Arguments& given)
{
    constexpr Milliseconds usualLimit { 200 };
    const auto limit = given.has(2) ? given.time(2) : usualLimit;
    const auto count = given.number(0);
    auto& unit = console.unit;
    if (auto error = unit.whyUnseen("log"); !error.empty())
        return failed(error);
    std::set<std::string> leftOut;
    const auto round = possibleSteps(unit, leftOut);
    if (round.empty())
        return failed("no program can be started");
    std::map<std::string, std::vector<Milliseconds>> times;
    auto inFront = shownText(unit.programs.pageInFront());
    std::string faults;
    int faultCount = 0;
    // The first round starts the programs and is not measured.
    const auto inRound = static_cast<int>(round.size());
    for (int turn = -inRound; turn < count; ++turn)
    {
        const auto& step = round[static_cast<std::size_t>(turn + inRound) % round.size()];
        const auto from = unit.journal.end();
        if (auto outcome = runLine(console, parseLine(step.command).words); outcome.kind == Outcome::failed)
            return outcome;
        const auto took = timeTaken(unit.journal, from, inFront, step.page);
        if (!took && unit.journal.isInterrupted())
            return failed("interrupted");
        if (!took)
        {
            const auto ended = unit.journal.find(from, 1, isIn("engine"));
            return failed(std::string("'") + step.command + "' does not bring " +
                          (step.page == any ? "another page" : pageName(step.page)) +
                          (ended.empty() ? "" : ", engine " + ended.back().text));
        }
        console.restFinger(); // it waits for what its last key brings
        if (turn < 0)
            continue;
        times[step.way].push_back(*took);
        const auto note = [&](const std::string& what)
        {
            constexpr int mostNamed = 10;
            if (++faultCount <= mostNamed)
                faults += "\n" + std::to_string(turn + 1) + ", " + step.command + ": " + what;
        };
        if (*took > limit)
            note(std::to_string(took->count()) + " ms");
        for (const auto& silence : unit.journal.find(from, 1, isSilence))
            note(silence.text);
    }
    for (const auto& program : leftOut)
        console.row("left out", "pages of " + program + ", which cannot be started");
    for (const auto& [way, each] : times)
        console.row(way, summary(each));
    if (faultCount > 0)
        return failed(std::to_string(faultCount) + " of " + std::to_string(count) + " switches are slow" + faults);
    return {};
}

} // namespace Bench
