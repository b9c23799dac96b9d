#include "bench/network/NetworkNode.h"

#include "bench/network/ByteReader.h"
#include "bench/network/NetworkDecode.h"

#include <string_view>
#include <utility>

namespace Bench
{

namespace
{

constexpr int pgnSize = 3;

void append(Bytes& bytes, std::uint64_t number, int size)
{
    for (int i = 0; i < size; ++i)
        bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
}

/** Filled up with what says that there is nothing. */
void append(Bytes& bytes, std::string_view text, std::size_t size)
{
    constexpr std::uint8_t nothing = 0xFF;
    const auto begin = bytes.size();
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.resize(begin + size, nothing);
}

/** ISO 11783-5: who it is, apart from the address that it happens to have. */
Bytes nameOfNode()
{
    constexpr std::uint64_t serialNumber = 1, ofNoMaker = 2045, multimediaPlayer = 130, entertainment = 125, marine = 4;
    constexpr int makerBit = 21, functionBit = 40, classBit = 49, industryBit = 60;
    Bytes name;
    append(name,
           serialNumber | ofNoMaker << makerBit | multimediaPlayer << functionBit | entertainment << classBit |
               marine << industryBit,
           sizeof(std::uint64_t));
    return name;
}

Bytes productInformation()
{
    constexpr int shortSize = 2, version = 2100, productCode = 1;
    constexpr std::size_t textSize = 32;
    constexpr std::uint8_t certification = 0, loadEquivalency = 2; // times 50 mA
    Bytes data;
    append(data, version, shortSize);
    append(data, productCode, shortSize);
    for (const auto* text : { "Marine audio head unit", "simulated", "1", "000001" })
        append(data, text, textSize);
    data.insert(data.end(), { certification, loadEquivalency });
    return data;
}

/** What node and unit send, and what they take: of a list the number and the messages. */
constexpr int sent[] = { Pgn::addressClaim,    Pgn::groupFunction,     Pgn::pgnList,      Pgn::productInformation,
                         Pgn::currentFile,     Pgn::libraryFile,       Pgn::libraryGroup, Pgn::librarySearch,
                         Pgn::zones,           Pgn::zoneConfiguration, Pgn::zoneVolume,   Pgn::bluetoothDevices,
                         Pgn::bluetoothSource, Pgn::zoneParameters };
constexpr int taken[] = { Pgn::isoRequest, Pgn::proprietary, Pgn::groupFunction, Pgn::proprietaryFast };
constexpr std::pair<std::uint8_t, std::span<const int>> lists[] = { { 0, sent }, { 1, taken } };

} // namespace

NetworkNode::NetworkNode(Mcu& mcu)
{
    mcu.addListener([this](const Mcu::Frame& frame) { hear(frame); });
    mcu.setResetListener([this] { claimAddress(); });
}

void NetworkNode::hear(const Mcu::Frame& frame)
{
    if (frame.fromUnit && frame.command == Mcu::lastMemory) // both have been switched on
        claimAddress();
    const auto message = networkMessageOf(frame);
    if (!message)
        return;
    tell(*message);
    if (!frame.fromUnit && message->pgn == Pgn::isoRequest)
        answer(*message);
}

void NetworkNode::answer(const NetworkMessage& request)
{
    ByteReader reader(request.data);
    switch (static_cast<int>(reader.number(pgnSize)))
    {
    case Pgn::addressClaim:
        return claimAddress();
    case Pgn::productInformation:
        return say(Pgn::productInformation, everybody, productInformation());
    case Pgn::pgnList:
        // Asked of everybody, it is answered to everybody.
        return listMessages(request.destination == everybody ? everybody : request.source);
    default:
        return; // the unit's to answer
    }
}

void NetworkNode::claimAddress()
{
    say(Pgn::addressClaim, everybody, nameOfNode());
}

void NetworkNode::listMessages(int asker)
{
    for (const auto& [kind, messages] : lists)
    {
        Bytes data { kind };
        for (const int pgn : messages)
            append(data, static_cast<std::uint64_t>(pgn), pgnSize);
        say(Pgn::pgnList, asker, std::move(data));
    }
}

void NetworkNode::say(int pgn, int destination, Bytes data)
{
    NetworkMessage message;
    message.pgn = pgn;
    message.source = unitAddress;
    message.destination = destination;
    message.data = std::move(data);
    tell(message);
}

void NetworkNode::tell(const NetworkMessage& message)
{
    for (const auto& listener : listeners)
        listener(message);
}

} // namespace Bench
