#pragma once

#include "bench/mcu/Mcu.h"
#include "bench/network/NetworkMessage.h"

#include <array>

namespace Bench
{

/** What a zone's volume message says. */
struct ZoneVolume
{
    int zone = 0;
    int percent = 0;
    std::optional<bool> muted; ///< not told in the answer to a request for one zone
    bool operator==(const ZoneVolume&) const = default;
};

/** What a zone's configuration says, or its parameters. */
struct ZoneTone
{
    int zone = 0;
    int highestVolume = 0;
    /** In the order of `toneFields`. */
    std::array<int, 6> values {};
    std::optional<int> preset;   ///< its code; a preset without a code is not told
    std::optional<int> highPass; ///< Hz; empty when it is off
    /** "1 configuration: fader -3, ...", with its kind. */
    std::string text(const char* kind) const;
    bool operator==(const ZoneTone&) const = default;
};

/** A field of a zone's parameters that the display changes. */
struct ToneField
{
    const char* name;
    int field;
};
inline constexpr std::array toneFields { ToneField { "fader", 3 },     ToneField { "balance", 4 },
                                         ToneField { "subwoofer", 5 }, ToneField { "treble", 6 },
                                         ToneField { "middle", 7 },    ToneField { "bass", 8 } };

// Each is empty when the message is another one, or is cut short.
std::optional<ZoneVolume> zoneVolumeOf(const NetworkMessage& message);
std::optional<ZoneTone> zoneToneOf(const NetworkMessage& message);
/** Zone numbers and names. */
std::optional<std::vector<std::pair<int, std::string>>> zoneNamesOf(const NetworkMessage& message);
/** Whether the message answers a command or request of the display. */
bool isAcknowledgement(const NetworkMessage& message);

/**
    In a person's words: "zone 2 volume 40 %", "refused 130586: field 2 of 3 out of range", "PGN 130570: 01 ff". Bytes
    behind what is understood are counted, a message that ends too soon is said to.
*/
std::string networkText(const NetworkMessage& message);
/** The same of anything between the unit and the network. */
std::string networkText(const Mcu::Frame& frame);
/** The message that a frame carries; empty when it carries none, or not even a whole head. */
std::optional<NetworkMessage> networkMessageOf(const Mcu::Frame& frame);
/** Whether a command of the link is about the boat's network. */
bool isOfNetwork(int command);

} // namespace Bench
