#include "EngineLayer/network/MarineRecords.h"

#include "platform/base/Pubhead.h"
#include "platform/base/Utf8.h"

#include <algorithm>
#include <array>

namespace EngineLayer
{

using Platform::FieldStatus;
using Platform::FieldValue;
using Platform::Parcel;
using Platform::PGNPacket;

namespace
{

constexpr int highestVolume = 100;
constexpr int centre = 6;
constexpr int notKnown = 0xFF;
constexpr int notKnownShort = 0xFFFF;
constexpr std::int32_t notKnownInt = -1;
constexpr int zones = 2;
constexpr const char* zone1Name = "Zone 1";
constexpr int frameSize = 102;
constexpr std::array presetCodes { 0, 1, 4, 3, 10 };
constexpr std::array highPassFrequencies { 0, 50, 80, 120 };

/** Bytes in front of a zone's name: number, length, type. */
constexpr int nameHead = 3;
constexpr int lengthAndType = 2;
constexpr int utf8Text = 1;

void writeRange(Parcel& parcel, int count, int value)
{
    for (int i = 0; i < count; ++i)
        parcel.writeByte(value);
}

std::string fitting(const Parcel& parcel, const juce::String& name)
{
    const auto room = std::max(0, frameSize - parcel.dataSize() - nameHead);
    return std::string(Platform::utf8Prefix(name, static_cast<std::size_t>(room)));
}

} // namespace

void writeZoneConfiguration(Parcel& parcel, int zone, const ZoneSettings& settings)
{
    constexpr int singleBytes = 8;
    parcel.writeByte(zone);
    parcel.writeByte(highestVolume);
    if (zone == noZone)
    {
        writeRange(parcel, singleBytes, 0);
        parcel.writeInt(0);
        parcel.writeInt(0);
        return;
    }
    parcel.writeByte(settings.fader - centre);
    parcel.writeByte(settings.balance - centre);
    parcel.writeByte(settings.subwooferLevel);
    parcel.writeByte(settings.treble - centre);
    parcel.writeByte(settings.middle - centre);
    parcel.writeByte(settings.bass - centre);
    // A preset without a code has no byte either.
    if (juce::isPositiveAndBelow(settings.preset, static_cast<int>(presetCodes.size())))
        parcel.writeByte(presetCodes[static_cast<std::size_t>(settings.preset)]);
    parcel.writeByte(settings.highPass != 0 ? 1 : 0);
    const auto index = std::clamp(settings.highPass, 0, static_cast<int>(highPassFrequencies.size()) - 1);
    parcel.writeInt(highPassFrequencies[static_cast<std::size_t>(index)]);
    parcel.writeInt(0);
}

void writeSupportedZones(Parcel& parcel, int firstValue, const juce::String& zone2Name)
{
    parcel.writeByte(firstValue);
    parcel.writeByte(zones);
    parcel.writeByte(zones);
    for (int zone = 1; zone <= zones; ++zone)
    {
        const auto name = zone == 1 ? std::string(zone1Name) : fitting(parcel, zone2Name);
        parcel.writeByte(zone);
        parcel.writeByte(static_cast<int>(name.size()) + lengthAndType);
        parcel.writeByte(utf8Text);
        parcel.writeString(name);
    }
}

void writeZoneNames(Parcel& parcel, const juce::String& zone2Name)
{
    constexpr int lengthSaid = 6;
    parcel.writeByte(notKnown);
    parcel.writeByte(0);
    parcel.writeByte(zones);
    for (int zone = 1; zone <= zones; ++zone)
    {
        const auto name = zone == 1 ? std::string(zone1Name) : fitting(parcel, zone2Name);
        parcel.writeByte(zone);
        parcel.writeByte(lengthSaid);
        parcel.writeByte(utf8Text);
        parcel.writeString(name);
    }
}

void writeZoneVolume(Parcel& parcel, int zone, int volume, bool mute)
{
    constexpr int statusBits = 0xF3;
    constexpr int muteBit = 2;
    parcel.writeByte(zone);
    parcel.writeByte(volume * 2);
    parcel.writeByte(statusBits | (mute ? 1 : 0) << muteBit);
}

void writeRequestedZoneVolume(Parcel& parcel, int zone, int volume)
{
    constexpr int noStep = 3;
    parcel.writeByte(zone);
    parcel.writeByte(volume * 2);
    parcel.writeByte(noStep);
    writeRange(parcel, 2, 0);
}

void writeLibraryFile(Parcel& parcel, int source)
{
    parcel.writeByte(source);
    parcel.writeByte(notKnown);
    parcel.writeInt(notKnownInt);
    parcel.writeByte(notKnown);
    parcel.writeByte(0);
    parcel.writeShort(notKnownShort);
    parcel.writeShort(notKnownShort);
    parcel.writeByte(notKnown);
    parcel.writeInt(notKnownInt);
    constexpr std::array<std::uint8_t, 7> noTexts { 0, 0, 0, 2, 0, 2, 0 };
    parcel.writeData(noTexts);
}

void writeLibraryGroup(Parcel& parcel, int source)
{
    constexpr int shorts = 3;
    parcel.writeByte(source);
    writeRange(parcel, shorts, notKnown);
    parcel.writeInt(notKnownInt);
    for (int i = 0; i < shorts; ++i)
        parcel.writeShort(notKnownShort);
    parcel.writeByte(notKnown);
    parcel.writeInt(notKnownInt);
    parcel.writeByte(0);
}

int getScrFromWinceType(int page)
{
    using namespace Pubhead;
    struct Entry
    {
        int page;
        int code;
    };
    constexpr Entry table[] = { { mbAM, 1 },        { mbFM, 2 },           { mbWB, 3 },        { mbDAB, 4 },
                                { mbAuxin1, 5 },    { mbAuxin2, 5 },       { mbUSBAudio, 6 },  { mbUSBVideo, 6 },
                                { mbUSBAudio2, 6 }, { mbUSBAudio3, 6 },    { mbUSBAudio4, 6 }, { mbUSBAudio5, 6 },
                                { mbUSBAudio6, 6 }, { mbUSBAudio7, 6 },    { mbUSBAudio8, 6 }, { mbDiscAudio, 7 },
                                { mbDiscVideo, 7 }, { mbiPodAudio, 9 },    { mbiPodVideo, 9 }, { mbBTAudio, 11 },
                                { mbSirius, 12 },   { mbiPodPandora, 13 }, { mbHDMI, 23 } };
    const auto* found =
        std::find_if(std::begin(table), std::end(table), [=](auto& entry) { return entry.page == page; });
    return found != std::end(table) ? found->code : notKnown;
}

int zoneFieldValue(const FieldValue& field)
{
    constexpr int highestPositive = 128;
    constexpr int byteRange = 256;
    const auto value = static_cast<int>(std::min<std::uint64_t>(field.value, 0xFFFF));
    return field.number < 11 && value > highestPositive ? value - byteRange : value;
}

bool checkZoneParameters(PGNPacket& packet)
{
    struct Range
    {
        int lowest, highest;
    };
    constexpr std::array<Range, 12> ranges { Range { 0, 2 }, { 0, 100 }, { -6, 6 }, { -6, 6 }, { 0, 12 },  { -6, 6 },
                                             { -6, 6 },      { -6, 6 },  { 0, 10 }, { 0, 1 },  { 0, 125 }, { 0, 125 } };
    for (auto& [number, field] : packet.getFiledsValueMap())
    {
        const bool known = juce::isPositiveAndBelow(number - 1, static_cast<int>(ranges.size()));
        const auto value = zoneFieldValue(field);
        const auto range = known ? ranges[static_cast<std::size_t>(number - 1)] : Range { value, value };
        if (value < range.lowest || value > range.highest)
            field.status = FieldStatus::outOfRange;
        else if (!known || number == lowPassField)
            field.status = FieldStatus::notSupported;
        if (field.status != FieldStatus::done)
            return false;
    }
    return true;
}

bool checkZoneVolume(PGNPacket& packet)
{
    for (auto& [number, field] : packet.getFiledsValueMap())
    {
        const auto highest = number == volumeZoneField ? zones : highestVolume;
        if ((number == volumeZoneField || number == volumeValueField) &&
            field.value > static_cast<std::uint64_t>(highest))
        {
            field.status = FieldStatus::outOfRange;
            return false;
        }
    }
    return true;
}

juce::String networkVersionOf(const juce::String& osVersion)
{
    constexpr int dateLength = 6;
    const auto version = osVersion.trimCharactersAtStart("TRV_A6_V");
    return "O" + version.substring(0, version.indexOfChar('_') + 1) + version.getLastCharacters(dateLength);
}

} // namespace EngineLayer
