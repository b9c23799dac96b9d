#pragma once

#include "bench/console/Console.h"
#include "bench/console/Grammar.h"

#include <functional>

namespace Bench
{

/** The result of one line. */
struct Outcome
{
    enum Kind {
        done,
        acted, ///< done, and what comes of it is for the unit to show
        failed,
        leave
    } kind = done;
    std::string error {}; ///< for `failed`; one line, more for what was seen instead
};

inline Outcome failed(std::string error)
{
    return { Outcome::failed, std::move(error) };
}

/** One command of the bench. Usage, completion, checks, `help` and the table in README.md come from here. */
struct Verb
{
    std::string line; ///< its pattern, see Grammar
    std::string help;
    std::function<Outcome(Console& console, const Arguments& given)> run;
};

using Verbs = std::vector<Verb>;

// Each group has a file of its own.
Verbs mcuVerbs();
Verbs panelVerbs();
Verbs deviceVerbs();
Verbs networkVerbs();
Verbs testEquipmentVerbs();
Verbs programVerbs();
Verbs dspVerbs();
Verbs reportVerbs();
Verbs diagnosticsVerbs();
Verbs scriptVerbs();
Verbs recordVerbs();

/** The run of `switches`, which has a file of its own, too. */
Outcome switchPages(Console& console, const Arguments& given);
/** What may come next in what this program does on order. */
Words ordersBehind(const std::string& program, const Words& before);
/** What the engine says of itself under this name, or that it cannot be asked. */
void showReport(Console& console, const std::string& name);
/** Writes what was expected and has come, and how long that took from `start` on. */
Outcome met(Console& console, const std::string& what, std::optional<Clock::time_point> start = {});

/** All verbs, in the order of the help. */
struct VerbGroup
{
    const char* title;
    Verbs verbs;
};
std::span<const VerbGroup> allVerbs();

/** Tells what comes of it where the console is a person's. */
Outcome runLine(Console& console, const std::string& text);
constexpr std::size_t longestLine = 8192; ///< in bytes
Outcome runLine(Console& console, const Words& words);
/** What comes after a line that fails. */
enum class AfterFailure { end, nextLine };
/** Runs every line, and names each that fails ("tour.scenario:12"). True when all succeeded. */
bool runScript(Console& console, std::istream& script, const std::string& name, AfterFailure after);
/** Words that may come next, each a whole word. */
Words completionsFor(const Words& before);
/** Whether the name of a file may come next. */
bool mayBeFile(const Words& before);
/** Each verb and each line for `expect` that begins with this word, or all; a line of text each. */
std::vector<std::pair<std::string, std::string>> helpFor(const std::string& word);
/** Each first word of the group's lines, with what may follow, or with the help of the only line. */
std::vector<std::pair<std::string, std::string>> commandsOf(const VerbGroup& group);
/** Verbs, expectations and kinds of words as the tables of README.md. */
std::string verbTables();

/** The outcome of a function that does something to the unit and returns nothing, or a text with what failed ("" for success). */
template <typename Function, typename... Given>
Outcome outcomeOf(const Function& function, Given&&... given)
{
    if constexpr (std::is_void_v<std::invoke_result_t<Function, Given...>>)
    {
        function(std::forward<Given>(given)...);
        return { Outcome::acted };
    }
    else
    {
        std::string error = function(std::forward<Given>(given)...);
        return error.empty() ? Outcome { Outcome::acted } : failed(std::move(error));
    }
}

/** The `run` of a verb that does something to the unit and says nothing. */
template <typename Function>
auto onUnit(Function function)
{
    return [function](Console& console, const Arguments& given) { return outcomeOf(function, console.unit, given); };
}

/** The same with one of its devices, within a turn; the function may leave out what was given. */
template <typename Model, typename Function>
auto on(Live<Model> Unit::*device, Function function)
{
    return onUnit(
        [device, function](Unit& unit, const Arguments& given)
        {
            const auto turn = (unit.*device).use();
            if constexpr (std::is_invocable_v<Function, Model&>)
                return std::invoke(function, *turn);
            else
                return function(*turn, given);
        });
}

} // namespace Bench
