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
const auto& oneOf(const Range& range, Chance& chance)
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

std::string key(const SimulatedUnit&, Chance& chance)
{
    return "mcu key " + oneOf(keys(), chance);
}

std::string holdKey(const SimulatedUnit&, Chance& chance)
{
    return "mcu hold " + oneOf(keys(), chance) + " " + timeUpTo(chance, 200, 3000);
}

std::string source(const SimulatedUnit&, Chance& chance)
{
    static const auto names = Bench::sourceNames();
    return "mcu source " + oneOf(names, chance);
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

std::string networkMute(const SimulatedUnit&, Chance& chance)
{
    return "mfd mute " + between(chance, 1, 2);
}

std::string remoteKey(const SimulatedUnit&, Chance& chance)
{
    return std::string("remote ") + oneOf(Bench::WiredRemote::keys(), chance).name;
}

std::string setting(const SimulatedUnit&, Chance& chance)
{
    const auto& info = oneOf(Bench::allSettings(), chance);
    const int value = chance.between(info.lowest, info.highest);
    return std::string("set ") + info.name + " " +
           (info.isText ? info.values[static_cast<std::size_t>(value)] : std::to_string(value));
}

std::string lights(const SimulatedUnit& unit, Chance&)
{
    return unit.supply.state().lights ? "lights off" : "lights on";
}

std::string dimmer(const SimulatedUnit&, Chance& chance)
{
    return "panel dimmer " + between(chance, 0, 11);
}

std::string camera(const SimulatedUnit& unit, Chance&)
{
    return unit.supply.state().trigger ? "panel trigger off" : "panel trigger on";
}

std::string lowBattery(const SimulatedUnit& unit, Chance&)
{
    constexpr double low = 10.2;
    return unit.supply.state().volts > low ? "battery 10.2" : "battery 12.6";
}

std::string favourite(const SimulatedUnit&, Chance& chance)
{
    return chance.happens(500) ? "mcu key favorites" : "mcu key enter";
}

std::string standby(const SimulatedUnit&, Chance& chance)
{
    constexpr int standbyEvent = 8;
    return "program menu send " + std::to_string(Platform::RMSG_APP_EVENT) + " " + std::to_string(standbyEvent) + " " +
           between(chance, 0, 1);
}

std::string phone(const SimulatedUnit&, Chance& chance)
{
    return oneOf(Lines { "bt connect", "bt disconnect", "bt call", "bt hang-up" }, chance);
}

std::string iPod(const SimulatedUnit&, Chance& chance)
{
    return oneOf(Lines { "ipod connect analog", "ipod connect digital", "ipod disconnect" }, chance);
}

std::string satellite(const SimulatedUnit&, Chance& chance)
{
    return oneOf(Lines { "satellite in", "satellite out" }, chance);
}

std::string usb(const SimulatedUnit&, Chance& chance)
{
    const std::string way = chance.happens(500) ? "in " : "out ";
    return "usb " + way + between(chance, 1, 2);
}

std::string testEquipment(const SimulatedUnit&, Chance& chance)
{
    return chance.happens(500) ? "autotest enter" : "autotest volume " + between(chance, 0, 24);
}

/** Of a program that runs, as nothing can be done to another one. */
std::string toProgram(const SimulatedUnit& unit, Chance& chance, const char* what)
{
    const auto running = unit.programs.running();
    return running.empty() ? "" : std::string("program ") + Pubhead::appTypeName(oneOf(running, chance)) + " " + what;
}

std::string crash(const SimulatedUnit& unit, Chance& chance)
{
    return toProgram(unit, chance, "crash");
}

std::string quit(const SimulatedUnit& unit, Chance& chance)
{
    return toProgram(unit, chance, "exit");
}

std::string hang(const SimulatedUnit& unit, Chance& chance)
{
    return toProgram(unit, chance, "hang");
}

std::string silent(const SimulatedUnit& unit, Chance& chance)
{
    return toProgram(unit, chance, "silent");
}

std::string loseFrames(const SimulatedUnit&, Chance& chance)
{
    return "mcu drop " + between(chance, 1, 4);
}

std::string damageFrames(const SimulatedUnit&, Chance& chance)
{
    return "mcu corrupt " + between(chance, 1, 4);
}

std::string repeatFrames(const SimulatedUnit&, Chance& chance)
{
    return "mcu repeat " + between(chance, 1, 4);
}

std::string withholdAcks(const SimulatedUnit&, Chance& chance)
{
    return "mcu no-ack " + between(chance, 1, 4);
}

std::string silentMcu(const SimulatedUnit&, Chance& chance)
{
    return "mcu silent " + timeUpTo(chance, 50, 3000);
}

std::string slowMcu(const SimulatedUnit&, Chance& chance)
{
    return "mcu delay " + timeUpTo(chance, 1, 150);
}

std::string resetMcu(const SimulatedUnit&, Chance&)
{
    return "mcu reset";
}

std::string dspFails(const SimulatedUnit&, Chance& chance)
{
    return "dsp fail transfer " + between(chance, 1, 20);
}

std::string slowBus(const SimulatedUnit&, Chance& chance)
{
    return oneOf(Lines { "i2c slow ", "dsp fail slow ", "gpio slow " }, chance) + timeUpTo(chance, 10, 500);
}

std::string busFails(const SimulatedUnit&, Chance&)
{
    return "i2c fail";
}

std::string remotePulled(const SimulatedUnit& unit, Chance&)
{
    return unit.remote.isPlugged() ? "remote unplug" : "remote plug";
}

std::string bus(const SimulatedUnit&, Chance& chance)
{
    return chance.happens(500) ? "bus stop" : "bus start";
}

std::string powerOff(const SimulatedUnit&, Chance&)
{
    return "mcu power-off";
}

std::string cutPower(const SimulatedUnit&, Chance&)
{
    return powerCut;
}

constexpr Action actions[] {
    { "key", key },
    { "hold-key", holdKey },
    { "source", source },
    { "menu", menu },
    { "network-volume", networkVolume },
    { "network-tone", networkTone },
    { "network-mute", networkMute },
    { "remote-key", remoteKey },
    { "setting", setting },
    { "lights", lights },
    { "dimmer", dimmer },
    { "camera", camera },
    { "low-battery", lowBattery },
    { "favourite", favourite },
    { "standby", standby },
    { "phone", phone },
    { "ipod", iPod },
    { "satellite", satellite },
    { "usb", usb },
    { "test-equipment", testEquipment },
    { "crash", crash },
    { "quit", quit },
    { "hang", hang },
    { "silent", silent },
    { "lose-frames", loseFrames },
    { "damage-frames", damageFrames },
    { "repeat-frames", repeatFrames },
    { "withhold-acks", withholdAcks },
    { "silent-mcu", silentMcu },
    { "slow-mcu", slowMcu },
    { "reset-mcu", resetMcu },
    { "dsp-fails", dspFails },
    { "slow-bus", slowBus },
    { "bus-fails", busFails },
    { "remote-pulled", remotePulled },
    { "bus", bus },
    { "power-off", powerOff },
    { "power-cut", cutPower },
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
