#include "bench/network/NetworkDecode.h"
#include "bench/simulation/World.h"
#include "bench/text/Names.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/settings/SetupIndex.h"

#include <algorithm>
#include <filesystem>

namespace Simulation
{

namespace
{

using namespace std::chrono_literals;
using Platform::RMSG_APP_EVENT;

template <typename Range>
const auto& oneOf(const Range& range, Chance& chance)
{
    return *(std::begin(range) + static_cast<std::ptrdiff_t>(chance.below(std::size(range))));
}

std::string key(SimulatedUnit& unit, Chance& chance)
{
    // The reset to the factory's values is a way out of every world.
    static const std::vector<std::string> names = []
    {
        auto all = Bench::keyNames();
        std::erase(all, "playpause-long");
        return all;
    }();
    const auto& name = oneOf(names, chance);
    constexpr int atPanel = 0;
    unit.panel.pressKey(*Bench::findKey(name), atPanel);
    return name;
}

std::string source(SimulatedUnit& unit, Chance& chance)
{
    static const std::vector<std::string> names = Bench::sourceNames();
    const auto found = Bench::findSource(std::vector { oneOf(names, chance) });
    unit.mcu.requestSource(*found);
    return Bench::sourceName(*found);
}

/** A touch on a page of the main menu. */
std::string menu(SimulatedUnit& unit, Chance& chance)
{
    auto* program = unit.programs.find(Pubhead::AppMainMenu);
    if (program == nullptr)
        return "not there";
    const auto& page = oneOf(Bench::allPages(), chance);
    program->choosePage(page.page);
    return Pubhead::pageName(page.page);
}

std::string networkVolume(SimulatedUnit& unit, Chance& chance)
{
    const auto zone = static_cast<std::uint8_t>(chance.between(1, 2));
    const auto percent = static_cast<std::uint8_t>(chance.between(0, 100));
    unit.networkDisplay.setVolume(zone, percent);
    return std::to_string(percent);
}

std::string networkTone(SimulatedUnit& unit, Chance& chance)
{
    const auto& field = oneOf(Bench::toneFields, chance);
    const auto value = static_cast<std::int8_t>(chance.between(-7, 7));
    unit.networkDisplay.setTone(1, field, value);
    return std::string(field.name) + " " + std::to_string(value);
}

std::string networkMute(SimulatedUnit& unit, Chance& chance)
{
    unit.networkDisplay.toggleMute(static_cast<std::uint8_t>(chance.between(1, 2)));
    return {};
}

std::string remoteKey(SimulatedUnit& unit, Chance& chance)
{
    const auto& pressed = oneOf(Bench::WiredRemote::keys(), chance);
    unit.remote.press(pressed.byte);
    return pressed.name;
}

BenchProgram::ProgramModel* anyProgram(SimulatedUnit& unit, Chance& chance, int& appType)
{
    const auto running = unit.programs.running();
    if (running.empty())
        return nullptr;
    appType = oneOf(running, chance);
    return unit.programs.find(appType);
}

std::string setting(SimulatedUnit& unit, Chance& chance)
{
    struct Choice
    {
        int setting, lowest, highest;
    };
    static constexpr Choice choices[] {
        { Platform::faderSetting, 0, 12 },     { Platform::balanceSetting, 0, 12 },
        { Platform::bassSetting, 0, 12 },      { Platform::trebleSetting, 0, 12 },
        { Platform::middleSetting, 0, 12 },    { Platform::subwooferLevelSetting, 0, 12 },
        { Platform::subwooferSetting, 0, 1 },  { Platform::zone2OnSetting, 0, 1 },
        { Platform::dimmerModeSetting, 0, 2 }, { Platform::sourceLevelSetting, 0, 12 },
        { Platform::bluetoothSetting, 0, 1 },  { Platform::presetSetting, 0, 4 },
    };
    int appType = 0;
    auto* program = anyProgram(unit, chance, appType);
    if (program == nullptr)
        return "no program";
    const auto& choice = oneOf(choices, chance);
    const int value = chance.between(choice.lowest, choice.highest);
    program->changeSetting(choice.setting, value);
    return std::to_string(choice.setting) + " = " + std::to_string(value);
}

std::string lights(SimulatedUnit& unit, Chance&)
{
    unit.supply.setLights(!unit.supply.state().lights);
    return {};
}

std::string camera(SimulatedUnit& unit, Chance&)
{
    unit.supply.setTrigger(!unit.supply.state().trigger);
    return {};
}

std::string lowBattery(SimulatedUnit& unit, Chance&)
{
    constexpr double low = 10.2, well = 12.6;
    unit.supply.setVolts(unit.supply.state().volts > low ? low : well);
    return {};
}

std::string favourite(SimulatedUnit& unit, Chance& chance)
{
    const bool opens = chance.happens(500);
    unit.panel.pressKey(*Bench::findKey(opens ? "favorites" : "enter"), 0);
    return {};
}

std::string standby(SimulatedUnit& unit, Chance& chance)
{
    auto* program = unit.programs.find(Pubhead::AppMainMenu);
    if (program == nullptr)
        return "not there";
    constexpr int standbyEvent = 8;
    const int on = chance.between(0, 1);
    program->send(RMSG_APP_EVENT, standbyEvent, on);
    return on != 0 ? "left" : "entered";
}

std::string toProgram(SimulatedUnit& unit, Chance& chance, void (SimulatedPrograms::*what)(int))
{
    int appType = 0;
    if (anyProgram(unit, chance, appType) == nullptr)
        return "no program";
    (unit.programs.*what)(appType);
    return Pubhead::appTypeName(appType);
}

std::string crash(SimulatedUnit& unit, Chance& chance)
{
    return toProgram(unit, chance, &SimulatedPrograms::crash);
}

std::string quit(SimulatedUnit& unit, Chance& chance)
{
    return toProgram(unit, chance, &SimulatedPrograms::quit);
}

std::string hang(SimulatedUnit& unit, Chance& chance)
{
    return toProgram(unit, chance, &SimulatedPrograms::hang);
}

std::string silent(SimulatedUnit& unit, Chance& chance)
{
    return toProgram(unit, chance, &SimulatedPrograms::silence);
}

Bench::Mcu::FaultyFrames someFrames(Chance& chance)
{
    return { .left = chance.between(1, 4) };
}

std::string loseFrames(SimulatedUnit& unit, Chance& chance)
{
    unit.mcu.dropNext(someFrames(chance));
    return {};
}

std::string damageFrames(SimulatedUnit& unit, Chance& chance)
{
    unit.mcu.corruptNext(someFrames(chance));
    return {};
}

std::string repeatFrames(SimulatedUnit& unit, Chance& chance)
{
    unit.mcu.repeatNext(someFrames(chance));
    return {};
}

std::string withholdAcks(SimulatedUnit& unit, Chance& chance)
{
    unit.mcu.withholdAcks(someFrames(chance));
    return {};
}

std::string silentMcu(SimulatedUnit& unit, Chance& chance)
{
    unit.mcu.silence(std::chrono::milliseconds(chance.between(50, 3000)));
    return {};
}

std::string dspFails(SimulatedUnit& unit, Chance& chance)
{
    unit.dsp.failTransfers(chance.between(1, 20));
    return {};
}

std::string slowBus(SimulatedUnit& unit, Chance& chance)
{
    unit.videoDecoder.slowBy(std::chrono::milliseconds(chance.between(10, 2000)));
    unit.dsp.slowBy(std::chrono::milliseconds(chance.between(0, 50)));
    return {};
}

std::string remotePulled(SimulatedUnit& unit, Chance&)
{
    if (unit.remote.isPlugged())
        unit.remote.unplug();
    else
        unit.remote.plug();
    return {};
}

std::string usb(SimulatedUnit& unit, Chance& chance)
{
    const auto folder = unit.mountPoint(chance.between(1, 2));
    std::error_code error;
    if (!std::filesystem::remove(folder, error))
        std::filesystem::create_directories(folder, error);
    return {};
}

constexpr Action actions[] {
    { "key", key, false },
    { "source", source, false },
    { "menu", menu, false },
    { "network-volume", networkVolume, false },
    { "network-tone", networkTone, false },
    { "network-mute", networkMute, false },
    { "remote-key", remoteKey, false },
    { "setting", setting, false },
    { "lights", lights, false },
    { "camera", camera, false },
    { "low-battery", lowBattery, false },
    { "favourite", favourite, false },
    { "standby", standby, false },
    { "usb", usb, false },
    { "crash", crash, true },
    { "quit", quit, true },
    { "hang", hang, true },
    { "silent", silent, true },
    { "lose-frames", loseFrames, true },
    { "damage-frames", damageFrames, true },
    { "repeat-frames", repeatFrames, true },
    { "withhold-acks", withholdAcks, true },
    { "silent-mcu", silentMcu, true },
    { "dsp-fails", dspFails, true },
    { "slow-bus", slowBus, true },
    { "remote-pulled", remotePulled, true },
};

} // namespace

const Action* findAction(const std::string& name)
{
    const auto* found = std::ranges::find_if(actions, [&](const Action& action) { return name == action.name; });
    return found == std::end(actions) ? nullptr : found;
}

void endFaults(SimulatedUnit& unit)
{
    unit.mcu.clearFaults();
    unit.dsp.clearFaults();
    unit.dsp.slowBy(0ms);
    unit.videoDecoder.slowBy(0ms);
    unit.supply.setTrigger(false);
    constexpr double well = 12.6;
    unit.supply.setVolts(well);
    if (!unit.remote.isPlugged())
        unit.remote.plug();
    unit.programs.endFaults();
}

} // namespace Simulation
