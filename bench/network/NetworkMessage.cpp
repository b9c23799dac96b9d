#include "bench/network/NetworkMessage.h"

#include "bench/network/ByteReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

namespace Bench
{

namespace
{

constexpr int pgnSize = 3;
constexpr int fromAnother = 2; ///< the transfer byte
constexpr int groupPriority = 3;
constexpr int usualPriority = 6;

/** The message with the address byte as its source and as its destination. */
std::optional<NetworkMessage> messageOf(std::span<const std::uint8_t> bytes)
{
    ByteReader reader(bytes);
    NetworkMessage message;
    message.pgn = static_cast<int>(reader.number(pgnSize));
    message.priority = message.pgn == Pgn::groupFunction ? groupPriority : usualPriority;
    reader.byte();
    message.source = message.destination = reader.byte();
    reader.byte();
    if (reader.isCut())
        return {};
    message.data = reader.remaining();
    return message;
}

/** The text up to the next comma, which is taken off the rest. */
std::string_view takeField(std::string_view& rest)
{
    const auto comma = rest.find(',');
    const auto field = rest.substr(0, comma);
    rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    return field;
}

std::optional<int> numberOf(std::string_view text, int highest, int base = 10)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size() || value < 0 || value > highest)
        return {};
    return value;
}

/** Takes a number of exactly so many digits, and what must follow it. */
std::optional<int> takeDigits(std::string_view& text, std::size_t digits, std::string_view separators)
{
    const auto field = text.substr(0, digits);
    constexpr int any = 9999;
    const auto value = field.size() == digits ? numberOf(field, any) : std::nullopt;
    text.remove_prefix(field.size());
    if (!value || (!separators.empty() && (text.empty() || separators.find(text.front()) == std::string_view::npos)))
        return {};
    text.remove_prefix(separators.empty() ? 0 : 1);
    return value;
}

std::optional<NetworkTime> timeOf(std::string_view text)
{
    using namespace std::chrono;
    constexpr int lastHour = 23, lastMinute = 59, leapSecond = 60;
    const auto year = takeDigits(text, 4, "-");
    const auto month = takeDigits(text, 2, "-");
    const auto day = takeDigits(text, 2, "T- ");
    const auto hour = takeDigits(text, 2, ":");
    const auto minute = takeDigits(text, 2, ":");
    const auto second = takeDigits(text, 2, {});
    if (!year || !month || !day || !hour || !minute || !second)
        return {};
    const auto date = std::chrono::year(*year) / *month / *day;
    if (!date.ok() || *hour > lastHour || *minute > lastMinute || *second > leapSecond)
        return {};
    int ms = 0;
    if (text.starts_with('.'))
    {
        text.remove_prefix(1);
        if (text.empty() || text.front() < '0' || text.front() > '9')
            return {};
        for (int unit = 100; !text.empty() && text.front() >= '0' && text.front() <= '9'; unit /= 10)
        {
            ms += (text.front() - '0') * unit;
            text.remove_prefix(1);
        }
    }
    if (!text.empty() && text != "Z")
        return {};
    return sys_days(date) + hours(*hour) + minutes(*minute) + seconds(*second) + milliseconds(ms);
}

} // namespace

std::optional<NetworkMessage> messageFromUnit(std::span<const std::uint8_t> parcel)
{
    auto message = messageOf(parcel);
    if (message)
        message->source = unitAddress;
    return message;
}

std::optional<NetworkMessage> messageToUnit(std::span<const std::uint8_t> parcel)
{
    auto message = messageOf(parcel);
    if (message)
        message->destination = unitAddress;
    return message;
}

Bytes parcelToUnit(const NetworkMessage& message)
{
    Bytes parcel;
    for (const int value : { message.pgn, message.pgn >> 8, message.pgn >> 16, 0, message.source, fromAnother })
        parcel.push_back(static_cast<std::uint8_t>(value));
    parcel.insert(parcel.end(), message.data.begin(), message.data.end());
    return parcel;
}

std::string lineOf(const NetworkMessage& message, NetworkTime time)
{
    using namespace std::chrono;
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    std::array<char, 96> head {};
    std::snprintf(head.data(), head.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ,%d,%d,%d,%d,%d",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()),
                  message.priority, message.pgn, message.source, message.destination,
                  static_cast<int>(message.data.size()));
    auto bytes = hex(message.data);
    for (auto& c : bytes)
        c = c == ' ' ? ',' : c;
    return head.data() + (bytes.empty() ? "" : "," + bytes);
}

ParsedNetworkLine parseNetworkLine(std::string_view line)
{
    constexpr std::string_view blank = " \t\r\n";
    constexpr int highestByte = 255, highestPriority = 7, hexadecimal = 16;
    const auto failed = [](std::string error) { return ParsedNetworkLine { {}, {}, std::move(error) }; };
    const auto begin = std::min(line.find_first_not_of(blank), line.size());
    line = line.substr(begin, line.find_last_not_of(blank) + 1 - begin);
    if (line.empty() || line.front() == '#')
        return {};
    const auto time = timeOf(takeField(line));
    if (!time)
        return failed("no time such as 2026-11-25T12:00:00.123Z");
    NetworkMessage message;
    struct Field
    {
        const char* name;
        int NetworkMessage::*member;
        int highest;
    };
    constexpr Field fields[] = { { "priority", &NetworkMessage::priority, highestPriority },
                                 { "PGN", &NetworkMessage::pgn, Pgn::highest },
                                 { "source", &NetworkMessage::source, highestByte },
                                 { "destination", &NetworkMessage::destination, highestByte } };
    for (const auto& field : fields)
    {
        const auto value = numberOf(takeField(line), field.highest);
        if (!value)
            return failed(std::string("no ") + field.name + " from 0 to " + std::to_string(field.highest));
        message.*field.member = *value;
    }
    const auto length = numberOf(takeField(line), NetworkMessage::maxData);
    if (!length)
        return failed("no length from 0 to " + std::to_string(NetworkMessage::maxData));
    while (line.data() != nullptr)
    {
        const auto text = takeField(line);
        const auto byte = text.size() == 2 ? numberOf(text, highestByte, hexadecimal) : std::nullopt;
        if (!byte)
            return failed("'" + std::string(text) + "' is no byte: two hexadecimal digits");
        message.data.push_back(static_cast<std::uint8_t>(*byte));
    }
    if (message.data.size() != static_cast<std::size_t>(*length))
        return failed("length " + std::to_string(*length) + ", but " + std::to_string(message.data.size()) + " bytes");
    return { std::move(message), *time, {} };
}

} // namespace Bench
