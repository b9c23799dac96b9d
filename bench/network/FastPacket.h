#pragma once

#include "bench/network/NetworkMessage.h"

namespace Bench
{

/**
    A frame of the bus is a message of at most 8 bytes; longer ones are fast packets: several frames, whose first byte
    counts them. It says nothing of the kind that it is, so the number has to.
*/
inline constexpr std::size_t longestFrame = 8;
/** Of a number that nobody has published it is a guess. */
bool isFastPacket(int pgn);

/** `sequence` tells packets that follow each other apart; its low three bits count. */
std::vector<NetworkMessage> framesOf(const NetworkMessage& message, unsigned sequence);

/** Priority, number, source and destination in 29 bits. */
std::uint32_t canIdentifierOf(const NetworkMessage& message);
/** A frame without its bytes. */
NetworkMessage frameOfCanIdentifier(std::uint32_t identifier);

/** Puts frames together. Packets of several sources may come mixed. */
class FastPackets
{
public:
    struct Outcome
    {
        std::optional<NetworkMessage> message; ///< with its last frame
        std::string error;                     ///< why the frame cannot be one of a message
    };
    Outcome add(const NetworkMessage& frame);

    /** Messages that began and did not end, or have not ended yet. */
    unsigned incomplete() const { return lost + static_cast<unsigned>(open.size()); }

    static constexpr std::size_t mostOpen = 64; ///< then the oldest is given up

private:
    struct Open
    {
        NetworkMessage message;
        std::size_t size;
        int sequence, next;
    };
    std::vector<Open> open;
    unsigned lost = 0;

    std::vector<Open>::iterator find(const NetworkMessage& frame);
};

} // namespace Bench
