#pragma once

#include "bench/mcu/McuFrame.h"

#include <chrono>
#include <optional>
#include <string_view>

namespace Bench
{

/** Addresses on the boat's network. */
inline constexpr int unitAddress = 10;
inline constexpr int displayAddress = 35;
inline constexpr int everybody = 255;

/** Numbers of the messages that the display knows. */
namespace Pgn
{
inline constexpr int isoRequest = 59904;
inline constexpr int proprietary = 65280;
inline constexpr int groupFunction = 126208;
inline constexpr int zones = 130574;
inline constexpr int zoneConfiguration = 130581;
inline constexpr int zoneVolume = 130582;
inline constexpr int bluetoothSource = 130585;
inline constexpr int zoneParameters = 130586;
inline constexpr int highest = 0x3FFFF;
} // namespace Pgn

/** One whole message of the boat's network, NMEA 2000. */
struct NetworkMessage
{
    int pgn = 0;
    int priority = 6;
    int source = 0;
    int destination = everybody;
    Bytes data;

    /** The longest that the network carries. */
    static constexpr std::size_t maxData = 223;
    bool operator==(const NetworkMessage&) const = default;
};

/**
    As the unit gives it to the microcontroller: its address byte says whom it is for. Empty when even the head is cut.
*/
std::optional<NetworkMessage> messageFromUnit(std::span<const std::uint8_t> parcel);
/** As the microcontroller gives it to the unit: its address byte says who sent it. */
std::optional<NetworkMessage> messageToUnit(std::span<const std::uint8_t> parcel);
/** For the unit; at most `longestToUnit` bytes of data fit the link. */
Bytes parcelToUnit(const NetworkMessage& message);
inline constexpr std::size_t longestToUnit = McuFrame::maxData - 6;

using NetworkTime = std::chrono::sys_time<std::chrono::milliseconds>;

/** "2026-11-25T12:00:00.123Z,6,130582,10,255,3,01,50,f3": time, priority, PGN, source, destination, length, bytes. */
std::string lineOf(const NetworkMessage& message, NetworkTime time);

struct ParsedNetworkLine
{
    std::optional<NetworkMessage> message; ///< none for a blank line or one that starts with #
    NetworkTime time;
    std::string error; ///< not empty when the line is malformed
};
/** Also with a blank or a dash between date and time, without the Z, with any number of digits after the seconds. */
ParsedNetworkLine parseNetworkLine(std::string_view line);

} // namespace Bench
