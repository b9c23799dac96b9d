#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Bench
{

using Words = std::vector<std::string>;

struct Line
{
    Words words;       ///< none for a blank line or a comment
    std::string error; ///< not empty when the line is malformed
};

/** Cuts a line into words at blanks. "double quotes" keep blanks, `\"` inside is a quote; # starts a comment. */
Line parseLine(const std::string& text);

/** With a blank between them. */
std::string joined(std::span<const std::string> words);

/** The line that `parseLine` cuts into these words. */
std::string quotedLine(std::span<const std::string> words);

/** "300ms", "3s", "1.5s"; a bare number is seconds. Empty when it is none of these or above an hour. */
std::optional<std::chrono::milliseconds> parseDuration(const std::string& text);

/** A whole number within the limits, decimal or 0x; empty otherwise. */
std::optional<int> parseNumber(const std::string& text, int lowest, int highest);

/** Bytes of two hexadecimal digits each, one a word. `error` names the first word that is none. */
struct ParsedBytes
{
    std::vector<std::uint8_t> bytes;
    std::string error;
};
ParsedBytes parseBytes(std::span<const std::string> words);

/**
    Takes "within 3s" off the end of the words, where "within" is the name. Empty error on success; `time` stays when
    there is none.
*/
std::string takeTime(Words& words, const std::string& name, std::chrono::milliseconds& time);

} // namespace Bench
