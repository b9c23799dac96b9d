#pragma once

#include "EngineLayer/hostlink/HostDataFormat.h"

#include <optional>
#include <span>

/**
    The frames that the unit and the factory's test equipment exchange, as the data of a microcontroller command. Values
    in, values out.

        to the equipment    AA EE  sequence  frame length  message ...  checksum
        from it             FF AA  sequence  frame length  command  parameters ...  checksum

    The frame length counts every byte; the checksum is the sum of the bytes in front of it, modulo 256.
*/
namespace EngineLayer::AutoTestFrame
{

using Bytes = std::vector<std::uint8_t>;

/** Bytes of a frame without message. */
inline constexpr int overhead = 5;
inline constexpr int longestMessage = HostFrame::maxDataLength - overhead;

/** Of the sequence the low byte counts. The message has at most `longestMessage` bytes. */
Bytes build(std::uint32_t sequence, std::span<const std::uint8_t> message);

/** A frame of the equipment. Looks at the bytes that were parsed, which outlive it. */
class Request
{
public:
    /** -1 in a frame that carries none. */
    int command() const;
    /** Byte `index` of the frame; 0 for the checksum and for what was not received. */
    int at(int index) const;
    /** From the command to the last byte in front of the checksum. */
    std::span<const std::uint8_t> parameters() const { return content.subspan(headerLength); }

private:
    friend std::optional<Request> parse(std::span<const std::uint8_t> frame);
    static constexpr std::size_t headerLength = 4;

    explicit Request(std::span<const std::uint8_t> withoutChecksum)
        : content(withoutChecksum)
    {
    }

    std::span<const std::uint8_t> content;
};

/** None unless the bytes are one whole frame with the right checksum. */
std::optional<Request> parse(std::span<const std::uint8_t> frame);

} // namespace EngineLayer::AutoTestFrame
