#include "platform/marine/PGNPacket.h"

#include <algorithm>
#include <array>

namespace Platform
{

namespace
{

constexpr int pgnSize = 3;
constexpr int everybody = 0xFF;
constexpr int ownTransfer = 2;
constexpr int text = 0; ///< in place of a width: a length byte that counts itself and the next, a type byte, the text

/** The widths in bytes of a message's fields from number 1 on; from `repeatFrom` on they come again, 0 for never. */
struct MessageFormat
{
    std::int32_t pgn;
    int repeatFrom;
    int count;
    std::array<std::uint8_t, 17> widths;
};

constexpr std::array formats {
    MessageFormat { pgnCurrentFile, 0, 17, { 1, 1, 1, 4, 1, 2, 2, 1, 1, 1, 2, 1, 1, 4, 1, 1, 2 } },
    MessageFormat { pgnLibraryFile, 0, 17, { 1, 1, 4, 1, text, 2, 2, 1, 4, 1, 1, 1, 1, 1, text, text, text } },
    MessageFormat { pgnLibraryGroup, 10, 12, { 1, 1, 1, 1, 4, 2, 2, 2, 1, 4, text, text } },
    MessageFormat { pgnLibrarySearch, 0, 9, { 1, 1, 4, 1, text, 1, text, 1, text } },
    MessageFormat { pgnSupportedZones, 4, 5, { 1, 1, 1, 1, text } },
    MessageFormat { pgnZoneConfiguration, 0, 13, { 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 1 } },
    MessageFormat { pgnZoneVolume, 0, 7, { 1, 1, 1, 1, 1, 1, 4 } },
    MessageFormat { pgnBluetoothDevices, 4, 7, { 1, 1, 1, 6, 1, text, 1 } },
    MessageFormat { pgnBluetoothSource, 0, 5, { 1, 1, 1, 1, 6 } },
    MessageFormat { pgnZoneParameters, 0, 13, { 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 1 } },
};

const MessageFormat* formatOf(std::int32_t pgn)
{
    const auto found = std::find_if(formats.begin(), formats.end(), [=](auto& format) { return format.pgn == pgn; });
    return found != formats.end() ? &*found : nullptr;
}

/** Empty for a field that the message does not have. */
std::optional<int> widthOf(const MessageFormat& format, int number)
{
    if (number > format.count && format.repeatFrom > 0)
        number = format.repeatFrom + (number - format.repeatFrom) % (format.count - format.repeatFrom + 1);
    if (number < 1 || number > format.count)
        return {};
    return format.widths[static_cast<std::size_t>(number - 1)];
}

/** False when it is not whole. */
bool readText(Parcel& parcel, std::string& result)
{
    constexpr int lengthAndType = 2;
    const int length = parcel.readByte();
    parcel.readByte();
    if (length < lengthAndType)
        return false;
    const auto bytes = parcel.readData(length - lengthAndType);
    result.assign(bytes.begin(), bytes.end());
    return !parcel.isCut();
}

} // namespace

std::optional<PGNPacket> PGNPacket::parse(Parcel& parcel)
{
    constexpr int intervalAndOffset = 6;
    PGNPacket packet;
    PGNHelper::readPGNFromParcel(parcel);
    parcel.readByte();
    packet.address = parcel.readByte();
    packet.transfer = parcel.readByte();
    packet.function = parcel.readByte();
    packet.target = PGNHelper::readPGNFromParcel(parcel);
    if (parcel.isCut())
        return {};
    // What the unit does not know it cannot find fault with.
    if (packet.function > command || formatOf(packet.target) == nullptr)
    {
        packet.valid = true;
        return packet;
    }
    parcel.readData(packet.function == request ? intervalAndOffset : 1);
    packet.valid = packet.parsePairs(parcel);
    return packet;
}

bool PGNPacket::parsePairs(Parcel& parcel)
{
    const auto* format = formatOf(target);
    const int pairs = parcel.readByte();
    for (int i = 0; i < pairs && !parcel.isCut(); ++i)
    {
        FieldValue field;
        field.number = parcel.readByte();
        const auto width = widthOf(*format, field.number);
        if (width == text)
        {
            if (!readText(parcel, field.text))
                field.status = FieldStatus::invalidField;
        }
        else if (width)
            field.value = parcel.readNumber(*width);
        if (!width || parcel.isCut())
            field.status = FieldStatus::invalidField;
        order.push_back(field.number);
        fields[field.number] = field;
        if (field.status != FieldStatus::done)
            return false;
    }
    return !parcel.isCut();
}

const FieldValue* PGNPacket::getFiledsValue(int number) const
{
    const auto found = fields.find(number);
    return found != fields.end() ? &found->second : nullptr;
}

Parcel PGNPacket::getAckPacket() const
{
    constexpr int nibbleBits = 4;
    constexpr int noField = 0xF;
    Parcel ack;
    PGNHelper::writePGNHead(ack, *this, pgnGroupFunction);
    ack.writeByte(acknowledgement);
    PGNHelper::writePGNToParcel(ack, target);
    ack.writeByte(0);
    ack.writeByte(static_cast<int>(order.size()));
    for (std::size_t i = 0; i < order.size(); i += 2)
    {
        const auto status = [&](std::size_t at)
        { return at < order.size() ? static_cast<int>(fields.at(order[at]).status) : noField; };
        ack.writeByte(status(i) | status(i + 1) << nibbleBits);
    }
    return ack;
}

void PGNHelper::writePGNToParcel(Parcel& parcel, std::int32_t pgn)
{
    constexpr int shortBits = 16;
    parcel.writeShort(pgn);
    parcel.writeByte(pgn >> shortBits);
}

std::int32_t PGNHelper::readPGNFromParcel(Parcel& parcel)
{
    return static_cast<std::int32_t>(parcel.readNumber(pgnSize));
}

void PGNHelper::writePGNHead(Parcel& parcel, std::int32_t pgn)
{
    writePGNHead(parcel, pgn, everybody, ownTransfer);
}

void PGNHelper::writePGNHead(Parcel& parcel, const PGNPacket& packet, std::int32_t pgn)
{
    writePGNHead(parcel, pgn, packet.getHeaderAddress(), packet.getHeaderTransfer());
}

void PGNHelper::writePGNHead(Parcel& parcel, std::int32_t pgn, int address, int transfer)
{
    writePGNToParcel(parcel, pgn);
    parcel.writeByte(0);
    parcel.writeByte(address);
    parcel.writeByte(transfer);
}

} // namespace Platform
