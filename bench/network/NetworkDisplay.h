#pragma once

#include "bench/network/NetworkDecode.h"
#include "bench/network/NetworkNode.h"

#include <map>

namespace Bench
{

/**
    A multifunction display on the boat's network, which sees and controls the unit through the microcontroller. It
    knows of the unit what the unit has told.

    Journal streams: "mfd", each message of the unit in a person's words, "mfd zone 1" and "mfd zone 2" for those that
    begin with a zone, as which of two zones is told first is left to the link, and "mfd sent", each message to it,
    whoever on the network sent it.
*/
class NetworkDisplay
{
public:
    /** All must outlive it. */
    NetworkDisplay(Journal& journalToUse, Mcu& mcuToUse, NetworkNode& node);
    NetworkDisplay(const NetworkDisplay&) = delete;
    NetworkDisplay& operator=(const NetworkDisplay&) = delete;

    using Fields = std::vector<std::pair<std::uint8_t, std::uint8_t>>; ///< number and value

    // Requests; zone 0 asks for the volume of both.
    void requestZones() { request(Pgn::zones, 1); }
    void requestConfiguration(std::uint8_t zone) { request(Pgn::zoneConfiguration, zone); }
    void requestParameters(std::uint8_t zone) { request(Pgn::zoneParameters, zone); }
    void requestVolumes(std::uint8_t zone) { request(Pgn::zoneVolume, zone); }
    void isoRequest(int pgn);

    // Commands; zone 0 is both. The unit refuses what is out of range.
    void setVolume(std::uint8_t zone, std::uint8_t percent);
    void stepVolume(std::uint8_t zone, bool up);
    void toggleMute(std::uint8_t zone);
    void setTone(std::uint8_t zone, const ToneField& field, std::int8_t value);
    /** What the phone plays is wanted; the unit hands this on to its Bluetooth program. */
    void choosePhone();

    /** Any message; at most `longestToUnit` bytes, the rest is cut off. */
    void send(int pgn, Bytes data);
    /** The trigger of a software update: as a message, or as a block of data. */
    void startUpdate();
    void startUpdateByData();
    /** `text` counts for selector 4, which tells a version instead of asking for one. */
    void requestVersion(std::uint8_t selector, const std::string& text);
    /** Requests for the volume of both zones, so many a second; as `McuSeries::flood`. */
    void flood(int perSecond, Mcu::Milliseconds duration);

    struct Zone
    {
        std::string name;
        std::optional<int> volume; ///< percent
        std::optional<bool> muted;
        std::optional<ZoneTone> configuration;
        std::optional<ZoneTone> parameters;
    };
    struct State
    {
        std::map<int, Zone> zones;
        std::string lastAnswer; ///< the last acknowledgement, in words
        std::string lastTold;   ///< the last message of the unit, in words
        unsigned received = 0, sent = 0;
    };
    State state() const { return current; }

    /** Stream and text of a message of the unit in a person's words. */
    static std::pair<std::string, std::string> streamAndText(const std::string& words);

private:
    Journal& journal;
    Mcu& mcu;
    State current;

    void request(int pgn, std::uint8_t zone);
    void command(int pgn, const Fields& fields);
    void note(bool fromUnit, const std::string& words);
    void learn(const NetworkMessage& message);
};

} // namespace Bench
