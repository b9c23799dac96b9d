#pragma once

#include "bench/mcu/Mcu.h"

#include <array>
#include <optional>
#include <string>

namespace Bench
{

/**
    The tuner behind the microcontroller: three bands with stations, seek and step that find them, and what a station
    says of itself. Journal streams: "mcu tuner" (where it is tuned to, with each report of it), "mcu rds" and "mcu weather"
    (what it is told to say).
*/
class Tuner
{
public:
    enum Band : int { fm = 0, am = 1, weather = 2 };
    static constexpr int bandCount = 3;
    /** Names of at most so many bytes, texts of so many. */
    static constexpr std::size_t nameSize = 8;
    static constexpr std::size_t textSize = 64;

    /** Both must outlive it. */
    Tuner(Journal& journalToUse, Mcu& mcuToUse);
    Tuner(const Tuner&) = delete;
    Tuner& operator=(const Tuner&) = delete;

    /** In the band's own unit: 10 kHz on FM, kHz on AM, the channel 1 to 7 on the weather band. Clamped to the band. */
    void tune(Band band, int frequency);
    /** In the band that the unit listens to. */
    void seek(bool up);
    void step(bool up);
    /** What the station says from now on, until another is tuned in. */
    void say(const std::string& name, const std::string& text);
    void setWeatherAlert(bool on);

    Band band() const { return current; }
    int frequency() const { return frequencies[static_cast<std::size_t>(current)]; }
    int region() const { return area; } ///< 0 Americas, 1 Europe
    bool weatherAlert() const { return alert; }
    /** "FM 101.10", "AM 1000", "WX 3". */
    std::string text() const;

    /** "101.1" on FM, "1000" on AM; empty when it is no frequency of a band. */
    static std::optional<std::pair<Band, int>> parseFrequency(const std::string& text);

private:
    using Reports = std::vector<McuMessage>;

    Journal& journal;
    Mcu& mcu;

    void hear(const Mcu::Frame& frame);
    void select(Source source);
    void send(const Reports& reports);
    void reportAll();
    void testMode(const Bytes& data);
    void arriveAt(int frequency);
    /** To the station that FM is tuned to. */
    void listen();

    Band current = fm;
    std::array<int, bandCount> frequencies { 10110, 1000, 1 };
    int area = 0;
    bool alert = false;
    std::string name, radioText;
    std::array<std::uint8_t, bandCount> sensitivity { 40, 35, 30 };
};

} // namespace Bench
