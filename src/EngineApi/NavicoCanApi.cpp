#include "EngineApi/NavicoCanApi.h"

#include "EngineApi/HostLink.h"
#include "platform/base/CommandLine.h"
#include "platform/base/Logger.h"
#include "platform/marine/PGNPacket.h"

namespace EngineApi
{

namespace
{

constexpr Platform::Log logger { "EngineApi/NavicoCanApi", "NavicoManager" };

juce::MemoryBlock bytesOf(const Platform::Bundle::Ptr& bundle)
{
    return bundle != nullptr ? Platform::RemoteObjFormat::getByteArray(bundle) : juce::MemoryBlock();
}

void send(int command, const juce::MemoryBlock& bytes)
{
    if (!bytes.isEmpty())
        sendData(command, bytes.getData(), static_cast<int>(bytes.getSize()));
}

/** What the unit tells of a zone, and the names of both: to whom (0xFF everybody; an answer says the mute otherwise
 * than a report) and about which zone. The low half of a PGN tells those apart. */
int subjectOf(Platform::Parcel& parcel)
{
    constexpr int bits = 8;
    constexpr std::uint32_t lowHalf = 0xFFFF;
    parcel.setReadPosition(0);
    const auto pgn = Platform::PGNHelper::readPGNFromParcel(parcel);
    parcel.readByte();
    const int receiver = parcel.readByte();
    const auto subject = (static_cast<std::uint32_t>(pgn) & lowHalf) << bits | static_cast<std::uint32_t>(receiver);
    parcel.setReadPosition(Platform::PGNHelper::headSize);
    switch (pgn)
    {
    case Platform::pgnSupportedZones:
        return static_cast<int>(subject << bits);
    case Platform::pgnZoneConfiguration:
    case Platform::pgnZoneVolume:
    case Platform::pgnZoneParameters:
        return static_cast<int>(subject << bits | static_cast<std::uint32_t>(parcel.readByte()));
    default:
        return noSubject;
    }
}

} // namespace

void sendCanData(const Platform::Bundle::Ptr& bundle)
{
    send(EVENT_DATA_SEND_CAN, bytesOf(bundle));
}

void sendPgnBundle(const Platform::Bundle::Ptr& bundle)
{
    constexpr int logLine = 37;
    const auto bytes = bytesOf(bundle);
    if (bytes.isEmpty())
        return;
    send(EVENT_PGN_SEND_CAN, bytes);
    logger(logLine).info(
        "TxPGNParcelToNavico::" + Platform::hexPairs(bytes.getData(), static_cast<int>(bytes.getSize())) + "\n");
}

void sendPgnParcel(Platform::Parcel& parcel)
{
    sendDataUrgent(EVENT_PGN_SEND_CAN, parcel.data(), parcel.dataSize(), subjectOf(parcel));
    parcel.recycle();
}

void sendMediaInfo(const Platform::Bundle::Ptr& bundle)
{
    send(EVENT_MEDIA_INFO, bytesOf(bundle));
}

} // namespace EngineApi
