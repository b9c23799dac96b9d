#include "bench/console/Verb.h"

namespace Bench
{

namespace
{

bool isOn(const Arguments& given)
{
    return given[0] == "on";
}

void tune(Tuner& tuner, const Arguments& given)
{
    if (const auto where = Tuner::parseFrequency(given[0]))
        tuner.tune(where->first, where->second);
}

std::string say(Tuner& tuner, const Arguments& given)
{
    if (given[0].size() > Tuner::nameSize)
        return "a station's name has at most " + std::to_string(Tuner::nameSize) + " characters";
    if (given[1].size() > Tuner::textSize)
        return "a station's text has at most " + std::to_string(Tuner::textSize) + " characters";
    tuner.say(given[0], given[1]);
    return {};
}

void seek(Tuner& tuner, const Arguments& given)
{
    const bool up = given[0] == "up";
    given.has(1) ? tuner.step(up) : tuner.seek(up);
}

std::string switchLights(Unit& unit, const Arguments& given)
{
    unit.supply.use()->setLights(isOn(given));
    unit.programs.setNight(isOn(given));
    return {};
}

} // namespace

Verbs panelVerbs()
{
    return {
        { "tune FREQUENCY", "Tunes in.", on(&Unit::tuner, tune) },
        { "seek up|down [step]", "Goes to the next station, or one step.", on(&Unit::tuner, seek) },
        { "rds NAME TEXT", "What the station says: a name of at most 8 characters, a text of 64.",
          on(&Unit::tuner, say) },
        { "weather on|off", "The weather alert.",
          on(&Unit::tuner, [](Tuner& tuner, auto& given) { tuner.setWeatherAlert(isOn(given)); }) },
        { "battery VOLTS", "The supply voltage, as the microcontroller measures it.",
          on(&Unit::supply, [](auto& supply, auto& given) { supply.setVolts(given.decimal(0)); }) },
        { "lights on|off", "The boat's lights; the pages have the colours of the night while they are on.",
          onUnit(switchLights) },
        { "panel trigger on|off", "The camera's trigger input.",
          on(&Unit::supply, [](auto& supply, auto& given) { supply.setTrigger(isOn(given)); }) },
        { "panel dimmer BRIGHTNESS", "The dimmer, as it is moved at the front panel.",
          on(&Unit::panel, [](auto& panel, auto& given) { panel.setDimmer(given.number(0)); }) },
    };
}

} // namespace Bench
