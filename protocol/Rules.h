#pragma once

#include <span>
#include <string>

/** What authors of source programs are told: docs/source-programs.md is made from it. */
namespace Protocol
{

/** A promise of every source program, which can be seen from outside. */
struct Rule
{
    const char* id;       ///< "P1"
    const char* sentence; ///< as `withTimes` takes it
};

/** In the order of a program's life. Any thread. */
std::span<const Rule> rules();

/** The text with the times of EngineApi/ProgramTimes.def in place of "{answerTimeoutMs}" and so on: "1500 ms", "6 s". */
std::string withTimes(const std::string& text);

} // namespace Protocol
