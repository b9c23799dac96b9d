#include "platform/marine/PGNPacket.h"

#include <gmock/gmock.h>

namespace
{

using namespace Platform;

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const Parcel& parcel)
{
    return { parcel.data(), parcel.data() + parcel.dataSize() };
}

Parcel parcelOf(const Bytes& bytes)
{
    Parcel parcel;
    parcel.fillData(bytes.data(), static_cast<int>(bytes.size()));
    return parcel;
}

std::optional<PGNPacket> parse(const Bytes& bytes)
{
    auto parcel = parcelOf(bytes);
    return PGNPacket::parse(parcel);
}

/** From address 0x23, transfer 2, with what follows the head. */
Bytes groupFunction(const Bytes& content)
{
    Bytes bytes { 0x00, 0xED, 0x01, 0x00, 0x23, 0x02 };
    bytes.insert(bytes.end(), content.begin(), content.end());
    return bytes;
}

/** A command to the zone's configuration: fader 7, bass -3. */
const Bytes command = groupFunction({ 0x01, 0x15, 0xFE, 0x01, 0xF8, 0x03, 0x01, 0x01, 0x03, 0x07, 0x08, 0xFD });

} // namespace

TEST(ParcelTest, ReadsWhatItWrites)
{
    Parcel parcel;
    parcel.writeByte(0x1FF);
    parcel.writeShort(0x801E);
    parcel.writeInt(-2);
    parcel.writeString("Ä");
    EXPECT_EQ(bytesOf(parcel), (Bytes { 0xFF, 0x1E, 0x80, 0xFE, 0xFF, 0xFF, 0xFF, 0xC3, 0x84 }));
    EXPECT_EQ(parcel.readByte(), 0xFF);
    EXPECT_EQ(parcel.readShort(), 0x801E);
    EXPECT_EQ(parcel.readInt(), -2);
    EXPECT_FALSE(parcel.isCut());
    EXPECT_EQ(parcel.readInt(), 0x84C3) << "what is there of it";
    EXPECT_TRUE(parcel.isCut());
    EXPECT_TRUE(parcel.readData(1).empty());
}

TEST(PGNPacketTest, ReadsCommandsAndRequests)
{
    auto packet = parse(command);
    ASSERT_TRUE(packet && packet->isValid());
    EXPECT_EQ(packet->getGroupFunction(), PGNPacket::command);
    EXPECT_EQ(packet->getGroupPGN(), pgnZoneConfiguration);
    EXPECT_EQ(packet->getHeaderAddress(), 0x23);
    EXPECT_EQ(packet->getHeaderTransfer(), 2);
    ASSERT_NE(packet->getFiledsValue(8), nullptr);
    EXPECT_EQ(packet->getFiledsValue(8)->value, 0xFDu);
    packet->getFiledsValueMap().at(3).status = FieldStatus::outOfRange;
    EXPECT_EQ(bytesOf(packet->getAckPacket()), groupFunction({ 0x02, 0x15, 0xFE, 0x01, 0x00, 0x03, 0x30, 0xF0 }))
        << "in the order of the message, the odd one filled up";

    // A request for the names: a text field, and fields that come again.
    packet = parse(groupFunction({ 0x00, 0x0E, 0xFE, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x03,
                                   0x01, 0x00, 0x05, 0x04, 0x01, 'A',  'B',  0x07, 0x02, 0x01 }));
    ASSERT_TRUE(packet && packet->isValid());
    EXPECT_EQ(packet->getFiledsValue(5)->text, "AB");
    EXPECT_NE(packet->getFiledsValue(7), nullptr) << "the second zone's name";
}

// What is wrong in its structure is answered once, with the offending field; what the unit does not know is not wrong.
TEST(PGNPacketTest, TellsDamageFromWhatItDoesNotKnow)
{
    for (std::size_t length = 0; length < command.size(); ++length)
    {
        const auto packet = parse({ command.begin(), command.begin() + static_cast<std::ptrdiff_t>(length) });
        EXPECT_EQ(packet.has_value(), length >= 10) << length;
        EXPECT_FALSE(packet && packet->isValid()) << length;
    }
    const auto unknownField = parse(groupFunction({ 0x01, 0x15, 0xFE, 0x01, 0xF8, 0x02, 0x01, 0x01, 0x0E, 0x00 }));
    ASSERT_TRUE(unknownField && !unknownField->isValid());
    EXPECT_EQ(bytesOf(unknownField->getAckPacket()), groupFunction({ 0x02, 0x15, 0xFE, 0x01, 0x00, 0x02, 0x10 }));
    const auto shortText = parse(groupFunction({ 0x01, 0x0E, 0xFE, 0x01, 0xF8, 0x01, 0x05, 0x01, 0x01 }));
    ASSERT_TRUE(shortText && !shortText->isValid());
    const auto unknownTarget = parse(groupFunction({ 0x01, 0x34, 0xF1, 0x01, 0xF8, 0x01, 0x63 }));
    ASSERT_TRUE(unknownTarget && unknownTarget->isValid());
    const auto otherFunction = parse(groupFunction({ 0x05, 0x15, 0xFE, 0x01, 0xF8 }));
    ASSERT_TRUE(otherFunction && otherFunction->isValid());
    const auto twice = parse(groupFunction({ 0x01, 0x15, 0xFE, 0x01, 0xF8, 0x02, 0x03, 0x01, 0x03, 0x02 }));
    ASSERT_TRUE(twice && twice->isValid());
    EXPECT_EQ(twice->getFiledsValue(3)->value, 2u) << "the last one holds";
}
