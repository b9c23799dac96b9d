#include "bench/mcu/McuFrame.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <numeric>

namespace Bench
{

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

struct CommandName
{
    int command;
    const char* fromUnit;
    const char* fromMcu;
};

constexpr std::array commandTable { CommandName { 1, "EVENT_GET_LAST_MEMORY", "GET_LAST_MEMORY_RESP" },
                                    CommandName { 2, "EVENT_SRC_SWITCH", "EVENT_SRC_SWITCH" },
                                    CommandName { 3, "EVENT_SRC_SWITCH_REPORT", "EVENT_SRC_SWITCH_REPORT" },
                                    CommandName { 4, "EVENT_DEVICE_STATUS", "EVENT_GET_DEVICE_STATUS" },
                                    CommandName { 5, "EVENT_KEY", "IND_KEY" },
                                    CommandName { 6, "EVENT_POWER_OFF_READY", "EVENT_POWER_OFF" },
                                    CommandName { 7, "EVENT_DATA_SEND_CAN", "EVENT_DATA_FROM_CAN" },
                                    CommandName { 8, "EVENT_MCU_UPDATE_CTRL", "" },
                                    CommandName { 9, "EVENT_MCU_UPDATE_DATA", "EVENT_MCU_UPDATE_DATA" },
                                    CommandName { 10, "EVENT_SEND_VERSION", "EVENT_REQUEST_VERSION" },
                                    CommandName { 11, "EVENT_PGN_SEND_CAN", "EVENT_PGN_FROM_CAN" },
                                    CommandName { 12, "EVENT_MEDIA_INFO", "" },
                                    CommandName { 13, "", "EVENT_SETUP_FROM_CAN" },
                                    CommandName { 14, "", "EVENT_SET_DEVICE_ID" },
                                    CommandName { 15, "EVENT_RADIO_INFO", "EVENT_RADIO_INFO_RESP" },
                                    CommandName { 16, "", "EVENT_RADIO_CONTROL_RESP" },
                                    CommandName { 17, "", "EVENT_RADIO_INFO_REPORT" },
                                    CommandName { 18, "EVENT_LED_LCD_DIMMER", "EVENT_LED_LCD_DIMMER" },
                                    CommandName { 19, "", "EVENT_VOLTAGE_VALUES" },
                                    CommandName { 20, "EVENT_MUTE_STATE", "" },
                                    CommandName { 21, "EVENT_FACTORY_RESET", "" },
                                    CommandName { 22, "EVENT_RENAME_AUXIN", "" },
                                    CommandName { 23, "EVENT_HEAT_BEAT", "" },
                                    CommandName { 24, "EVENT_RADIO_TESTMODE", "EVENT_RADIO_TESTMODE_RESP" },
                                    CommandName { 25, "EVENT_AUTOTEST_INFO", "EVENT_AUTOTEST_INFO_RESP" },
                                    CommandName { 26, "EVENT_SET_DEVICE_ID", "" },
                                    CommandName { 27, "EVENT_GET_DEVICE_ID", "EVENT_DEVICE_ID_RESP" },
                                    CommandName { 29, "EVENT_DSP_ID_RESP", "EVENT_DSP_ID_RESP" } };

std::string nameOf(int command, const char* CommandName::*direction)
{
    for (const auto& entry : commandTable)
        if (entry.command == command && *(entry.*direction) != 0)
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
    return nameOf(command, &CommandName::fromUnit);
}

std::string mcuCommandName(int command)
{
    return nameOf(command, &CommandName::fromMcu);
}

int commandOfName(const std::string& name)
{
    int number = -1;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error == std::errc() && end == name.data() + name.size())
        return number >= 1 && number <= 0x7FFF ? number : -1;
    for (const auto direction : { &CommandName::fromUnit, &CommandName::fromMcu })
        for (const auto& entry : commandTable)
            if (!name.empty() && name == entry.*direction)
                return entry.command;
    return -1;
}

std::vector<std::string> commandNames()
{
    std::vector<std::string> names;
    for (const auto direction : { &CommandName::fromUnit, &CommandName::fromMcu })
        for (const auto& entry : commandTable)
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
