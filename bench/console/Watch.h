#pragma once

#include "bench/console/Style.h"

#include <array>
#include <string>
#include <vector>

namespace Bench
{

class Unit;

/** What the live view shows of the unit, as texts. */
struct WatchView
{
    bool powered = true;
    std::string supply; ///< "12.6 V"
    std::string tuner;
    std::string engine; ///< "pid 1234", "" when it is off
    std::string page, behind, plays, source;
    bool agreed = false;
    std::string zone1, zone2;
    bool muted = false;
    std::vector<std::string> route; ///< what each way through the DSP listens to
    std::array<std::string, 2> remote;
    std::string dimmer;
    bool remotePlugged = true;
    std::string link, heartbeat;
    bool linkSilent = false;
    std::string network, networkTold; ///< what the display knows, and heard last
    struct Line
    {
        std::string number, name;
        bool high;
    };
    std::vector<Line> lines;
    struct Program
    {
        std::string name, state, plays;
        bool faulty = false;
    };
    std::vector<Program> programs;
};

constexpr int watchWidth = 80;

/** One line of text each, none wider than `watchWidth`. */
std::vector<std::string> composeWatch(const WatchView& view, const Style& style);
WatchView watchViewOf(Unit& unit);

} // namespace Bench
