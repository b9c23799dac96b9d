#include "bench/network/NetworkDecode.h"
#include "bench/simulation/Hand.h"
#include "bench/simulation/World.h"
#include "bench/text/Names.h"
#include "bench/unit/Settings.h"
#include "platform/channel/RemoteMessageIds.h"

#include <algorithm>

namespace Simulation
{

namespace
{

using Lines = std::vector<std::string>;

template <typename Range>
auto oneOf(const Range& range, Chance& chance)
{
    return *(std::begin(range) + static_cast<std::ptrdiff_t>(chance.below(std::size(range))));
}

std::string between(Chance& chance, int lowest, int highest)
{
    return std::to_string(chance.between(lowest, highest));
}

std::string timeUpTo(Chance& chance, int lowest, int highest)
{
    return between(chance, lowest, highest) + "ms";
}

const Lines& keys()
{
    // The reset to the factory's values is a way out of every world.
    static const auto names = []
    {
        auto all = Bench::keyNames();
        std::erase(all, "playpause-long");
        return all;
    }();
    return names;
}

std::string menu(const SimulatedUnit&, Chance& chance)
{
    return std::string("menu ") + Pubhead::pageName(oneOf(Bench::allPages(), chance).page);
}

std::string networkVolume(const SimulatedUnit&, Chance& chance)
{
    const auto zone = between(chance, 1, 2);
    return "mfd volume " + zone + " " + between(chance, 0, 100);
}

std::string networkTone(const SimulatedUnit&, Chance& chance)
{
    const std::string tone = oneOf(Bench::toneFields, chance).name;
    return "mfd tone " + tone + " " + between(chance, -7, 7);
}

std::string setting(const SimulatedUnit&, Chance& chance)
{
    const auto& info = oneOf(Bench::allSettings(), chance);
    const int value = chance.between(info.lowest, info.highest);
    return std::string("set ") + info.name + " " +
           (info.isText ? info.values[static_cast<std::size_t>(value)] : std::to_string(value));
}

std::string lowBattery(const SimulatedUnit& unit, Chance&)
{
    constexpr double low = 10.2;
    return unit.supply.state().volts > low ? "battery 10.2" : "battery 12.6";
}

std::string standby(const SimulatedUnit&, Chance& chance)
{
    constexpr int standbyEvent = 8;
    return "program menu send " + std::to_string(Platform::RMSG_APP_EVENT) + " " + std::to_string(standbyEvent) + " " +
           between(chance, 0, 1);
}

std::string usb(const SimulatedUnit&, Chance& chance)
{
    const std::string way = chance.happens(500) ? "in " : "out ";
    return "usb " + way + between(chance, 1, 2);
}

std::string slowBus(const SimulatedUnit&, Chance& chance)
{
    return oneOf(Lines { "i2c slow ", "dsp fail slow ", "gpio slow " }, chance) + timeUpTo(chance, 10, 500);
}

/** Of a program that runs, as nothing can be done to another one. */
std::string toProgram(const SimulatedUnit& unit, Chance& chance, const char* what)
{
    const auto running = unit.programs.running();
    return running.empty() ? "" : std::string("program ") + Pubhead::appTypeName(oneOf(running, chance)) + " " + what;
}

const Action actions[] {
    { "key", [](auto&, auto& chance) { return "mcu key " + oneOf(keys(), chance); } },
    { "hold-key",
      [](auto&, auto& chance) { return "mcu hold " + oneOf(keys(), chance) + " " + timeUpTo(chance, 200, 3000); } },
    { "source", [](auto&, auto& chance) { return "mcu source " + oneOf(Bench::sourceNames(), chance); } },
    { "menu", menu },
    { "network-volume", networkVolume },
    { "network-tone", networkTone },
    { "network-mute", [](auto&, auto& chance) { return "mfd mute " + between(chance, 1, 2); } },
    { "remote-key",
      [](auto&, auto& chance) { return std::string("remote ") + oneOf(Bench::WiredRemote::keys(), chance).name; } },
    { "setting", setting },
    { "lights",
      [](auto& unit, auto&) { return std::string(unit.supply.state().lights ? "lights off" : "lights on"); } },
    { "dimmer", [](auto&, auto& chance) { return "panel dimmer " + between(chance, 0, 11); } },
    { "camera", [](auto& unit, auto&)
      { return std::string(unit.supply.state().trigger ? "panel trigger off" : "panel trigger on"); } },
    { "low-battery", lowBattery },
    { "favourite",
      [](auto&, auto& chance) {
          return oneOf(Lines { "mcu key favorites", "mcu key enter" }, chance);
      } },
    { "standby", standby },
    { "phone",
      [](auto&, auto& chance) {
          return oneOf(Lines { "bt connect", "bt disconnect", "bt call", "bt hang-up" }, chance);
      } },
    { "ipod",
      [](auto&, auto& chance) {
          return oneOf(Lines { "ipod connect analog", "ipod connect digital", "ipod disconnect" }, chance);
      } },
    { "satellite",
      [](auto&, auto& chance) {
          return oneOf(Lines { "satellite in", "satellite out" }, chance);
      } },
    { "usb", usb },
    { "test-equipment",
      [](auto&, auto& chance) {
          return oneOf(Lines { "autotest enter", "autotest volume " + between(chance, 0, 24) }, chance);
      } },
    { "crash", [](auto& unit, auto& chance) { return toProgram(unit, chance, "crash"); } },
    { "quit", [](auto& unit, auto& chance) { return toProgram(unit, chance, "exit"); } },
    { "hang", [](auto& unit, auto& chance) { return toProgram(unit, chance, "hang"); } },
    { "silent", [](auto& unit, auto& chance) { return toProgram(unit, chance, "silent"); } },
    { "lose-frames", [](auto&, auto& chance) { return "mcu drop " + between(chance, 1, 4); } },
    { "damage-frames", [](auto&, auto& chance) { return "mcu corrupt " + between(chance, 1, 4); } },
    { "repeat-frames", [](auto&, auto& chance) { return "mcu repeat " + between(chance, 1, 4); } },
    { "withhold-acks", [](auto&, auto& chance) { return "mcu no-ack " + between(chance, 1, 4); } },
    { "silent-mcu", [](auto&, auto& chance) { return "mcu silent " + timeUpTo(chance, 50, 3000); } },
    { "slow-mcu", [](auto&, auto& chance) { return "mcu delay " + timeUpTo(chance, 1, 350); } },
    { "reset-mcu", [](auto&, auto&) { return std::string("mcu reset"); } },
    { "dsp-fails", [](auto&, auto& chance) { return "dsp fail transfer " + between(chance, 1, 20); } },
    { "slow-bus", slowBus },
    { "bus-fails", [](auto&, auto&) { return std::string("i2c fail"); } },
    { "remote-pulled",
      [](auto& unit, auto&) { return std::string(unit.remote.isPlugged() ? "remote unplug" : "remote plug"); } },
    { "bus",
      [](auto&, auto& chance) {
          return oneOf(Lines { "bus stop", "bus start" }, chance);
      } },
    { "power-off", [](auto&, auto&) { return std::string(powerOff); } },
    { "power-cut", [](auto&, auto&) { return std::string(powerCut); } },
};

} // namespace

const Action* findAction(const std::string& name)
{
    const auto* found = std::ranges::find_if(actions, [&](const Action& action) { return name == action.name; });
    return found == std::end(actions) ? nullptr : found;
}

std::vector<std::string> endsOfFaults(SimulatedUnit& unit)
{
    Lines lines { "bus start", "mcu well", "dsp fail well", "i2c well", "gpio well", "autotest leave", "bt hang-up" };
    if (unit.supply.state().trigger)
        lines.emplace_back("panel trigger off");
    if (unit.supply.state().volts < Bench::PowerSupply::State().volts)
        lines.emplace_back("battery 12.6");
    if (!unit.remote.isPlugged())
        lines.emplace_back("remote plug");
    for (const int appType : unit.programs.running())
    {
        const auto program = std::string("program ") + Pubhead::appTypeName(appType);
        if (unit.programs.isHung(appType))
            lines.push_back(program + " wake");
        if (unit.programs.find(appType)->isSilent())
            lines.push_back(program + " silent off");
    }
    return lines;
}

} // namespace Simulation
