#include "bench/network/NetworkMessage.h"

#include "bench/network/ByteReader.h"

namespace Bench
{

namespace
{

constexpr int pgnSize = 3;
constexpr int fromAnother = 2; ///< the transfer byte
constexpr int groupPriority = 3;
constexpr int usualPriority = 6;

/** The message with the address byte as its source and, where it has one, as its destination. */
std::optional<NetworkMessage> messageOf(std::span<const std::uint8_t> bytes)
{
    ByteReader reader(bytes);
    NetworkMessage message;
    message.pgn = static_cast<int>(reader.number(pgnSize));
    message.priority = message.pgn == Pgn::groupFunction ? groupPriority : usualPriority;
    reader.byte();
    message.source = reader.byte();
    message.destination = isAddressed(message.pgn) ? message.source : everybody;
    reader.byte();
    if (reader.isCut())
        return {};
    message.data = reader.remaining();
    return message;
}

} // namespace

std::optional<NetworkMessage> messageFromUnit(std::span<const std::uint8_t> parcel)
{
    auto message = messageOf(parcel);
    if (message)
        message->source = unitAddress;
    return message;
}

std::optional<NetworkMessage> messageToUnit(std::span<const std::uint8_t> parcel, bool toEverybody)
{
    auto message = messageOf(parcel);
    if (message && isAddressed(message->pgn))
        message->destination = toEverybody ? everybody : unitAddress;
    return message;
}

Bytes parcelToUnit(const NetworkMessage& message)
{
    Bytes parcel;
    for (const int value : { message.pgn, message.pgn >> 8, message.pgn >> 16, 0, message.source, fromAnother })
        parcel.push_back(static_cast<std::uint8_t>(value));
    parcel.insert(parcel.end(), message.data.begin(), message.data.end());
    return parcel;
}

} // namespace Bench
