#include "bench/console/Consequence.h"
#include "bench/console/ExpectLines.h"
#include "bench/console/Kinds.h"
#include "bench/console/Near.h"
#include "bench/console/Verb.h"
#include "bench/unit/Settings.h"

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

Verbs together(std::initializer_list<Verbs> groups)
{
    Verbs all;
    for (const auto& group : groups)
        std::ranges::copy(group, std::back_inserter(all));
    return all;
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
        { "The microcontroller, the front panel, the tuner and the supply", together({ mcuVerbs(), panelVerbs() }) },
        { "Devices, the audio DSP and the engine's process", together({ deviceVerbs(), dspVerbs() }) },
        { "The source programs and the settings", programVerbs() },
        { "The boat's network and the factory's test equipment", together({ networkVerbs(), testEquipmentVerbs() }) },
        { "Looking, and asking the engine", together({ reportVerbs(), diagnosticsVerbs() }) },
        { "Scenarios", together({ scriptVerbs(), recordVerbs() }) },
    };
    return groups;
}

Outcome runLine(Console& console, const std::string& text)
{
    if (!juce::CharPointer_UTF8::isValidString(text.data(), static_cast<int>(text.size())))
        return failed("the line is not UTF-8");
    if (text.size() > longestLine)
        return failed("the line is longer than " + std::to_string(longestLine) + " bytes");
    const auto line = parseLine(text);
    if (!line.error.empty())
        return failed(line.error);
    if (!console.tellsConsequences)
        return runLine(console, line.words);
    Consequence consequence(console);
    auto outcome = runLine(console, line.words);
    if (outcome.kind == Outcome::acted)
        consequence.tell();
    return outcome;
}

Outcome runLine(Console& console, const Words& words)
{
    if (words.empty())
        return {};
    const auto choice = verbGrammar().choose(words);
    if (choice.arguments)
    {
        const auto at = Clock::now();
        auto outcome = verbs()[choice.pattern].run(console, *choice.arguments);
        if (outcome.kind == Outcome::acted)
            console.recorder.add({ at, quotedLine(words) });
        return outcome;
    }
    if (!choice.error.empty())
        return failed(choice.error);
    return failed("there is no command '" + words[0] + "', see help." + nearText(words[0], completionsFor({})));
}

bool runScript(Console& console, std::istream& script, const std::string& name, AfterFailure after)
{
    const auto& style = console.style;
    auto& output = console.output;
    int number = 0;
    bool succeeded = true;
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
        const bool interrupted = console.unit.journal.isInterrupted() || !output;
        auto outcome = interrupted ? failed("interrupted") : runLine(console, text);
        if (outcome.kind != Outcome::failed && console.difference)
            if (auto difference = console.difference(); !difference.empty())
                outcome = failed(std::move(difference));
        if (outcome.kind == Outcome::leave)
            break;
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
            succeeded = false;
            if (interrupted || after == AfterFailure::end)
                break;
        }
    }
    return succeeded;
}

Words completionsFor(const Words& before)
{
    const auto isFirst = [&](const char* word) { return !before.empty() && before[0] == word; };
    if (isFirst("if-display"))
        return completionsFor({ before.begin() + 1, before.end() });
    if (isFirst("program") && before.size() > 2 && before[2] == "do")
        return ordersBehind(before[1], { before.begin() + 3, before.end() });
    if (isFirst("help"))
        return before.size() == 1 ? completionsFor({}) : Words();
    auto words = verbGrammar().completionsFor(before);
    if (const auto setting = isFirst("set") && before.size() == 2 ? findSetting(before[1]) : std::nullopt)
        words = settingValues(*setting);
    if (isFirst("expect"))
    {
        const bool isAbsence = before.size() > 1 && before[1] == "no";
        const auto more = expectGrammar().completionsFor({ before.begin() + (isAbsence ? 2 : 1), before.end() });
        words.insert(words.end(), more.begin(), more.end());
    }
    return words;
}

bool mayBeFile(const Words& before)
{
    return verbGrammar().mayBeFile(before);
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

std::vector<std::pair<std::string, std::string>> commandsOf(const VerbGroup& group)
{
    std::vector<std::pair<std::string, std::vector<Words>>> linesOf; // by the first word, in the order of the verbs
    for (const auto& verb : group.verbs)
    {
        const auto words = parseLine(verb.line).words;
        auto found = std::ranges::find(linesOf, words[0], &decltype(linesOf)::value_type::first);
        if (found == linesOf.end())
        {
            linesOf.emplace_back(words[0], std::vector<Words>());
            found = std::prev(linesOf.end());
        }
        found->second.push_back(words);
    }
    std::vector<std::pair<std::string, std::string>> commands;
    for (const auto& [name, lines] : linesOf)
    {
        if (lines.size() == 1)
        {
            const auto only = joined(lines.front());
            commands.emplace_back(only, std::ranges::find(group.verbs, only, &Verb::line)->help);
            continue;
        }
        const auto second = [](const Words& line) { return line.size() > 1 ? line[1] : ""; };
        const bool isSame =
            std::ranges::count(lines, second(lines.front()), second) == static_cast<std::ptrdiff_t>(lines.size());
        const std::size_t telling = isSame ? 2 : 1;
        Words told;
        for (const auto& line : lines)
            if (line.size() > telling && std::ranges::find(told, line[telling]) == told.end())
                told.push_back(line[telling]);
        commands.emplace_back(name + (isSame ? " " + second(lines.front()) : ""), joined(told));
    }
    return commands;
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
