#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace Bench
{

using Bytes = std::vector<std::uint8_t>;

/**
    One frame of the microcontroller's serial link: A0 55, sequence, length of the whole frame, command (2 bytes, high
    byte first), data, and the 16-bit sum of all bytes before it, high byte first. Command 0 acknowledges a sequence.
*/
struct McuFrame
{
    std::uint8_t sequence = 0;
    std::uint16_t command = 0;
    Bytes data;

    static constexpr std::size_t maxData = 102;

    bool isAck() const { return command == 0; }
    static McuFrame ack(std::uint8_t sequence) { return { sequence, 0, { 0 } }; }
    bool operator==(const McuFrame&) const = default;
};

/** What a frame says, before it has a number. */
struct McuMessage
{
    int command;
    Bytes data;
    /** Of a message of the boat's network: it is not for the unit alone, which is not told so. */
    bool toEverybody = false;
};

/** At most McuFrame::maxData bytes of data. */
Bytes encode(const McuFrame& frame);

/** Cuts a byte stream into frames. Damaged bytes are skipped and counted; the next good frame is found again. */
class McuFrameReader
{
public:
    using Sink = std::function<void(const McuFrame&)>;

    void push(std::span<const std::uint8_t> bytes, const Sink& sink);
    void reset() { pending.clear(); }
    unsigned checksumErrors() const { return badSums; }
    unsigned skippedBytes() const { return skipped; }

private:
    Bytes pending;
    unsigned badSums = 0;
    unsigned skipped = 0;
};

/** "EVENT_HEAT_BEAT"; "command 99" for one without a name. */
std::string unitCommandName(int command);
/** The same for the direction from the microcontroller: 5 is "IND_KEY". */
std::string mcuCommandName(int command);
/** By the unit's name or the microcontroller's, or a number; -1 when there is no such command. */
int commandOfName(const std::string& name);
/** Every name of both directions, for completion. */
std::vector<std::string> commandNames();

/** "01 2a". */
std::string hex(std::span<const std::uint8_t> bytes);

} // namespace Bench
