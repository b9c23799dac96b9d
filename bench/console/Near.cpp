#include "bench/console/Near.h"

#include "bench/text/Names.h"

#include <algorithm>
#include <map>
#include <numeric>

namespace Bench
{

namespace
{

std::string bare(const std::string& name)
{
    for (const auto* begin : { "mb", "App" })
        if (name.starts_with(begin))
            return lowerCase(name.substr(std::string_view(begin).size()));
    return lowerCase(name);
}

/** How many letters have to be put in, left out or replaced, or change places with the next. */
std::size_t editsBetween(const std::string& from, const std::string& to)
{
    std::vector<std::vector<std::size_t>> edits(from.size() + 1, std::vector<std::size_t>(to.size() + 1));
    std::iota(edits[0].begin(), edits[0].end(), 0);
    for (std::size_t i = 1; i <= from.size(); ++i)
    {
        edits[i][0] = i;
        for (std::size_t k = 1; k <= to.size(); ++k)
        {
            const auto replaced = edits[i - 1][k - 1] + (from[i - 1] == to[k - 1] ? 0 : 1);
            edits[i][k] = std::min({ edits[i][k - 1] + 1, edits[i - 1][k] + 1, replaced });
            if (i > 1 && k > 1 && from[i - 1] == to[k - 2] && from[i - 2] == to[k - 1])
                edits[i][k] = std::min(edits[i][k], edits[i - 2][k - 2] + 1);
        }
    }
    return edits.back().back();
}

} // namespace

Words nearNames(const std::string& word, const Words& names)
{
    constexpr std::size_t most = 3, longEnough = 3;
    const auto wanted = bare(word);
    const auto allowed = (wanted.size() + 1) / 3;
    std::multimap<std::size_t, std::string> found;
    for (const auto& name : names)
    {
        const auto edits = editsBetween(wanted, bare(name));
        if (edits <= allowed)
            found.emplace(edits, name);
        else if (wanted.size() >= longEnough && bare(name).starts_with(wanted))
            found.emplace(allowed + 1, name);
    }
    Words nearest;
    for (const auto& [edits, name] : found)
        if (nearest.size() < most && std::ranges::find(nearest, bare(name), bare) == nearest.end())
            nearest.push_back(name);
    return nearest;
}

std::string nearText(const std::string& word, const Words& names)
{
    std::string text;
    for (const auto& name : nearNames(word, names))
        text += (text.empty() ? " Is it " : " or ") + name;
    return text.empty() ? "" : text + "?";
}

} // namespace Bench
