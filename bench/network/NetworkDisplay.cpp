#include "bench/network/NetworkDisplay.h"

#include <algorithm>
#include <utility>

namespace Bench
{

namespace
{

constexpr std::uint8_t groupRequest = 0;
constexpr std::uint8_t groupCommand = 1;
constexpr std::uint8_t priorityUnchanged = 0xF8;
constexpr std::uint8_t unchanged = 0xFF;
constexpr std::uint8_t zoneField = 1;
constexpr std::uint8_t volumeField = 2;
constexpr std::uint8_t stepField = 3;
constexpr std::uint8_t muteField = 4;

void appendPgn(Bytes& bytes, int pgn)
{
    constexpr int pgnSize = 3;
    for (int i = 0; i < pgnSize; ++i)
        bytes.push_back(static_cast<std::uint8_t>(pgn >> (8 * i)));
}

void appendFields(Bytes& bytes, const NetworkDisplay::Fields& fields)
{
    bytes.push_back(static_cast<std::uint8_t>(fields.size()));
    for (const auto& [number, value] : fields)
        bytes.insert(bytes.end(), { number, value });
}

Bytes requestOf(int pgn, std::uint8_t zone)
{
    Bytes data { groupRequest };
    appendPgn(data, pgn);
    constexpr int intervalAndOffset = 6;
    data.insert(data.end(), intervalAndOffset, unchanged);
    appendFields(data, { { zoneField, zone } });
    return data;
}

Bytes parcelOf(int pgn, Bytes data)
{
    data.resize(std::min(data.size(), longestToUnit));
    NetworkMessage message;
    message.pgn = pgn;
    message.source = displayAddress;
    message.data = std::move(data);
    return parcelToUnit(message);
}

} // namespace

NetworkDisplay::NetworkDisplay(Journal& journalToUse, Mcu& mcuToUse, NetworkNode& node)
    : journal(journalToUse)
    , mcu(mcuToUse)
{
    node.addListener(
        [this](const NetworkMessage& message)
        {
            const bool fromUnit = message.source == unitAddress;
            if (fromUnit)
                learn(message);
            note(fromUnit, networkText(message));
        });
    mcu.addListener(
        [this](const Mcu::Frame& frame)
        {
            // What is about the network, but is no message of it.
            if (isOfNetwork(frame.command) && !networkMessageOf(frame))
                note(frame.fromUnit, networkText(frame));
        });
}

void NetworkDisplay::choosePhone()
{
    command(Pgn::bluetoothSource, { { 1, 1 } });
}

void NetworkDisplay::send(int pgn, Bytes data)
{
    mcu.send({ Mcu::pgnParcel, parcelOf(pgn, std::move(data)) });
}

void NetworkDisplay::request(int pgn, std::uint8_t zone)
{
    send(Pgn::groupFunction, requestOf(pgn, zone));
}

void NetworkDisplay::command(int pgn, const Fields& fields)
{
    Bytes data { groupCommand };
    appendPgn(data, pgn);
    data.push_back(priorityUnchanged);
    appendFields(data, fields);
    send(Pgn::groupFunction, std::move(data));
}

void NetworkDisplay::isoRequest(int pgn)
{
    Bytes data;
    appendPgn(data, pgn);
    send(Pgn::isoRequest, std::move(data));
}

void NetworkDisplay::setVolume(std::uint8_t zone, std::uint8_t percent)
{
    command(Pgn::zoneVolume, { { zoneField, zone }, { volumeField, percent } });
}

void NetworkDisplay::stepVolume(std::uint8_t zone, bool up)
{
    constexpr std::uint8_t stepUp = 0, stepDown = 1;
    command(Pgn::zoneVolume, { { zoneField, zone }, { stepField, up ? stepUp : stepDown } });
}

void NetworkDisplay::toggleMute(std::uint8_t zone)
{
    command(Pgn::zoneVolume, { { zoneField, zone }, { muteField, 1 } });
}

void NetworkDisplay::setTone(std::uint8_t zone, const ToneField& field, std::int8_t value)
{
    command(Pgn::zoneParameters,
            { { zoneField, zone }, { static_cast<std::uint8_t>(field.field), static_cast<std::uint8_t>(value) } });
}

void NetworkDisplay::startUpdate()
{
    send(Pgn::proprietary, { 0xC0, 0x9A, 0x01, 0x00, 0xFF, 0xFF, 0xFF, 0xFF });
}

void NetworkDisplay::startUpdateByData()
{
    mcu.send({ Mcu::dataBlock, { 30, 0 } });
}

void NetworkDisplay::requestVersion(std::uint8_t selector, const std::string& text)
{
    Bytes data { selector };
    data.insert(data.end(), text.begin(), text.end());
    mcu.send({ Mcu::version, std::move(data) });
}

void NetworkDisplay::flood(int perSecond, Mcu::Milliseconds duration)
{
    mcu.series().flood(McuSeries::floodingNetwork, "mfd flood",
                       { { Mcu::pgnParcel, parcelOf(Pgn::groupFunction, requestOf(Pgn::zoneVolume, 0)) } }, perSecond,
                       duration);
}

void NetworkDisplay::note(bool fromUnit, const std::string& words)
{
    ++(fromUnit ? current.received : current.sent);
    if (fromUnit)
        current.lastTold = words;
    auto [stream, text] = fromUnit ? streamAndText(words) : std::pair<std::string, std::string>("mfd sent", words);
    journal.add(std::move(stream), std::move(text));
}

std::pair<std::string, std::string> NetworkDisplay::streamAndText(const std::string& words)
{
    for (const std::string zone : { "zone 1", "zone 2" })
        if ((words + " ").starts_with(zone + " "))
            return { "mfd " + zone, words.substr(std::min(words.size(), zone.size() + 1)) };
    return { "mfd", words };
}

void NetworkDisplay::learn(const NetworkMessage& message)
{
    if (message.destination == displayAddress && isAcknowledgement(message))
        current.lastAnswer = networkText(message);
    if (const auto volume = zoneVolumeOf(message))
    {
        auto& zone = current.zones[volume->zone];
        zone.volume = volume->percent;
        if (volume->muted)
            zone.muted = volume->muted;
    }
    if (const auto tone = zoneToneOf(message))
    {
        auto& zone = current.zones[tone->zone];
        (message.pgn == Pgn::zoneConfiguration ? zone.configuration : zone.parameters) = tone;
    }
    if (const auto names = zoneNamesOf(message))
        for (const auto& [zone, name] : *names)
            current.zones[zone].name = name;
}

} // namespace Bench
