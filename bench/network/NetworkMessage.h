#pragma once

#include "bench/mcu/McuFrame.h"

#include <optional>

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
inline constexpr int addressClaim = 60928;
inline constexpr int proprietary = 65280;
inline constexpr int groupFunction = 126208;
inline constexpr int pgnList = 126464;
inline constexpr int productInformation = 126996;
inline constexpr int currentFile = 130569;
inline constexpr int libraryFile = 130570;
inline constexpr int libraryGroup = 130571;
inline constexpr int librarySearch = 130572;
inline constexpr int zones = 130574;
inline constexpr int zoneConfiguration = 130581;
inline constexpr int zoneVolume = 130582;
inline constexpr int bluetoothDevices = 130584;
inline constexpr int bluetoothSource = 130585;
inline constexpr int zoneParameters = 130586;
inline constexpr int proprietaryFast = 130850;
inline constexpr int highest = 0x3FFFF;
} // namespace Pgn

/** Whether such a message is for one address or for all. Any other goes to everybody, whoever is meant by it. */
constexpr bool isAddressed(int pgn)
{
    constexpr int firstOfBroadcasts = 240; // of the PDU format, ISO 11783-3
    return (pgn >> 8 & 0xFF) < firstOfBroadcasts;
}

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
/** As the microcontroller gives it to the unit: its address byte says who sent it. It does not say whom it is for. */
std::optional<NetworkMessage> messageToUnit(std::span<const std::uint8_t> parcel, bool toEverybody);
/** For the unit; at most `longestToUnit` bytes of data fit the link. */
Bytes parcelToUnit(const NetworkMessage& message);
inline constexpr std::size_t longestToUnit = McuFrame::maxData - 6;

} // namespace Bench
