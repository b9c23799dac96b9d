#include "bench/mcu/McuFrame.h"

#include "EngineApi/HostCommands.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <numeric>

namespace Bench
{

using EngineApi::HostCommandEntry;
using EngineApi::hostCommands;

namespace
{

constexpr std::uint8_t sync1 = 0xA0;
constexpr std::uint8_t sync2 = 0x55;
constexpr std::size_t headerSize = 6;
constexpr std::size_t overhead = headerSize + 2;
constexpr std::size_t maxFrame = overhead + McuFrame::maxData;

unsigned sumOf(std::span<const std::uint8_t> bytes)
{
    return std::accumulate(bytes.begin(), bytes.end(), 0u) & 0xFFFFu;
}

/** But for the first, which is no command. */
constexpr auto commands = std::span(hostCommands).subspan(1);

std::string nameOf(int command, const char* HostCommandEntry::*direction)
{
    for (const auto& entry : commands)
        if (entry.code == command && *(entry.*direction) != 0)
            return entry.*direction;
    return "command " + std::to_string(command);
}

} // namespace

Bytes encode(const McuFrame& frame)
{
    Bytes bytes(overhead + frame.data.size());
    bytes[0] = sync1;
    bytes[1] = sync2;
    bytes[2] = frame.sequence;
    bytes[3] = static_cast<std::uint8_t>(bytes.size());
    bytes[4] = static_cast<std::uint8_t>(frame.command >> 8);
    bytes[5] = static_cast<std::uint8_t>(frame.command & 0xFF);
    std::copy(frame.data.begin(), frame.data.end(), bytes.begin() + headerSize);
    const auto sum = sumOf(bytes); // the checksum's own bytes are still 0
    bytes[bytes.size() - 2] = static_cast<std::uint8_t>(sum >> 8);
    bytes[bytes.size() - 1] = static_cast<std::uint8_t>(sum & 0xFF);
    return bytes;
}

void McuFrameReader::push(std::span<const std::uint8_t> bytes, const Sink& sink)
{
    pending.insert(pending.end(), bytes.begin(), bytes.end());
    std::size_t at = 0;
    while (pending.size() - at >= overhead)
    {
        const std::size_t length = pending[at + 3];
        if (pending[at] != sync1 || pending[at + 1] != sync2 || length < overhead || length > maxFrame)
        {
            ++at;
            ++skipped;
            continue;
        }
        if (pending.size() - at < length)
            break;
        const std::span frame(pending.data() + at, length);
        const auto sum = static_cast<unsigned>(frame[length - 2]) << 8 | frame[length - 1];
        if (sum != sumOf(frame.first(length - 2)))
        {
            // A frame may start inside what looked like one, so only its first byte is given up.
            ++badSums;
            ++at;
            ++skipped;
            continue;
        }
        const auto command = static_cast<std::uint16_t>((frame[4] & 0x7F) << 8 | frame[5]);
        sink({ frame[2], command, Bytes(frame.begin() + headerSize, frame.end() - 2) });
        at += length;
    }
    pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(at));
}

std::string unitCommandName(int command)
{
    return nameOf(command, &HostCommandEntry::sentName);
}

std::string mcuCommandName(int command)
{
    return nameOf(command, &HostCommandEntry::receivedName);
}

int commandOfName(const std::string& name)
{
    int number = -1;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error == std::errc() && end == name.data() + name.size())
        return number >= 1 && number <= 0x7FFF ? number : -1;
    for (const auto direction : { &HostCommandEntry::sentName, &HostCommandEntry::receivedName })
        for (const auto& entry : commands)
            if (!name.empty() && name == entry.*direction)
                return entry.code;
    return -1;
}

std::vector<std::string> commandNames()
{
    std::vector<std::string> names;
    for (const auto direction : { &HostCommandEntry::sentName, &HostCommandEntry::receivedName })
        for (const auto& entry : commands)
            if (*(entry.*direction) != 0)
                names.emplace_back(entry.*direction);
    return names;
}

std::string hex(std::span<const std::uint8_t> bytes)
{
    std::string text;
    for (const auto byte : bytes)
    {
        std::array<char, 4> digits {};
        std::snprintf(digits.data(), digits.size(), "%02x", byte);
        text += (text.empty() ? "" : " ") + std::string(digits.data());
    }
    return text;
}

} // namespace Bench
