#include "ctl/Fields.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

namespace Ctl
{

namespace
{

constexpr std::int64_t usInMs = 1000;

/** Cut, not rounded: what is not over yet is not told as over. One decimal below 10. */
std::string timeText(std::int64_t us)
{
    struct Unit
    {
        const char* name;
        std::int64_t us, upTo; ///< its length, and how many of it are told in it
    };
    constexpr std::int64_t ms = usInMs, s = 1000 * ms, min = 60 * s, h = 60 * min, day = 24 * h;
    constexpr std::array units { Unit { "ms", ms, 1000 }, Unit { "s", s, 60 }, Unit { "min", min, 60 },
                                 Unit { "h", h, 48 } };
    if (us < ms)
        return std::to_string(us) + " us";
    for (const auto& unit : units)
        if (us < unit.us * unit.upTo)
        {
            const auto tenths = us / (unit.us / 10);
            return std::to_string(tenths / 10) +
                   (tenths < 100 && tenths % 10 != 0 ? "." + std::to_string(tenths % 10) : "") + " " + unit.name;
        }
    return std::to_string(us / day) + " days";
}

} // namespace

std::string printable(const std::string& text)
{
    std::string all;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const auto byteAt = [&](std::size_t at) { return at < text.size() ? static_cast<unsigned char>(text[at]) : 0; };
        // The second row of control characters has two bytes.
        const bool isWide = byteAt(i) == 0xc2 && byteAt(i + 1) >= 0x80 && byteAt(i + 1) < 0xa0;
        if (!isWide && byteAt(i) >= ' ' && byteAt(i) != 0x7f)
        {
            all += text[i];
            continue;
        }
        i += isWide ? 1 : 0;
        constexpr const char* digits = "0123456789abcdef";
        all += std::string("\\x") + digits[byteAt(i) >> 4] + digits[byteAt(i) & 15];
    }
    return all;
}

std::string wordsOf(const Json& value)
{
    if (value.is_null())
        return {};
    if (value.is_boolean())
        return value.get<bool>() ? "yes" : "no";
    if (value.is_string())
        return printable(value.get<std::string>());
    if (!value.is_array())
        return printable(value.dump(-1, ' ', false, Json::error_handler_t::replace));
    std::string all;
    for (const auto& each : value)
        all += (all.empty() ? "" : ", ") + wordsOf(each);
    return all;
}

const Json& Fields::at(const char* key) const
{
    static const Json nothing;
    if (!record.is_object())
        return nothing;
    const auto found = record.find(key);
    return found != record.end() ? *found : nothing;
}

bool Fields::is(const char* key) const
{
    return at(key) == true;
}

std::optional<std::int64_t> Fields::number(const char* key) const
{
    const auto& value = at(key);
    return value.is_number_integer() ? std::optional(value.get<std::int64_t>()) : std::nullopt;
}

std::vector<std::string> Fields::list(const char* key) const
{
    std::vector<std::string> all;
    if (const auto& value = at(key); value.is_array())
        for (const auto& each : value)
            all.push_back(wordsOf(each));
    return all;
}

std::string Fields::time(const char* key) const
{
    const auto value = number(key);
    if (!value || *value < 0)
        return {};
    constexpr auto longest = std::numeric_limits<std::int64_t>::max() / usInMs;
    return timeText(std::string_view(key).ends_with("Us") ? *value : std::min(*value, longest) * usInMs);
}

} // namespace Ctl
