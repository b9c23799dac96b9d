#pragma once

#include "bench/console/Expect.h"
#include "bench/console/Grammar.h"

namespace Bench
{

/** One thing that `expect` can wait for. */
struct ExpectLine
{
    std::string line; ///< its pattern, see Grammar
    std::string help;
    std::string stream; ///< of the journal; the words behind it in the line are the event's text
    enum Match { whole, part, state } match = whole;
    std::pair<std::string, std::string> (*find)(const Arguments& given) = nullptr; ///< stream and text where it is else
};

std::span<const ExpectLine> allExpectLines();
const Grammar& expectGrammar();

/** The words after `expect`, without the time limit, as an expectation; or an error text. */
struct ParsedExpectation
{
    Expectation expectation;
    std::string error;
};
ParsedExpectation parseExpectation(const Words& words);

} // namespace Bench
