// The tuner and what else the microcontroller measures, at the console.
#include "bench/console/Console.h"

#include <sstream>

namespace Bench
{

namespace
{

std::optional<bool> onOff(const Words& words, std::size_t at)
{
    if (words.size() == at + 1 && (words[at] == "on" || words[at] == "off"))
        return words[at] == "on";
    return {};
}

} // namespace

Outcome Console::tune(const Words& words)
{
    const auto where = words.size() == 2 ? Tuner::parseFrequency(words[1]) : std::nullopt;
    if (!where)
        return usageOf("tune");
    unit.tuner->tune(where->first, where->second);
    return {};
}

Outcome Console::seek(const Words& words)
{
    const bool steps = words.size() == 3 && words[2] == "step";
    if ((words.size() != 2 && !steps) || (words[1] != "up" && words[1] != "down"))
        return usageOf("seek");
    steps ? unit.tuner->step(words[1] == "up") : unit.tuner->seek(words[1] == "up");
    return {};
}

Outcome Console::rds(const Words& words)
{
    if (words.size() != 3)
        return usageOf("rds");
    unit.tuner->say(words[1], words[2]);
    return {};
}

Outcome Console::weather(const Words& words)
{
    const auto on = onOff(words, 1);
    if (!on)
        return usageOf("weather");
    unit.tuner->setWeatherAlert(*on);
    return {};
}

Outcome Console::battery(const Words& words)
{
    constexpr double highest = 25.2;
    double volts = -1;
    std::istringstream text(words.size() == 2 ? words[1] : "");
    if (!(text >> volts) || !text.eof() || volts < 0 || volts > highest)
        return usageOf("battery");
    unit.supply->setVolts(volts);
    return {};
}

Outcome Console::lights(const Words& words)
{
    const auto on = onOff(words, 1);
    if (!on)
        return usageOf("lights");
    unit.supply->setLights(*on);
    return {};
}

Outcome Console::panel(const Words& words)
{
    const auto what = words.size() == 3 ? words[1] : std::string();
    constexpr int brightest = 11;
    if (const auto level = what == "dimmer" ? parseNumber(words[2], 0, brightest) : std::nullopt)
        unit.panel->setDimmer(*level);
    else if (const auto on = onOff(words, 2); on && what == "trigger")
        unit.supply->setTrigger(*on);
    else
        return usageOf("panel");
    return {};
}

} // namespace Bench
