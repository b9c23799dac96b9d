#include "bench/console/ExpectLines.h"
#include "bench/console/Kinds.h"
#include "bench/console/Verb.h"

#include <algorithm>
#include <istream>
#include <ostream>

namespace Bench
{

namespace
{

/** All of them in one row, as the grammar counts them. */
std::span<const Verb> verbs()
{
    static const Verbs all = []
    {
        Verbs joinedGroups;
        for (const auto& group : allVerbs())
            std::ranges::copy(group.verbs, std::back_inserter(joinedGroups));
        return joinedGroups;
    }();
    return all;
}

const Grammar& verbGrammar()
{
    static const Grammar grammar(verbs());
    return grammar;
}

std::string tableRow(const std::string& code, const std::string& text)
{
    auto row = "| `" + code + "` | " + text + " |\n";
    for (auto at = row.find('|', 3); at < row.rfind("` | "); at = row.find('|', at + 2))
        row.insert(at, "\\");
    return row;
}

} // namespace

std::span<const VerbGroup> allVerbs()
{
    static const VerbGroup groups[] = {
        { "The microcontroller", mcuVerbs() },
        { "The tuner, the supply and the panel", panelVerbs() },
        { "Devices", deviceVerbs() },
        { "The source programs", programVerbs() },
        { "The boat's network", networkVerbs() },
        { "The factory's test equipment", testEquipmentVerbs() },
        { "The audio DSP", dspVerbs() },
        { "Looking", reportVerbs() },
        { "The engine about itself", diagnosticsVerbs() },
        { "Scenarios", scriptVerbs() },
        { "Recordings by hand", recordVerbs() },
    };
    return groups;
}

Outcome runLine(Console& console, const std::string& text)
{
    const auto line = parseLine(text);
    return line.error.empty() ? runLine(console, line.words) : failed(line.error);
}

Outcome runLine(Console& console, const Words& words)
{
    if (words.empty())
        return {};
    const auto choice = verbGrammar().choose(words);
    if (choice.arguments)
        return verbs()[choice.pattern].run(console, *choice.arguments);
    return failed(choice.error.empty() ? "there is no command '" + words[0] + "', see help" : choice.error);
}

bool runScript(Console& console, std::istream& script, const std::string& name)
{
    const auto& style = console.style;
    auto& output = console.output;
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
        const auto outcome = console.unit.journal.isInterrupted() ? failed("interrupted") : runLine(console, text);
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

Words completionsFor(const Words& before)
{
    const auto isFirst = [&](const char* word) { return !before.empty() && before[0] == word; };
    if (isFirst("if-display"))
        return completionsFor({ before.begin() + 1, before.end() });
    auto words = verbGrammar().completionsFor(before);
    if (isFirst("expect"))
    {
        const bool isAbsence = before.size() > 1 && before[1] == "no";
        const auto more = expectGrammar().completionsFor({ before.begin() + (isAbsence ? 2 : 1), before.end() });
        words.insert(words.end(), more.begin(), more.end());
    }
    return words;
}

std::vector<std::pair<std::string, std::string>> helpFor(const std::string& word)
{
    std::vector<std::pair<std::string, std::string>> lines;
    const auto add = [&](const std::string& line, const std::string& help)
    {
        if (word.empty() || line == word || line.starts_with(word + " "))
            lines.emplace_back(line, help);
    };
    for (const auto& verb : verbs())
        add(verb.line, verb.help);
    for (const auto& expectation : allExpectLines())
        add("expect " + expectation.line, expectation.help);
    return lines;
}

std::string verbTables()
{
    std::string text = "| Say | What it does |\n|---|---|\n";
    for (const auto& group : allVerbs())
    {
        text += std::string("| **") + group.title + "** | |\n";
        for (const auto& verb : group.verbs)
            text += tableRow(verb.line, verb.help);
    }
    text += "\n| Say after `expect` | It is met by |\n|---|---|\n";
    for (const auto& expectation : allExpectLines())
        text += tableRow(expectation.line, expectation.help);
    text += "\n| Word in capitals | May be |\n|---|---|\n";
    for (const auto& kind : allKinds())
        text += tableRow(kind.name, kind.meaning);
    return text;
}

} // namespace Bench
