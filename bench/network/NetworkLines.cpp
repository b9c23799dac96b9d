#include "bench/network/NetworkLines.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace Bench
{

using namespace std::chrono;

namespace
{

using Line = NetworkLineReader::Line;

constexpr int hexadecimal = 16;
constexpr int highestByte = 255;
constexpr std::string_view blanks = " \t\r\n";

/** The text up to the next separator, which is taken off the rest. */
std::string_view takeField(std::string_view& rest, char separator)
{
    const auto end = rest.find(separator);
    const auto field = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    return field;
}

template <typename Number>
std::optional<Number> numberOf(std::string_view text, Number highest, int base = 10)
{
    Number value = 0;
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

/** What follows the seconds, taken off the text: a point and any number of digits. Nothing is 0. */
std::optional<int> takeMs(std::string_view& text)
{
    const auto isDigit = [&] { return !text.empty() && text.front() >= '0' && text.front() <= '9'; };
    int ms = 0;
    if (!text.starts_with('.'))
        return ms;
    text.remove_prefix(1);
    if (!isDigit())
        return {};
    for (int unit = 100; isDigit(); unit /= 10)
    {
        ms += (text.front() - '0') * unit;
        text.remove_prefix(1);
    }
    return ms;
}

/** hh:mm:ss, with digits behind it or not. */
std::optional<milliseconds> takeTimeOfDay(std::string_view& text)
{
    constexpr int lastHour = 23, lastMinute = 59, leapSecond = 60;
    const auto hour = takeDigits(text, 2, ":");
    const auto minute = takeDigits(text, 2, ":");
    const auto second = takeDigits(text, 2, {});
    const auto ms = takeMs(text);
    if (!hour || !minute || !second || !ms || *hour > lastHour || *minute > lastMinute || *second > leapSecond)
        return {};
    return hours(*hour) + minutes(*minute) + seconds(*second) + milliseconds(*ms);
}

std::optional<NetworkTime> dateAndTimeOf(std::string_view text)
{
    const auto year = takeDigits(text, 4, "-");
    const auto month = takeDigits(text, 2, "-");
    const auto day = takeDigits(text, 2, "T- ");
    const auto timeOfDay = takeTimeOfDay(text);
    if (!year || !month || !day || !timeOfDay || !(text.empty() || text == "Z"))
        return {};
    const auto date = std::chrono::year(*year) / *month / *day;
    if (!date.ok())
        return {};
    return sys_days(date) + *timeOfDay;
}

Line failed(std::string error)
{
    return { {}, {}, std::move(error) };
}

/** What a person has to see of a text that may be anything. */
std::string quoted(std::string_view text)
{
    constexpr std::size_t most = 24;
    std::string shown(text.substr(0, most));
    for (auto& c : shown)
        c = c < ' ' || c > '~' ? '?' : c;
    return "'" + shown + (text.size() > most ? "...'" : "'");
}

/** Adds a byte; else says why not. */
std::string addByte(Bytes& bytes, std::string_view text)
{
    const auto byte = text.size() == 2 ? numberOf(text, highestByte, hexadecimal) : std::nullopt;
    if (!byte)
        return quoted(text) + " is no byte: two hexadecimal digits";
    bytes.push_back(static_cast<std::uint8_t>(*byte));
    return {};
}

/** A frame with its identifier, still without bytes. */
std::optional<NetworkMessage> frameOf(std::string_view identifier)
{
    constexpr std::size_t digits = 8;
    constexpr std::int64_t highest = 0x1FFFFFFF;
    const auto number = identifier.size() == digits ? numberOf(identifier, highest, hexadecimal) : std::nullopt;
    return number ? std::optional(frameOfCanIdentifier(static_cast<std::uint32_t>(*number))) : std::nullopt;
}

constexpr const char* noIdentifier = "no identifier of a frame: eight hexadecimal digits up to 1FFFFFFF";

Line readCommas(std::string_view line)
{
    const auto time = dateAndTimeOf(takeField(line, ','));
    if (!time)
        return failed("no time such as 2026-11-25T12:00:00.123Z");
    NetworkMessage message;
    struct Field
    {
        const char* name;
        int NetworkMessage::*member;
        int highest;
    };
    constexpr int highestPriority = 7;
    constexpr Field fields[] = { { "priority", &NetworkMessage::priority, highestPriority },
                                 { "PGN", &NetworkMessage::pgn, Pgn::highest },
                                 { "source", &NetworkMessage::source, highestByte },
                                 { "destination", &NetworkMessage::destination, highestByte } };
    for (const auto& field : fields)
    {
        const auto value = numberOf(takeField(line, ','), field.highest);
        if (!value)
            return failed(std::string("no ") + field.name + " from 0 to " + std::to_string(field.highest));
        message.*field.member = *value;
    }
    if (!isAddressed(message.pgn))
        message.destination = everybody;
    const auto length = numberOf(takeField(line, ','), static_cast<int>(NetworkMessage::maxData));
    if (!length)
        return failed("no length from 0 to " + std::to_string(NetworkMessage::maxData));
    while (line.data() != nullptr)
        if (auto error = addByte(message.data, takeField(line, ',')); !error.empty())
            return failed(std::move(error));
    if (message.data.size() != static_cast<std::size_t>(*length))
        return failed("length " + std::to_string(*length) + ", but " + std::to_string(message.data.size()) + " bytes");
    return { std::move(message), *time, {} };
}

Line readCandump(std::string_view line)
{
    line.remove_prefix(1);
    auto time = takeField(line, ')');
    constexpr std::int64_t latest = 99'999'999'999; // so that milliseconds do not overflow
    const auto second = numberOf(time.substr(0, time.find('.')), latest);
    time.remove_prefix(std::min(time.find('.'), time.size()));
    const auto ms = takeMs(time);
    if (!second || !ms || !time.empty())
        return failed("no time such as (1764072000.123000)");
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    takeField(line, ' '); // the interface
    auto frame = frameOf(takeField(line, '#'));
    if (!frame)
        return failed(noIdentifier);
    for (; !line.empty(); line.remove_prefix(std::min<std::size_t>(line.size(), 2)))
        if (auto error = addByte(frame->data, line.substr(0, 2)); !error.empty())
            return failed(std::move(error));
    return { std::move(frame), NetworkTime(seconds(*second) + milliseconds(*ms)), {} };
}

Line readRaw(std::string_view line)
{
    NetworkTime time;
    if (line.find(':') != std::string_view::npos)
    {
        auto text = takeField(line, ' ');
        const auto timeOfDay = takeTimeOfDay(text);
        if (!timeOfDay || !text.empty())
            return failed("no time such as 12:00:00.123");
        time += *timeOfDay;
        if (const auto direction = takeField(line, ' '); direction != "R" && direction != "T")
            return failed(quoted(direction) + " is no direction: R or T");
    }
    auto frame = frameOf(takeField(line, ' '));
    if (!frame)
        return failed(noIdentifier);
    while (!line.empty())
        if (auto error = addByte(frame->data, takeField(line, ' ')); !error.empty())
            return failed(std::move(error));
    return { std::move(frame), time, {} };
}

std::string lineOf(const NetworkMessage& message, NetworkTime time)
{
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
    std::ranges::replace(bytes, ' ', ',');
    return head.data() + (bytes.empty() ? "" : "," + bytes);
}

/** In upper case, as these forms have it. */
std::string frameBytes(const NetworkMessage& frame)
{
    auto bytes = hex(frame.data);
    std::ranges::transform(bytes, bytes.begin(),
                           [](char c) { return c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c; });
    return bytes;
}

std::string candumpOf(const NetworkMessage& frame, NetworkTime time)
{
    const auto second = floor<seconds>(time);
    std::array<char, 64> head {};
    std::snprintf(head.data(), head.size(), "(%010lld.%03d000) can0 %08X#",
                  static_cast<long long>(second.time_since_epoch().count()), static_cast<int>((time - second).count()),
                  canIdentifierOf(frame));
    auto bytes = frameBytes(frame);
    std::erase(bytes, ' ');
    return head.data() + bytes;
}

std::string rawOf(const NetworkMessage& frame, NetworkTime time)
{
    const hh_mm_ss clock(time - floor<days>(time));
    std::array<char, 64> head {};
    std::snprintf(head.data(), head.size(), "%02d:%02d:%02d.%03d R %08X", static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()),
                  static_cast<int>(clock.subseconds().count()), canIdentifierOf(frame));
    const auto bytes = frameBytes(frame);
    return head.data() + (bytes.empty() ? "" : " " + bytes);
}

} // namespace

std::vector<std::string> NetworkLineWriter::write(const NetworkMessage& message, NetworkTime time, LineForm form)
{
    if (form == LineForm::commas)
        return { lineOf(message, time) };
    std::vector<std::string> lines;
    for (const auto& frame : framesOf(message, sequence++))
        lines.push_back(form == LineForm::candump ? candumpOf(frame, time) : rawOf(frame, time));
    return lines;
}

NetworkLineReader::Line NetworkLineReader::read(std::string_view text)
{
    const auto begin = std::min(text.find_first_not_of(blanks), text.size());
    text = text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
    if (text.empty() || text.front() == '#')
        return {};
    if (text.find(',') != std::string_view::npos)
        return readCommas(text);
    auto line = text.front() == '(' ? readCandump(text) : readRaw(text);
    if (!line.error.empty())
        return line;
    if (line.message->data.size() > longestFrame)
        return failed("a frame of " + std::to_string(line.message->data.size()) + " bytes; it has at most " +
                      std::to_string(longestFrame));
    auto [message, stray] = packets.add(*line.message);
    return { std::move(message), line.time, stray, !stray.empty() };
}

} // namespace Bench
