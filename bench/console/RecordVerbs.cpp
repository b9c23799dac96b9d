// What a person does, written down and done again.
#include "bench/console/Verb.h"

#include <filesystem>
#include <fstream>
#include <ostream>
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

/** Stops at the first line that fails: that is the first difference. */
Outcome replay(Console& console, const Arguments& given)
{
    std::ifstream file(given[0]);
    if (!file)
        return failed(given[0] + ": cannot be read");
    const auto before = std::exchange(console.speed, given.speed(1));
    const bool same = runScript(console, file, std::filesystem::path(given[0]).filename().string(), AfterFailure::end);
    console.speed = before;
    return same ? Outcome {} : failed("stopped at the first difference");
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
