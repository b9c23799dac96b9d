#include "bench/simulation/Hand.h"

#include "bench/console/Verb.h"
#include "bench/text/Names.h"
#include "bench/unit/Settings.h"

#include <algorithm>
#include <filesystem>

namespace Simulation
{

namespace
{

using Bench::Arguments;
using namespace std::chrono_literals;

struct Row
{
    const char* line; ///< the console's pattern
    void (*run)(SimulatedUnit& unit, const Arguments& given);
};

std::uint8_t keyOf(const std::string& name)
{
    return static_cast<std::uint8_t>(Bench::findKey(name).value_or(0));
}

void plugUsb(SimulatedUnit& unit, const Arguments& given)
{
    const auto folder = unit.mountPoint(given.number(1, 1));
    std::error_code ignored; // there already, or not there
    if (given[0] == "in")
        std::filesystem::create_directories(folder, ignored);
    else
        std::filesystem::remove_all(folder, ignored);
}

void choosePage(SimulatedUnit& unit, const Arguments& given)
{
    if (auto* program = unit.programs.findCarrier(Pubhead::AppMainMenu))
        program->choosePage(Bench::findPage(given[0]));
}

void changeSetting(SimulatedUnit& unit, const Arguments& given)
{
    auto* program = unit.programs.findCarrier(Pubhead::AppSetup);
    if (program == nullptr)
        return;
    const int setting = *Bench::findSetting(given[0]);
    const auto* info = Bench::settingInfo(setting);
    if (info != nullptr && info->isText)
        program->changeSetting(setting, juce::String(given[1]));
    else
        program->changeSetting(setting, juce::String(given[1]).getIntValue());
}

/** Something that only this program does: "bt call [NAME...]" is its "call". */
template <int appType>
void tell(SimulatedUnit& unit, const Arguments& given)
{
    if (auto* program = unit.programs.find(appType))
    {
        juce::StringArray words;
        for (std::size_t i = 1; i < given.line().size(); ++i)
            words.add(given.line()[i]);
        program->order(words);
    }
}

template <void (SimulatedPrograms::*fault)(int)>
void toProgram(SimulatedUnit& unit, const Arguments& given)
{
    (unit.programs.*fault)(Bench::findApp(given[0]));
}

void silence(SimulatedUnit& unit, const Arguments& given)
{
    if (auto* program = unit.programs.find(Bench::findApp(given[0])))
        program->setSilent(!given.has(2));
}

void sendFromProgram(SimulatedUnit& unit, const Arguments& given)
{
    if (auto* program = unit.programs.find(Bench::findApp(given[0])))
        program->send(given.number(2), given.number(3), given.number(4));
}

template <void (Bench::Mcu::*fault)(Bench::Mcu::FaultyFrames)>
void toFrames(SimulatedUnit& unit, const Arguments& given)
{
    (unit.mcu.*fault)({ given.number(0, 1) });
}

void setTone(SimulatedUnit& unit, const Arguments& given)
{
    const auto& field = *std::ranges::find(Bench::toneFields, given[0], &Bench::ToneField::name);
    unit.networkDisplay.setTone(given.byte(2, 1), field, static_cast<std::int8_t>(given.number(1)));
}

void setBus(SimulatedUnit& unit, const Arguments& given)
{
    if (given[0] != "start")
        unit.programs.setBus(false);
    if (given[0] != "stop")
        unit.programs.setBus(true);
}

constexpr Row rows[] {
    { "mcu key KEY [ORIGIN]", [](auto& unit, auto& given) { unit.panel.pressKey(keyOf(given[0]), 0); } },
    { "mcu hold KEY [ORIGIN] TIME",
      [](auto& unit, auto& given) { unit.panel.hold(keyOf(given[0]), 0, given.time(2)); } },
    { "mcu source SOURCE [NUMBER]", [](auto& unit, auto& given) { unit.mcu.requestSource(given.source(0)); } },
    { "mcu status", [](auto& unit, auto&) { unit.mcu.requestDeviceStatus(); } },
    { "mcu power-off [kept]", [](auto& unit, auto& given) { unit.mcu.requestPowerOff(given.has(0)); } },
    { "mcu drop [AMOUNT] [FRAME]", toFrames<&Bench::Mcu::dropNext> },
    { "mcu corrupt [AMOUNT] [FRAME]", toFrames<&Bench::Mcu::corruptNext> },
    { "mcu repeat [AMOUNT] [FRAME]", toFrames<&Bench::Mcu::repeatNext> },
    { "mcu no-ack [AMOUNT] [FRAME]", toFrames<&Bench::Mcu::withholdAcks> },
    { "mcu silent TIME", [](auto& unit, auto& given) { unit.mcu.silence(given.time(0)); } },
    { "mcu delay TIME", [](auto& unit, auto& given) { unit.mcu.delayBy(given.time(0)); } },
    { "mcu reset", [](auto& unit, auto&) { unit.mcu.reset(); } },
    { "mcu well", [](auto& unit, auto&) { unit.mcu.clearFaults(); } },
    { "battery VOLTS", [](auto& unit, auto& given) { unit.supply.setVolts(given.decimal(0)); } },
    { "lights on|off", [](auto& unit, auto& given) { unit.supply.setLights(given[0] == "on"); } },
    { "panel trigger on|off", [](auto& unit, auto& given) { unit.supply.setTrigger(given[0] == "on"); } },
    { "panel dimmer BRIGHTNESS", [](auto& unit, auto& given) { unit.panel.setDimmer(given.number(0)); } },
    { "camera on|off", [](auto& unit, auto& given) { unit.videoDecoder.setSignal(given[0] == "on"); } },
    { "i2c slow TIME", [](auto& unit, auto& given) { unit.videoDecoder.slowBy(given.time(0)); } },
    { "i2c fail", [](auto& unit, auto&) { unit.videoDecoder.setFailing(true); } },
    { "i2c well", [](auto& unit, auto&) { unit.videoDecoder.setFailing(false), unit.videoDecoder.slowBy(0ms); } },
    { "gpio slow TIME", [](auto& unit, auto& given) { unit.gpio.slowBy(given.time(0)); } },
    { "gpio well", [](auto& unit, auto&) { unit.gpio.slowBy(0ms); } },
    { "dsp fail transfer [COUNT]", [](auto& unit, auto& given) { unit.dsp.failTransfers(given.number(0, 1)); } },
    { "dsp fail slow TIME", [](auto& unit, auto& given) { unit.dsp.slowBy(given.time(0)); } },
    { "dsp fail gone", [](auto& unit, auto&) { unit.dsp.setGone(true); } },
    { "dsp fail well", [](auto& unit, auto&) { unit.dsp.clearFaults(); } },
    { "mfd volume ZONE PERCENT",
      [](auto& unit, auto& given) { unit.networkDisplay.setVolume(given.byte(0), given.byte(1)); } },
    { "mfd step ZONE up|down",
      [](auto& unit, auto& given) { unit.networkDisplay.stepVolume(given.byte(0), given[1] == "up"); } },
    { "mfd mute [ZONE]", [](auto& unit, auto& given) { unit.networkDisplay.toggleMute(given.byte(0, 1)); } },
    { "mfd tone TONE LEVEL [ZONE]", setTone },
    { "remote REMOTE-KEY",
      [](auto& unit, auto& given) { unit.remote.press(Bench::WiredRemote::findKey(given[0]).value_or(0)); } },
    { "remote unplug", [](auto& unit, auto&) { unit.remote.unplug(); } },
    { "remote plug",
      [](auto& unit, auto&)
      {
          if (!unit.remote.isPlugged())
              unit.remote.plug();
      } },
    { "usb in|out [STORAGE]", plugUsb },
    { "menu PAGE", choosePage },
    { "set SETTING VALUE", changeSetting },
    { "bt connect [NAME...]", tell<Pubhead::AppBluetooth> },
    { "bt disconnect", tell<Pubhead::AppBluetooth> },
    { "bt call [NAME...]", tell<Pubhead::AppBluetooth> },
    { "bt hang-up", tell<Pubhead::AppBluetooth> },
    { "ipod connect [analog|digital]", tell<Pubhead::AppiPod> },
    { "ipod disconnect", tell<Pubhead::AppiPod> },
    { "satellite in|out", tell<Pubhead::AppSirius> },
    { "autotest enter", [](auto& unit, auto&) { unit.testEquipment.enterTestMode(); } },
    { "autotest leave", [](auto& unit, auto&) { unit.testEquipment.leaveTestMode(); } },
    { "autotest volume NUMBER", [](auto& unit, auto& given) { unit.testEquipment.setVolume(given.byte(0)); } },
    { "program PROGRAM crash", toProgram<&SimulatedPrograms::crash> },
    { "program PROGRAM exit", toProgram<&SimulatedPrograms::quit> },
    { "program PROGRAM hang", toProgram<&SimulatedPrograms::hang> },
    { "program PROGRAM wake", toProgram<&SimulatedPrograms::wakeUp> },
    { "program PROGRAM silent [off]", silence },
    { "program PROGRAM send MESSAGE [PARAMETER] [PARAMETER]", sendFromProgram },
    { "bus start|stop|restart", setBus },
    { "power cut", [](auto&, auto&) {} }, // whoever runs the unit looks after it
};

/** The console's own. */
const Bench::Verbs& verbs()
{
    static const auto all = []
    {
        Bench::Verbs each;
        for (const auto& group : Bench::allVerbs())
            each.insert(each.end(), group.verbs.begin(), group.verbs.end());
        return each;
    }();
    return all;
}

} // namespace

std::string carryOut(SimulatedUnit& unit, const std::string& line)
{
    static const Bench::Grammar grammar(verbs());
    const auto choice = grammar.choose(Bench::parseLine(line).words);
    if (!choice.arguments)
        return choice.error.empty() ? "'" + line + "' means nothing" : choice.error;
    const auto* row = std::ranges::find(rows, verbs()[choice.pattern].line, &Row::line);
    if (row == std::end(rows))
        return "'" + line + "' cannot be done in simulated time";
    unit.act([&] { row->run(unit, *choice.arguments); });
    return {};
}

} // namespace Simulation
