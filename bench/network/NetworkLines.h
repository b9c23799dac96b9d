#pragma once

#include "bench/network/FastPacket.h"

#include <array>
#include <chrono>
#include <string_view>

namespace Bench
{

using NetworkTime = std::chrono::sys_time<std::chrono::milliseconds>;

/**
    The forms in which public tools write messages of the network. All times are UTC.

    commas: a whole message, "2026-11-25T12:00:00.123Z,6,130582,10,255,3,01,50,f3": time, priority, PGN, source,
    destination, length, bytes.
    candump: a frame of the bus, "(1764072000.123000) can0 19FE160A#0150F3".
    raw: a frame with the time of day and its direction, "12:00:00.123 R 19FE160A 01 50 F3".
*/
enum class LineForm { commas, candump, raw };
/** In the order of the forms. */
inline constexpr std::array lineForms { "commas", "candump", "raw" };

/** Writes messages as lines: one, or one for each frame. */
class NetworkLineWriter
{
public:
    std::vector<std::string> write(const NetworkMessage& message, NetworkTime time, LineForm form);

private:
    unsigned sequence = 0;
};

/** Reads lines of any of the forms, also mixed. */
class NetworkLineReader
{
public:
    struct Line
    {
        /** None for a blank line, one that starts with #, and each frame but the last of a fast packet. */
        std::optional<NetworkMessage> message;
        NetworkTime time;     ///< of the form `raw` only that of the day; 0 where a line of it has none
        std::string error;    ///< not empty when the line is malformed, or `isStray`
        bool isStray = false; ///< a frame that no message can be made of, as those before it are missing
    };
    /**
        With commas, also with a blank or a dash between date and time, without the Z, with any number of digits after
        the seconds. In the form `raw` also "19FE160A 01 50 F3" alone, as it is sent to a gateway.
    */
    Line read(std::string_view text);
    /** Messages that lack frames. */
    unsigned incomplete() const { return packets.incomplete(); }

private:
    FastPackets packets;
};

} // namespace Bench
