#include "bench/console/Console.h"

#include "bench/console/Columns.h"
#include "bench/console/Verb.h"

#include <istream>
#include <ostream>
#include <thread>

namespace Bench
{

Console::Console(Unit& unitToUse, Style styleToUse, std::ostream& outputToUse, bool somebodyWatches)
    : unit(unitToUse)
    , style(styleToUse)
    , output(outputToUse)
    , watched(somebodyWatches)
    , expectations(unitToUse.journal)
{
}

Outcome Console::run(const std::string& text)
{
    const auto line = parseLine(text);
    return line.error.empty() ? run(line.words) : failed(line.error);
}

Outcome Console::run(const Words& line)
{
    return line.empty() ? Outcome {} : runVerb(*this, line);
}

bool Console::runScript(std::istream& script, const std::string& name)
{
    int number = 0;
    for (std::string text; std::getline(script, text);)
    {
        ++number;
        auto words = parseLine(text).words;
        if (words.size() > 1 && words[0] == "if-display")
            words.erase(words.begin());
        const bool speaksForItself =
            words.empty() || words[0] == "say" || words[0] == "expect" || words[0] == "pause" || words[0] == "trail";
        if (!speaksForItself)
            output << "  " << style.accent("›") << " " << text << "\n";
        output.flush();
        const auto outcome = unit.journal.isInterrupted() ? failed("interrupted") : run(text);
        if (outcome.kind == Outcome::leave)
            return true;
        if (outcome.kind == Outcome::failed)
        {
            const auto end = outcome.error.find('\n');
            output << "  "
                   << style.bad("✗ " + name + ":" + std::to_string(number) + ": " + outcome.error.substr(0, end))
                   << "\n";
            std::string rest = end == std::string::npos ? "" : "    " + outcome.error.substr(end + 1);
            for (std::size_t at = 0; (at = rest.find('\n', at)) != std::string::npos; at += 5)
                rest.replace(at, 1, "\n    ");
            output << style.dim(rest) << (rest.empty() ? "" : "\n") << "    in: " << text << "\n";
            return false;
        }
    }
    return true;
}

void Console::moveFinger()
{
    std::this_thread::sleep_until(nextKey);
    restFinger();
}

void Console::row(const std::string& label, const std::string& value) const
{
    constexpr int labelWidth = 16;
    output << "  " << style.dim(padded(label + " ", labelWidth)) << value << "\n";
}

} // namespace Bench
