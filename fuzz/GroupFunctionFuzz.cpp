#include "EngineLayer/network/MarineRecords.h"

#include <cstdlib>

using namespace EngineLayer;
using namespace Platform;

namespace
{

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/** The head of the whole, and of an acknowledgement the function, target, errors and number of pairs. */
constexpr int headSize = 6;
constexpr int ackSize = headSize + 6;

void checkAcknowledgement(const PGNPacket& packet, int longest)
{
    auto ack = packet.getAckPacket();
    require(ack.dataSize() >= ackSize && ack.dataSize() <= ackSize + longest);
    require(PGNHelper::readPGNFromParcel(ack) == pgnGroupFunction && ack.readByte() == 0);
    require(ack.readByte() == packet.getHeaderAddress() && ack.readByte() == packet.getHeaderTransfer());
    require(ack.readByte() == PGNPacket::acknowledgement);
    require(PGNHelper::readPGNFromParcel(ack) == packet.getGroupPGN() && ack.readByte() == 0);
    const int pairs = ack.readByte();
    require(ack.bytesLeft() == (pairs + 1) / 2);
}

} // namespace

/** The bytes are a parcel with a group function, and also one without its head. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::uint8_t head[headSize] = { 0x00, 0xED, 0x01, 0x00, 0x23, 0x02 };
    constexpr std::size_t frameSize = 102;
    Parcel bare, whole;
    bare.fillData(data, static_cast<int>(size));
    whole.writeData(head);
    whole.writeData({ data, std::min(size, frameSize - sizeof(head)) });
    for (auto* parcel : { &bare, &whole })
    {
        auto packet = PGNPacket::parse(*parcel);
        if (!packet)
            continue;
        checkAcknowledgement(*packet, parcel->dataSize());
        if (!packet->isValid())
            continue;
        require(!parcel->isCut());
        const bool zoneAccepted = checkZoneParameters(*packet);
        const bool volumeAccepted = checkZoneVolume(*packet);
        for (const auto& [number, field] : packet->getFiledsValueMap())
        {
            require(field.number == number && (!zoneAccepted || number < lowPassField));
            require(!volumeAccepted || number != volumeZoneField || field.value <= 2);
            require(!zoneAccepted || number < faderField || std::abs(zoneFieldValue(field)) <= 125);
        }
        checkAcknowledgement(*packet, parcel->dataSize());
    }
    return 0;
}
