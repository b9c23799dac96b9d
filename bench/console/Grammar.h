#pragma once

#include "bench/console/Script.h"
#include "bench/text/Names.h"

#include <set>

namespace Bench
{

/**
    The words of a line by their places in its pattern, counted from the first that is no fixed word: in "mcu hold KEY
    [ORIGIN] TIME" KEY is 0. The grammar has checked them, so each can be read as its kind.
*/
class Arguments
{
public:
    Arguments(Words lineToKeep, std::vector<Words> valuesToKeep)
        : all(std::move(lineToKeep))
        , values(std::move(valuesToKeep))
    {
    }

    bool has(std::size_t at) const { return at < values.size() && !values[at].empty(); }
    /** "" when it was left out. */
    std::string operator[](std::size_t at) const { return has(at) ? values[at].front() : ""; }
    /** The words from this place on, for a last place with several words. */
    Words words(std::size_t at) const { return has(at) ? values[at] : Words(); }
    std::string text(std::size_t at) const { return joined(words(at)); }
    const Words& line() const { return all; }

    int number(std::size_t at, int otherwise = 0) const;
    std::uint8_t byte(std::size_t at, int otherwise = 0) const
    {
        return static_cast<std::uint8_t>(number(at, otherwise));
    }
    std::vector<std::uint8_t> bytes(std::size_t at) const { return parseBytes(words(at)).bytes; }
    double decimal(std::size_t at) const;
    double speed(std::size_t at) const; ///< 1 when it was left out
    /** None when it is the word "off", or left out. */
    std::chrono::milliseconds time(std::size_t at) const;
    /** A name and a number that may follow. */
    Source source(std::size_t at) const;

private:
    Words all;
    std::vector<Words> values;
};

/**
    The patterns of all lines. A pattern has fixed words ("mcu hold"), words of a kind ("KEY"), choices ("TIME|off"),
    what may be left out ("[ORIGIN]") and, at the end, what may come several times ("BYTE...").
*/
class Grammar
{
public:
    /** Of rows that have a `line` each. */
    template <typename Rows>
    explicit Grammar(const Rows& rows, std::string usagePrefix = {})
        : prefix(std::move(usagePrefix))
    {
        for (const auto& row : rows)
            patterns.push_back(parse(row.line));
    }

    struct Choice
    {
        std::size_t pattern = 0; ///< counted in the order of the patterns
        std::optional<Arguments> arguments;
        std::string error; ///< when there are none; empty when no pattern has even the first word
    };
    Choice choose(const Words& line) const;
    /** Every word that may come next. */
    Words completionsFor(const Words& before) const;
    /** Whether a file may come next. */
    bool mayBeFile(const Words& before) const;

private:
    struct Place
    {
        Words choices;
        bool optional = false, repeats = false;
        bool fits(const std::string& word) const;
        /** Whether it is one of the fixed words, or there is a kind to choose. */
        bool mayBe(const std::string& word) const;
        bool hasKind() const;
        Words names() const;
        std::string wrong(const std::string& word) const;
    };
    struct Pattern
    {
        std::string text;
        std::vector<Place> places;
        Words begin; ///< the fixed words before anything else
    };
    std::vector<Pattern> patterns;
    std::string prefix;

    static Pattern parse(const std::string& text);
    static std::optional<std::vector<Words>> distribute(const Pattern& pattern, const Words& line);
    static std::optional<std::string> wrongIn(const Pattern& pattern, const std::vector<Words>& values);
    static void follow(const Pattern& pattern, std::size_t place, const Words& line, std::size_t word,
                       std::size_t& farthest, std::set<const Place*>* next);
    std::set<const Place*> placesBehind(const Words& before) const;
    std::string explain(const Words& line) const;
    std::string usageFor(const Words& line) const;
};

} // namespace Bench
