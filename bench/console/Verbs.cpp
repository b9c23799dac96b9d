#include "bench/console/ExpectLines.h"
#include "bench/console/Kinds.h"
#include "bench/console/Verb.h"

#include <algorithm>

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
    static const Grammar grammar = []
    {
        std::vector<std::string> patterns;
        for (const auto& verb : verbs())
            patterns.push_back(verb.line);
        return Grammar(patterns);
    }();
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
        { "Scenarios", scriptVerbs() },
    };
    return groups;
}

Outcome runVerb(Console& console, const Words& line)
{
    const auto choice = verbGrammar().choose(line);
    if (choice.arguments)
        return verbs()[choice.pattern].run(console, *choice.arguments);
    return failed(choice.error.empty() ? "there is no command '" + line[0] + "', see help" : choice.error);
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
    const auto head = [](const std::string& title, const char* columns)
    { return "### " + title + "\n\n" + columns + "\n|---|---|\n"; };
    std::string text;
    for (const auto& group : allVerbs())
    {
        text += head(group.title, "| Say | What it does |");
        for (const auto& verb : group.verbs)
            text += tableRow(verb.line, verb.help);
        text += "\n";
    }
    text += head("What can be expected", "| Say after `expect` | It is met by |");
    for (const auto& expectation : allExpectLines())
        text += tableRow(expectation.line, expectation.help);
    text += "\n" + head("Words in capitals", "| Word | May be |");
    for (const auto& kind : allKinds())
        text += tableRow(kind.name, kind.meaning);
    return text;
}

} // namespace Bench
