#pragma once

#include "bench/mcu/McuFrame.h"

#include <array>
#include <optional>
#include <string>

namespace Bench
{

/**
    The tuner inside the microcontroller: three bands with stations, seek and step that find them, and what a station
    says of itself. Frames in, frames out; its owner locks.
*/
class Tuner
{
public:
    enum Band : int { fm = 0, am = 1, weather = 2 };
    static constexpr int bandCount = 3;
    /** Names of at most so many bytes, texts of so many. */
    static constexpr std::size_t nameSize = 8;
    static constexpr std::size_t textSize = 64;

    struct Report
    {
        int command;
        Bytes data;
    };
    using Reports = std::vector<Report>;

    /** What the unit asks of the tuner; empty for a command that is not the tuner's. */
    Reports hear(int command, const Bytes& data);

    /** In the band's own unit: 10 kHz on FM, kHz on AM, the channel 1 to 7 on the weather band. Clamped to the band. */
    Reports tune(Band band, int frequency);
    /** Back to where the band was left. */
    Reports select(Band band) { return tune(band, frequencies[static_cast<std::size_t>(band)]); }
    /** In the band that the unit listens to. */
    Reports seek(bool up);
    Reports step(bool up);
    /** What the station says from now on, until another is tuned in. */
    Reports say(const std::string& name, const std::string& text);
    Reports setWeatherAlert(bool on);

    Band band() const { return current; }
    int frequency() const { return frequencies[static_cast<std::size_t>(current)]; }
    int region() const { return area; } ///< 0 Americas, 1 Europe
    bool weatherAlert() const { return alert; }
    /** "FM 101.10", "AM 1000", "WX 3". */
    std::string text() const;

    /** "101.1" on FM, "1000" on AM; empty when it is no frequency of a band. */
    static std::optional<std::pair<Band, int>> parseFrequency(const std::string& text);

private:
    Reports reportAll() const;
    Report reportFrequency() const;
    Reports testMode(const Bytes& data);
    void arriveAt(int frequency);

    Band current = fm;
    std::array<int, bandCount> frequencies { 10110, 1000, 1 };
    int area = 0;
    bool alert = false;
    std::string name, radioText;
    std::array<std::uint8_t, bandCount> sensitivity { 40, 35, 30 };
};

} // namespace Bench
