#pragma once

#include "platform/marine/Parcel.h"

#include <map>
#include <optional>

namespace Platform
{

/** Numbers of the messages of NMEA 2000 that the unit knows. */
enum Pgn : std::int32_t {
    pgnIsoRequest = 59904,
    pgnProprietarySingleFrame = 65280,
    pgnGroupFunction = 126208,
    pgnCurrentFile = 130569, ///< Entertainment: current file and status
    pgnLibraryFile = 130570,
    pgnLibraryGroup = 130571,
    pgnLibrarySearch = 130572,
    pgnSupportedZones = 130574,
    pgnZoneConfiguration = 130581, ///< Entertainment: zone configuration status
    pgnZoneVolume = 130582,
    pgnBluetoothDevices = 130584,
    pgnBluetoothSource = 130585,
    pgnZoneParameters = 130586,
    pgnProprietaryFastPacket = 130850
};

/** What a receiver says of one field of a group function, or of the whole. */
enum class FieldStatus : std::uint8_t { done = 0, invalidField = 1, outOfRange = 3, denied = 4, notSupported = 5 };

/** One field of a group function. */
struct FieldValue
{
    int number = 0;
    std::uint64_t value = 0; ///< of a number, without a sign
    std::string text;        ///< of a text
    FieldStatus status = FieldStatus::done;
};

/**
    A group-function message (126208): a request for a message, or a command to change its fields. Values only.

        head   target PGN in 3 bytes, low first; 0; address; transfer
        request    00, target, interval in 4 bytes, offset in 2, number of pairs, pairs of field number and value
        command    01, target, priority, number of pairs, pairs
        acknowledgement   02, target, two error nibbles, number of pairs, a nibble for each pair, low nibble first
*/
class PGNPacket
{
public:
    enum GroupFunction : int { request = 0, command = 1, acknowledgement = 2 };

    /** Reads the whole parcel from its read position. Empty when it does not even name its target. */
    static std::optional<PGNPacket> parse(Parcel& parcel);

    /** False when it is cut short, or names a field that its target does not have. */
    bool isValid() const { return valid; }
    int getGroupFunction() const { return function; }
    std::int32_t getGroupPGN() const { return target; }
    int getHeaderAddress() const { return address; }
    int getHeaderTransfer() const { return transfer; }

    /** By ascending field number; of a number that comes twice the last one. Empty for a target that is not known. */
    std::map<int, FieldValue>& getFiledsValueMap() { return fields; }
    /** Null when the field is not there. */
    const FieldValue* getFiledsValue(int number) const;

    /** The answer that says what became of each field, in the order of the message. */
    Parcel getAckPacket() const;

private:
    std::int32_t target = 0;
    int function = 0;
    int address = 0;
    int transfer = 0;
    bool valid = false;
    std::map<int, FieldValue> fields;
    std::vector<int> order; ///< the field numbers as they came; the last one is the offending one of an invalid message

    bool parsePairs(Parcel& parcel);
};

/** The head of a parcel. */
struct PGNHelper
{
    static constexpr int headSize = 6;

    static void writePGNToParcel(Parcel& parcel, std::int32_t pgn);
    static std::int32_t readPGNFromParcel(Parcel& parcel);
    /** Of a message that the unit sends by itself: to everybody. */
    static void writePGNHead(Parcel& parcel, std::int32_t pgn);
    /** Of an answer. */
    static void writePGNHead(Parcel& parcel, const PGNPacket& packet, std::int32_t pgn);
    static void writePGNHead(Parcel& parcel, std::int32_t pgn, int address, int transfer);
};

} // namespace Platform
