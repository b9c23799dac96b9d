#include "bench/console/Grammar.h"

#include "bench/console/Kinds.h"
#include "bench/console/Near.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <sstream>

namespace Bench
{

namespace
{

bool isFixedWord(const std::string& word)
{
    return std::isupper(static_cast<unsigned char>(word.front())) == 0;
}

} // namespace

int Arguments::number(std::size_t at, int otherwise) const
{
    return parseNumber((*this)[at], std::numeric_limits<int>::min(), std::numeric_limits<int>::max())
        .value_or(otherwise);
}

double Arguments::decimal(std::size_t at) const
{
    return parseDecimal((*this)[at], std::numeric_limits<double>::lowest(), std::numeric_limits<double>::max())
        .value_or(0);
}

double Arguments::speed(std::size_t at) const
{
    return parseSpeed((*this)[at]).value_or(1);
}

std::chrono::milliseconds Arguments::time(std::size_t at) const
{
    return parseDuration((*this)[at]).value_or(std::chrono::milliseconds(0));
}

Source Arguments::source(std::size_t at) const
{
    Words name = words(at);
    if (has(at + 1))
        name.push_back((*this)[at + 1]);
    return findSource(name).value_or(Source());
}

bool Grammar::Place::fits(const std::string& word) const
{
    return std::ranges::any_of(choices,
                               [&](const std::string& choice)
                               {
                                   if (isFixedWord(choice))
                                       return word == choice;
                                   const auto* kind = findKind(choice);
                                   return kind == nullptr || kind->accepts(word);
                               });
}

bool Grammar::Place::hasKind() const
{
    return std::ranges::any_of(choices, [](const std::string& choice) { return findKind(choice) != nullptr; });
}

bool Grammar::Place::mayBe(const std::string& word) const
{
    return fits(word) || !std::ranges::all_of(choices, isFixedWord);
}

Words Grammar::Place::names() const
{
    Words all;
    for (const auto& choice : choices)
        if (isFixedWord(choice))
            all.push_back(choice);
        else if (const auto* kind = findKind(choice); kind != nullptr && kind->names)
            std::ranges::copy(kind->names(), std::back_inserter(all));
    return all;
}

std::string Grammar::Place::wrong(const std::string& word) const
{
    std::string text;
    for (const auto& choice : choices)
        if (const auto* kind = findKind(choice))
            text += "'" + word + "' is no " + lowerCase(kind->name) + ": " + kind->meaning;
        else
            text += ", or " + choice;
    std::istringstream parts(word); // of a list
    std::string near;
    for (std::string part; near.empty() && std::getline(parts, part, ',');)
        near = fits(part) ? "" : nearText(part, names());
    return text + (near.empty() ? "" : "." + near);
}

Grammar::Pattern Grammar::parse(const std::string& text)
{
    Pattern pattern { text, {}, {} };
    std::istringstream words(text);
    for (std::string word; words >> word;)
    {
        auto& place = pattern.places.emplace_back();
        place.optional = word.starts_with("[");
        std::erase_if(word, [](char c) { return c == '[' || c == ']'; });
        place.repeats = word.ends_with("...");
        word.resize(word.size() - (place.repeats ? 3 : 0));
        std::istringstream choices(word);
        for (std::string choice; std::getline(choices, choice, '|');)
            place.choices.push_back(choice);
        const bool isFixed = !place.optional && place.choices.size() == 1 && isFixedWord(place.choices.front());
        if (isFixed && pattern.begin.size() + 1 == pattern.places.size())
            pattern.begin.push_back(place.choices.front());
    }
    return pattern;
}

/**
    The words at their places, if there are neither too many nor too few: what may be left out is filled from the
    left, a fixed word only by itself.
*/
std::optional<std::vector<Words>> Grammar::distribute(const Pattern& pattern, const Words& line)
{
    const auto& places = pattern.places;
    const auto needed = static_cast<std::size_t>(std::ranges::count(places, false, &Place::optional));
    const bool repeats = places.back().repeats;
    if (line.size() < needed || (line.size() > places.size() && !repeats))
        return {};
    auto surplus = line.size() - needed;
    std::vector<Words> values(places.size());
    std::size_t word = 0;
    // "events mcu": what is the name of something further on is not meant to be a number here.
    const auto isNameBehind = [&](std::size_t place)
    {
        return !places[place].fits(line[word]) &&
               std::any_of(places.begin() + static_cast<std::ptrdiff_t>(place) + 1, places.end(),
                           [&](const Place& each)
                           {
                               const auto names = each.names();
                               return each.optional && std::ranges::find(names, line[word]) != names.end();
                           });
    };
    for (std::size_t i = 0; i < places.size(); ++i)
        if (!places[i].optional || (surplus > 0 && places[i].mayBe(line[word]) && !isNameBehind(i)))
        {
            values[i].push_back(line[word++]);
            surplus -= places[i].optional ? 1 : 0;
        }
    if (word < line.size() && !repeats)
        return {};
    for (; word < line.size(); ++word)
        values.back().push_back(line[word]);
    return values;
}

Grammar::Choice Grammar::choose(const Words& line) const
{
    const Pattern* closest = nullptr;
    for (const auto& pattern : patterns)
    {
        const auto [inLine, inPattern] = std::ranges::mismatch(line, pattern.begin);
        if (inPattern == pattern.begin.end() && (closest == nullptr || closest->begin.size() < pattern.begin.size()))
            closest = &pattern;
    }
    std::string wrong;
    for (std::size_t i = 0; i < patterns.size() && closest != nullptr; ++i)
    {
        auto values = patterns[i].begin == closest->begin ? distribute(patterns[i], line) : std::nullopt;
        if (!values)
            continue;
        const auto error = wrongIn(patterns[i], *values);
        if (!error)
        {
            values->erase(values->begin(), values->begin() + static_cast<std::ptrdiff_t>(closest->begin.size()));
            return { i, Arguments(line, std::move(*values)), {} };
        }
        if (wrong.empty())
            wrong = *error;
    }
    return { 0, {}, wrong.empty() ? explain(line) : wrong };
}

/** What is wrong with the first word that does not fit; nothing to be told ("") when a fixed word is another. */
std::optional<std::string> Grammar::wrongIn(const Pattern& pattern, const std::vector<Words>& values)
{
    std::optional<std::string> first;
    for (std::size_t i = 0; i < values.size(); ++i)
        for (const auto& word : values[i])
            if (const auto& place = pattern.places[i]; !place.mayBe(word))
                return "";
            else if (!first && !place.fits(word))
                first = place.wrong(word);
    return first;
}

/** Goes along the pattern as far as the words of the line may be meant so; `next` takes what may come behind them. */
void Grammar::follow(const Pattern& pattern, std::size_t place, const Words& line, std::size_t word,
                     std::size_t& farthest, std::set<const Place*>* next)
{
    farthest = std::max(farthest, word);
    if (place == pattern.places.size())
        return;
    const auto& here = pattern.places[place];
    if (word < line.size() && here.mayBe(line[word]))
        follow(pattern, here.repeats ? place : place + 1, line, word + 1, farthest, next);
    if (word == line.size() && next != nullptr)
        next->insert(&here);
    if (here.optional)
        follow(pattern, place + 1, line, word, farthest, next);
}

/** The first word that can be nothing at its place, with what it may have been meant to be; else how the line goes. */
std::string Grammar::explain(const Words& line) const
{
    std::size_t farthest = 0;
    const Place* kind = nullptr;
    for (const auto& pattern : patterns)
    {
        std::size_t place = 0;
        while (place < std::min(pattern.places.size(), line.size()) && pattern.places[place].fits(line[place]))
            ++place;
        if (place > farthest)
            kind = nullptr;
        farthest = std::max(farthest, place);
        const bool isLast = place == farthest && place < std::min(pattern.places.size(), line.size());
        if (isLast && kind == nullptr && pattern.places[place].hasKind())
            kind = &pattern.places[place];
    }
    if (farthest == 0 || farthest == line.size())
        return usageFor(line);
    const auto& word = line[farthest];
    if (kind != nullptr)
        return kind->wrong(word);
    const Words before(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(farthest));
    const auto near = nearText(word, completionsFor(before));
    return near.empty() ? usageFor(line) : "'" + word + "' makes no sense behind '" + joined(before) + "'." + near;
}

std::set<const Grammar::Place*> Grammar::placesBehind(const Words& before) const
{
    std::set<const Place*> next;
    std::size_t farthest = 0;
    for (const auto& pattern : patterns)
        follow(pattern, 0, before, 0, farthest, &next);
    return next;
}

Words Grammar::completionsFor(const Words& before) const
{
    std::set<std::string> all;
    for (const auto* place : placesBehind(before))
        std::ranges::copy(place->names(), std::inserter(all, all.end()));
    return { all.begin(), all.end() };
}

bool Grammar::mayBeFile(const Words& before) const
{
    return std::ranges::any_of(placesBehind(before), [](const Place* place)
                               { return place->choices.front() == "FILE" || place->choices.front() == "RESULT"; });
}

std::string Grammar::usageFor(const Words& line) const
{
    std::size_t most = 1;
    std::string usage;
    for (const auto& pattern : patterns)
    {
        std::size_t farthest = 0;
        follow(pattern, 0, line, 0, farthest, nullptr);
        if (farthest > most)
            usage.clear();
        if (farthest >= most)
            usage += (usage.empty() ? "usage: " : "\n       ") + prefix + pattern.text;
        most = std::max(most, farthest);
    }
    return usage;
}

} // namespace Bench
