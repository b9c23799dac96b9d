#pragma once

#include "diagnostics/Wire.h"

#include <optional>

/** What an answer holds, as text for a person. Nothing here minds what is missing or of another kind. */
namespace Ctl
{

using Diagnostics::Json;

/** Text, with what a terminal would take for a command in place of it shown as "\x1b". */
std::string printable(const std::string& text);

/** A value in words: yes and no, a list with commas; "" for what is missing. */
std::string wordsOf(const Json& value);

/** Looks into one record of an answer. */
class Fields
{
public:
    explicit Fields(const Json& recordToRead)
        : record(recordToRead)
    {
    }

    bool has(const char* key) const { return !at(key).is_null(); }
    /** In words, see `wordsOf`. */
    std::string operator[](const char* key) const { return wordsOf(at(key)); }
    bool is(const char* key) const;
    std::optional<std::int64_t> number(const char* key) const;
    std::vector<std::string> list(const char* key) const;
    /** How long: "340 us", "1.2 ms", "3 min", of a key that ends in Us or Ms; "" for what is missing. */
    std::string time(const char* key) const;

private:
    const Json& at(const char* key) const;

    const Json& record;
};

} // namespace Ctl
