// What a person does, written down and done again.
#include "bench/console/Verb.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <tuple>
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

/** Keeps the times that the scenario says, and tells nothing between them. */
bool runReplay(Console& console, const std::string& file, const std::string& text, double speed)
{
    const auto started = console.expectations.beginningOfAll();
    const auto difference = [&console, &text, started]
    {
        const auto from = console.expectations.beginningOfAll();
        return from == started ? "" : differenceFrom(text, recordedEvents(console.unit.journal, from));
    };
    const auto before = std::make_tuple(std::exchange(console.speed, speed),
                                        std::exchange(console.tellsConsequences, false), console.difference);
    console.difference = isRecording(text) ? std::function<std::string()>(difference) : nullptr;
    console.replayed.push_back(file);
    std::istringstream lines(text);
    const bool same = runScript(console, lines, std::filesystem::path(file).filename().string(), AfterFailure::end);
    console.replayed.pop_back();
    std::tie(console.speed, console.tellsConsequences, console.difference) = before;
    return same;
}

/** Stops at the first line that fails, or that brings another page or source than the recording has: the first difference. */
Outcome replay(Console& console, const Arguments& given)
{
    std::error_code error;
    const auto file = std::filesystem::weakly_canonical(given[0], error).string();
    std::ifstream stream(file);
    if (!stream)
        return failed(given[0] + ": cannot be read");
    if (std::ranges::find(console.replayed, file) != console.replayed.end())
        return failed(given[0] + " is being replayed");
    std::string text { std::istreambuf_iterator<char>(stream), {} };
    std::erase(text, '\r'); // an editor may have put them there
    return runReplay(console, file, text, given.speed(1)) ? Outcome {} : failed("stopped at the first difference");
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
