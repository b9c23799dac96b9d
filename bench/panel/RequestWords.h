#pragma once

#include "ctl/Fields.h"

namespace BenchPanel
{

/** A request for a page, as a person reads it. */
struct RequestWords
{
    std::int64_t number = 0;
    std::string asked;   ///< "Main menu asked for USB music"
    std::string outcome; ///< "done in 3.1 ms: USB music is on top: nothing else competes for the screen."
    enum class Kind { open, done, refused, failed } kind = Kind::open;

    bool operator==(const RequestWords&) const = default;
};

/** Of a record of the engine's answer to "Requests". */
RequestWords wordsOf(const Ctl::Json& request);

/** The engine's sentence with words for a person in place of the names of pages and parts. */
std::string withTitles(std::string sentence);

} // namespace BenchPanel
