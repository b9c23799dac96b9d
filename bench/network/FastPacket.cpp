#include "bench/network/FastPacket.h"

#include <algorithm>
#include <array>

namespace Bench
{

namespace
{

constexpr std::uint8_t nothing = 0xFF; ///< fills the last frame up
constexpr int counterBits = 5;
constexpr int counterMask = (1 << counterBits) - 1;
constexpr int sequenceMask = 7;

/** Of the standard's numbers from 126976 on, those of a single frame. */
constexpr std::array singles { 126992, 126993, 127245, 127250, 127251, 127252, 127257, 127258, 127488, 127493,
                               127500, 127501, 127502, 127505, 127508, 127511, 127512, 127514, 127744, 127745,
                               127746, 127750, 127751, 128000, 128001, 128002, 128003, 128006, 128007, 128008,
                               128259, 128267, 128768, 128769, 128776, 128777, 128778, 128780, 129025, 129026,
                               129027, 129028, 129033, 129283, 129291, 129539, 129546, 130306, 130310, 130311,
                               130312, 130313, 130314, 130315, 130316, 130560, 130576, 130579, 130582, 130585 };

// Where the parts of an identifier begin.
constexpr int priorityBit = 26, pgnBit = 8;
constexpr std::uint32_t byteMask = 0xFF, pgnMask = 0x3FFFF, priorityMask = 7;

} // namespace

bool isFastPacket(int pgn)
{
    constexpr int firstFast = 0x10000;
    return pgn >= firstFast && !std::ranges::binary_search(singles, pgn);
}

std::vector<NetworkMessage> framesOf(const NetworkMessage& message, unsigned sequence)
{
    auto frame = message;
    if (!isFastPacket(message.pgn) && message.data.size() <= longestFrame)
        return { std::move(frame) };
    std::vector<NetworkMessage> frames;
    auto rest = std::span(message.data);
    do
    {
        const auto number = static_cast<unsigned>(frames.size());
        frame.data = { static_cast<std::uint8_t>((sequence & sequenceMask) << counterBits | number) };
        if (number == 0)
            frame.data.push_back(static_cast<std::uint8_t>(message.data.size()));
        const auto part = rest.first(std::min(rest.size(), longestFrame - frame.data.size()));
        frame.data.insert(frame.data.end(), part.begin(), part.end());
        frame.data.resize(longestFrame, nothing);
        frames.push_back(frame);
        rest = rest.subspan(part.size());
    } while (!rest.empty());
    return frames;
}

std::uint32_t canIdentifierOf(const NetworkMessage& message)
{
    const auto pgn = static_cast<std::uint32_t>(message.pgn) & pgnMask;
    // The destination is where another number has its low byte.
    const auto number = isAddressed(message.pgn)
                            ? (pgn & ~byteMask) | (static_cast<std::uint32_t>(message.destination) & byteMask)
                            : pgn;
    return static_cast<std::uint32_t>(message.priority) << priorityBit | number << pgnBit |
           static_cast<std::uint32_t>(message.source);
}

NetworkMessage frameOfCanIdentifier(std::uint32_t identifier)
{
    NetworkMessage frame;
    frame.priority = static_cast<int>(identifier >> priorityBit & priorityMask);
    frame.pgn = static_cast<int>(identifier >> pgnBit & pgnMask);
    frame.source = static_cast<int>(identifier & byteMask);
    if (isAddressed(frame.pgn))
    {
        frame.destination = frame.pgn & static_cast<int>(byteMask);
        frame.pgn &= ~static_cast<int>(byteMask);
    }
    return frame;
}

std::vector<FastPackets::Open>::iterator FastPackets::find(const NetworkMessage& frame)
{
    return std::ranges::find_if(open,
                                [&](const Open& each)
                                {
                                    return each.message.pgn == frame.pgn && each.message.source == frame.source &&
                                           each.message.destination == frame.destination;
                                });
}

FastPackets::Outcome FastPackets::add(const NetworkMessage& frame)
{
    if (!isFastPacket(frame.pgn))
        return { frame, {} };
    const auto name = "of " + std::to_string(frame.pgn) + " from " + std::to_string(frame.source);
    if (frame.data.empty())
        return { {}, "an empty frame " + name };
    const int number = frame.data[0] & counterMask, sequence = frame.data[0] >> counterBits;
    auto found = find(frame);
    const bool goesOn = number != 0 && found != open.end() && found->sequence == sequence && found->next == number;
    if (!goesOn && found != open.end())
    {
        open.erase(found);
        ++lost;
    }
    if (!goesOn && number != 0)
        return { {}, "frame " + std::to_string(number) + " " + name + " without those before it" };
    auto bytes = std::span(frame.data).subspan(1);
    if (number == 0)
    {
        if (bytes.empty() || bytes[0] > NetworkMessage::maxData)
            return {
                {}, "a first frame " + name + " without a length from 0 to " + std::to_string(NetworkMessage::maxData)
            };
        if (open.size() == mostOpen)
        {
            open.erase(open.begin());
            ++lost;
        }
        open.push_back({ frame, bytes[0], sequence, 0 });
        found = std::prev(open.end());
        found->message.data.clear();
        bytes = bytes.subspan(1);
    }
    ++found->next;
    auto& data = found->message.data;
    bytes = bytes.first(std::min(bytes.size(), found->size - data.size()));
    data.insert(data.end(), bytes.begin(), bytes.end());
    if (data.size() < found->size)
        return {};
    Outcome outcome { std::move(found->message), {} };
    open.erase(found);
    return outcome;
}

} // namespace Bench
