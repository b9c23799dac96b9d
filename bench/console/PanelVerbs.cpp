#include "bench/console/Verb.h"

namespace Bench
{

namespace
{

template <typename Function>
auto onTuner(Function function)
{
    return onUnit([function](Unit& unit, const Arguments& given)
                  { unit.mcu.useTuner([&](Tuner& tuner) { return function(tuner, given); }); });
}

bool isOn(const Arguments& given)
{
    return given[0] == "on";
}

Tuner::Reports tune(Tuner& tuner, const Arguments& given)
{
    const auto where = Tuner::parseFrequency(given[0]);
    return where ? tuner.tune(where->first, where->second) : Tuner::Reports();
}

Tuner::Reports seek(Tuner& tuner, const Arguments& given)
{
    const bool up = given[0] == "up";
    return given.has(1) ? tuner.step(up) : tuner.seek(up);
}

} // namespace

Verbs panelVerbs()
{
    return {
        { "tune FREQUENCY", "Tunes in.", onTuner(tune) },
        { "seek up|down [step]", "Goes to the next station, or one step.", onTuner(seek) },
        { "rds NAME TEXT", "What the station says: a name of 8 characters, a text of 64.",
          onTuner([](Tuner& tuner, auto& given) { return tuner.say(given[0], given[1]); }) },
        { "weather on|off", "The weather alert.",
          onTuner([](Tuner& tuner, auto& given) { return tuner.setWeatherAlert(isOn(given)); }) },
        { "battery VOLTS", "The supply voltage, as the microcontroller measures it.",
          onUnit([](Unit& unit, auto& given) { unit.mcu.setSupply(given.decimal(0)); }) },
        { "lights on|off", "The boat's lights.",
          onUnit([](Unit& unit, auto& given) { unit.mcu.setLights(isOn(given)); }) },
        { "panel trigger on|off", "The camera's trigger input.",
          onUnit([](Unit& unit, auto& given) { unit.mcu.setTrigger(isOn(given)); }) },
        { "panel dimmer BRIGHTNESS", "The dimmer, as it is moved at the panel.",
          onUnit([](Unit& unit, auto& given) { unit.mcu.setDimmer(given.number(0)); }) },
    };
}

} // namespace Bench
