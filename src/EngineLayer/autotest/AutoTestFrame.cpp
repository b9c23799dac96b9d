#include "EngineLayer/autotest/AutoTestFrame.h"

#include <numeric>

namespace EngineLayer::AutoTestFrame
{

namespace
{

constexpr std::uint8_t toEquipment[] = { 0xAA, 0xEE };
constexpr std::uint8_t fromEquipment[] = { 0xFF, 0xAA };
constexpr std::size_t lengthAt = 3;
constexpr int commandAt = 4;

std::uint8_t checksum(std::span<const std::uint8_t> bytes)
{
    return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0u));
}

} // namespace

Bytes build(std::uint32_t sequence, std::span<const std::uint8_t> message)
{
    const auto length = message.size() + overhead;
    Bytes frame;
    frame.reserve(length);
    frame.assign(std::begin(toEquipment), std::end(toEquipment));
    frame.push_back(static_cast<std::uint8_t>(sequence));
    frame.push_back(static_cast<std::uint8_t>(length));
    frame.insert(frame.end(), message.begin(), message.end());
    frame.push_back(checksum(frame));
    return frame;
}

int Request::command() const
{
    return parameters().empty() ? -1 : at(commandAt);
}

int Request::at(int index) const
{
    const auto position = static_cast<std::size_t>(index);
    return index >= 0 && position < content.size() ? content[position] : 0;
}

std::optional<Request> parse(std::span<const std::uint8_t> frame)
{
    if (frame.size() < overhead || !std::equal(std::begin(fromEquipment), std::end(fromEquipment), frame.begin()) ||
        frame[lengthAt] != frame.size())
        return std::nullopt;
    const auto content = frame.first(frame.size() - 1);
    if (checksum(content) != frame.back())
        return std::nullopt;
    return Request(content);
}

} // namespace EngineLayer::AutoTestFrame
