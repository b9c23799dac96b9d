#include "bench/network/NetworkDecode.h"

#include "bench/network/ByteReader.h"

#include <algorithm>
#include <utility>

namespace Bench
{

namespace
{

constexpr int pgnSize = 3;
constexpr int unknown = 0xFF;

/** What comes from the network may be anything; what the console shows is one line. */
std::string printable(std::span<const std::uint8_t> bytes)
{
    constexpr std::uint8_t blank = 0x20, del = 0x7F;
    std::string text;
    for (const auto byte : bytes)
        text += byte < blank || byte == del ? '?' : static_cast<char>(byte);
    return text;
}

std::string restAsBytes(ByteReader& reader)
{
    return hex(reader.remaining());
}

int signedByte(ByteReader& reader)
{
    return static_cast<std::int8_t>(reader.byte());
}

/** The number of a preset; the network has codes for them. */
std::string presetText(std::optional<int> code)
{
    constexpr std::array codes { 0, 1, 4, 3, 10 };
    if (!code)
        return "no preset";
    const auto found = std::ranges::find(codes, *code);
    return found != codes.end() ? "preset " + std::to_string(found - codes.begin())
                                : "preset code " + std::to_string(*code);
}

ZoneVolume readVolume(ByteReader& reader)
{
    constexpr int statusWithoutMute = 0xF3, muteBit = 2;
    ZoneVolume volume { reader.byte(), reader.byte(), {} };
    const auto status = reader.byte();
    if ((status & ~(1 << muteBit)) == statusWithoutMute)
        volume.muted = (status >> muteBit & 1) != 0;
    else
        reader.number(2); // the answer to a request for one zone: no step, and nothing
    return volume;
}

std::string volumeText(const ZoneVolume& volume)
{
    return "zone " + std::to_string(volume.zone) + " volume " + std::to_string(volume.percent) + " %" +
           (volume.muted.value_or(false) ? ", muted" : "");
}

ZoneTone readTone(ByteReader& reader)
{
    constexpr int wholeSize = 18;
    const bool hasPreset = reader.size() != wholeSize - 1;
    ZoneTone tone;
    tone.zone = reader.byte();
    tone.highestVolume = reader.byte();
    for (auto& value : tone.values)
        value = signedByte(reader);
    if (hasPreset)
        tone.preset = reader.byte();
    const bool highPassOn = reader.byte() != 0;
    const auto frequency = static_cast<std::int32_t>(reader.number(4));
    reader.number(4); // the low-pass, which the unit does not have
    if (highPassOn)
        tone.highPass = frequency;
    return tone;
}

std::vector<std::pair<int, std::string>> readNames(ByteReader& reader)
{
    constexpr int lengthAndType = 2;
    constexpr std::size_t sizeSaid = 6;
    const auto first = reader.byte();
    // Announced for no zone in particular, every name is said to be 6 long, whatever it is, and the 6 is that of its
    // bytes alone: so long is the fixed name of zone 1, and the last one goes on to the end.
    const bool lengthsAreFixed = reader.byte() == 0 && first == unknown;
    const auto count = reader.byte();
    std::vector<std::pair<int, std::string>> names;
    for (int i = 0; i < count && !reader.isCut(); ++i)
    {
        const auto zone = reader.byte();
        const auto length = reader.byte();
        reader.byte();
        const auto size = !lengthsAreFixed ? std::max(0, length - lengthAndType)
                          : i + 1 < count  ? static_cast<int>(sizeSaid)
                                           : reader.left();
        const auto bytes = reader.data(size);
        names.emplace_back(zone, printable(bytes));
    }
    return names;
}

std::string namesText(const std::vector<std::pair<int, std::string>>& names)
{
    std::string text = "zones:";
    const char* separator = " ";
    for (const auto& [zone, name] : names)
    {
        text += separator + std::to_string(zone) + " '" + name + "'";
        separator = ", ";
    }
    return text;
}

/** A field of a group function: how wide its value is, and what it means. */
struct GroupField
{
    int number;
    int width;
    const char* name;
};

constexpr GroupField zonesFields[] = { { 1, 1, "first zone" } };
constexpr GroupField volumeFields[] = { { 1, 1, "zone" },  { 2, 1, "volume" }, { 3, 1, "step" }, { 4, 1, "mute" },
                                        { 5, 1, nullptr }, { 6, 1, nullptr },  { 7, 4, nullptr } };
constexpr GroupField toneGroupFields[] = { { 1, 1, "zone" },       { 2, 1, "highest volume" }, { 3, 1, "fader" },
                                           { 4, 1, "balance" },    { 5, 1, "subwoofer" },      { 6, 1, "treble" },
                                           { 7, 1, "middle" },     { 8, 1, "bass" },           { 9, 1, "preset code" },
                                           { 10, 1, "high-pass" }, { 11, 2, "high-pass Hz" },  { 12, 2, "low-pass Hz" },
                                           { 13, 1, nullptr } };

std::span<const GroupField> groupFieldsOf(int pgn)
{
    switch (pgn)
    {
    case Pgn::zones:
        return zonesFields;
    case Pgn::zoneVolume:
        return volumeFields;
    case Pgn::zoneConfiguration:
    case Pgn::zoneParameters:
        return toneGroupFields;
    default:
        return {};
    }
}

std::string fieldText(int pgn, const GroupField& field, std::uint64_t value)
{
    if (field.name == nullptr)
        return "field " + std::to_string(field.number) + " = " + std::to_string(value);
    const std::string name = field.name;
    if (pgn == Pgn::zoneVolume && name == "volume")
        return name + " " + std::to_string(value) + " %";
    if (pgn == Pgn::zoneVolume && name == "step" && value <= 1)
        return name + (value == 0 ? " up" : " down");
    if (std::ranges::find(toneFields, name, &ToneField::name) != toneFields.end())
        return name + " " + std::to_string(static_cast<std::int8_t>(value));
    return name + " " + std::to_string(value);
}

std::string fieldsText(ByteReader& reader, int pgn)
{
    const auto fields = groupFieldsOf(pgn);
    const auto count = reader.byte();
    std::string text;
    for (int i = 0; i < count && !reader.isCut(); ++i)
    {
        const auto number = reader.byte();
        const auto field = std::ranges::find(fields, number, &GroupField::number);
        text += text.empty() ? ": " : ", ";
        // How wide its value is, is not known, nor where the next one begins.
        if (field == fields.end())
            return text + "field " + std::to_string(number) + " and " + restAsBytes(reader);
        text += fieldText(pgn, *field, reader.number(field->width));
    }
    return text;
}

std::string errorText(int error)
{
    switch (error)
    {
    case 1:
        return "invalid";
    case 3:
        return "out of range";
    case 4:
        return "denied";
    case 5:
        return "not supported";
    default:
        return "error " + std::to_string(error);
    }
}

std::string acknowledgementText(ByteReader& reader, int pgn)
{
    constexpr int nibble = 4, lowNibble = 0xF;
    std::string faults;
    const auto add = [&](const std::string& fault) { faults += (faults.empty() ? ": " : ", ") + fault; };
    if (const auto errors = reader.byte(); errors != 0)
        add("the message itself " + errorText((errors & lowNibble) != 0 ? errors & lowNibble : errors >> nibble));
    const auto count = reader.byte();
    int pair = 0;
    for (int i = 0; i < count && !reader.isCut(); ++i)
    {
        pair = i % 2 == 0 ? reader.byte() : pair >> nibble;
        if (const auto error = pair & lowNibble; error != 0)
            add("field " + std::to_string(i + 1) + " of " + std::to_string(count) + " " + errorText(error));
    }
    return (faults.empty() ? "acknowledged " : "refused ") + std::to_string(pgn) +
           (faults.empty() ? ": all done" : faults);
}

std::string groupText(ByteReader& reader)
{
    constexpr int request = 0, command = 1, acknowledgement = 2, intervalAndOffset = 6;
    const auto function = reader.byte();
    const auto pgn = static_cast<int>(reader.number(pgnSize));
    switch (function)
    {
    case request:
        reader.data(intervalAndOffset);
        return "asks for " + std::to_string(pgn) + fieldsText(reader, pgn);
    case command:
        reader.byte();
        return "commands " + std::to_string(pgn) + fieldsText(reader, pgn);
    case acknowledgement:
        return acknowledgementText(reader, pgn);
    default:
        return "group function " + std::to_string(function) + " for " + std::to_string(pgn) + ": " +
               restAsBytes(reader);
    }
}

std::string plainText(const std::string& name, ByteReader& reader)
{
    const auto bytes = restAsBytes(reader);
    return name + (bytes.empty() ? "" : ": ") + bytes;
}

std::string proprietaryText(ByteReader& reader)
{
    constexpr std::array<std::uint8_t, 8> update { 0xC0, 0x9A, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF };
    constexpr std::size_t numberAt = 2;
    const auto begin = reader;
    auto bytes = reader.remaining();
    const auto number = bytes.size() > numberAt ? std::exchange(bytes[numberAt], std::uint8_t {}) : std::uint8_t {};
    if (std::ranges::equal(bytes, update))
        return "starts an update, number " + std::to_string(number);
    reader = begin;
    return plainText("PGN " + std::to_string(Pgn::proprietary), reader);
}

/** The NAME of the sender: a number of 64 bits. */
std::string claimText(ByteReader& reader)
{
    constexpr int makerBit = 21, makerBits = 11, functionBit = 40, functionBits = 8, classBit = 49, classBits = 7;
    const auto name = reader.number(sizeof(std::uint64_t));
    const auto part = [&](int bit, int bits) { return std::to_string(name >> bit & ((1ULL << bits) - 1)); };
    return "claims an address: class " + part(classBit, classBits) + ", function " + part(functionBit, functionBits) +
           ", maker " + part(makerBit, makerBits) + ", number " + part(0, makerBit);
}

std::string pgnListText(ByteReader& reader)
{
    std::string text = reader.byte() == 0 ? "sends" : "takes";
    while (reader.left() > 0)
        text += " " + std::to_string(reader.number(pgnSize));
    return text;
}

std::string productText(ByteReader& reader)
{
    constexpr int versionAndCode = 4, textSize = 32;
    reader.data(versionAndCode);
    const auto next = [&]
    {
        auto bytes = reader.data(textSize);
        std::erase(bytes, std::uint8_t { unknown });
        return "'" + printable(bytes) + "'";
    };
    const auto model = next(), software = next(), version = next(), number = next();
    constexpr int certificationAndLoad = 2;
    reader.data(certificationAndLoad);
    return "product " + model + ", software " + software + ", version " + version + ", number " + number;
}

/** Of a message that the display understands as far as its bytes go. */
std::string contentText(int pgn, ByteReader& reader)
{
    switch (pgn)
    {
    case Pgn::isoRequest:
        return "asks for " + std::to_string(reader.number(pgnSize));
    case Pgn::addressClaim:
        return claimText(reader);
    case Pgn::pgnList:
        return pgnListText(reader);
    case Pgn::productInformation:
        return productText(reader);
    case Pgn::groupFunction:
        return groupText(reader);
    case Pgn::zones:
        return namesText(readNames(reader));
    case Pgn::zoneVolume:
        return volumeText(readVolume(reader));
    case Pgn::zoneConfiguration:
        return "zone " + readTone(reader).text("configuration");
    case Pgn::zoneParameters:
        return "zone " + readTone(reader).text("parameters");
    case Pgn::proprietary:
        return proprietaryText(reader);
    default:
        return plainText("PGN " + std::to_string(pgn), reader);
    }
}

std::string dataBlockText(std::span<const std::uint8_t> bytes)
{
    constexpr int update = 30, updateReply = 0x801E;
    ByteReader reader(bytes);
    const auto type = static_cast<int>(reader.number(2));
    if (reader.isCut())
        return "data block, cut short: " + hex(bytes);
    if (type == update)
        return "starts an update by data";
    if (type != updateReply)
        return plainText("data block " + std::to_string(type), reader);
    const bool started = reader.byte() != 0;
    auto text = reader.remaining();
    if (!text.empty() && text.back() == 0)
        text.pop_back();
    return std::string("update ") + (started ? "started" : "refused") + ": " + printable(text);
}

std::string versionText(bool fromUnit, std::span<const std::uint8_t> bytes)
{
    constexpr int told = 4;
    if (bytes.empty())
        return "version, cut short";
    const auto selector = std::to_string(bytes[0]);
    return fromUnit || bytes[0] == told ? "version " + selector + ": " + printable(bytes.subspan(1))
                                        : "asks for version " + selector;
}

/** Reads a whole message with one of the functions above. */
template <typename Read>
auto wholly(const NetworkMessage& message, Read read) -> std::optional<decltype(read(std::declval<ByteReader&>()))>
{
    ByteReader reader(message.data);
    auto value = read(reader);
    return reader.isCut() ? std::nullopt : std::optional(std::move(value));
}

} // namespace

std::string ZoneTone::text(const char* kind) const
{
    auto text = std::to_string(zone) + " " + kind + ":";
    for (std::size_t i = 0; i < values.size(); ++i)
        text += std::string(" ") + toneFields[i].name + " " + std::to_string(values[i]) + ",";
    text += " " + presetText(preset) + ", high-pass " + (highPass ? std::to_string(*highPass) + " Hz" : "off");
    constexpr int usual = 100;
    return highestVolume == usual ? text : text + ", highest volume " + std::to_string(highestVolume) + " %";
}

std::optional<ZoneVolume> zoneVolumeOf(const NetworkMessage& message)
{
    return message.pgn == Pgn::zoneVolume ? wholly(message, readVolume) : std::nullopt;
}

std::optional<ZoneTone> zoneToneOf(const NetworkMessage& message)
{
    const bool isTone = message.pgn == Pgn::zoneConfiguration || message.pgn == Pgn::zoneParameters;
    return isTone ? wholly(message, readTone) : std::nullopt;
}

std::optional<std::vector<std::pair<int, std::string>>> zoneNamesOf(const NetworkMessage& message)
{
    return message.pgn == Pgn::zones ? wholly(message, readNames) : std::nullopt;
}

bool isAcknowledgement(const NetworkMessage& message)
{
    constexpr std::uint8_t acknowledgement = 2;
    return message.pgn == Pgn::groupFunction && !message.data.empty() && message.data[0] == acknowledgement;
}

std::string networkText(const NetworkMessage& message)
{
    ByteReader reader(message.data);
    const auto text = contentText(message.pgn, reader);
    if (reader.isCut())
        return "PGN " + std::to_string(message.pgn) + ", cut short: " + hex(message.data);
    return text + (reader.left() > 0 ? ", and " + std::to_string(reader.left()) + " bytes more" : "");
}

std::optional<NetworkMessage> networkMessageOf(const Mcu::Frame& frame)
{
    if (frame.command != Mcu::pgnParcel)
        return {};
    return frame.fromUnit ? messageFromUnit(frame.data) : messageToUnit(frame.data, frame.toEverybody);
}

bool isOfNetwork(int command)
{
    constexpr std::array commands { Mcu::dataBlock, Mcu::version, Mcu::pgnParcel, Mcu::mediaInfo,
                                    Mcu::networkDeviceId };
    return std::ranges::find(commands, command) != commands.end();
}

std::string networkText(const Mcu::Frame& frame)
{
    switch (frame.command)
    {
    case Mcu::pgnParcel:
    {
        const auto message = networkMessageOf(frame);
        return message ? networkText(*message) : "parcel, cut short: " + hex(frame.data);
    }
    case Mcu::dataBlock:
        return dataBlockText(frame.data);
    case Mcu::version:
        return versionText(frame.fromUnit, frame.data);
    case Mcu::mediaInfo:
        return "media information: " + hex(frame.data);
    default:
        return "device id '" + printable(std::span(frame.data).subspan(std::min<std::size_t>(frame.data.size(), 1))) +
               "'";
    }
}

} // namespace Bench
