// What the bench tells about the unit.
#include "bench/console/Columns.h"
#include "bench/console/Console.h"
#include "bench/console/Script.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace Bench
{

using namespace Pubhead;

namespace
{

constexpr int labelWidth = 16;

std::string secondsText(std::chrono::milliseconds time)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << static_cast<double>(time.count()) / 1000.0 << " s";
    return text.str();
}

std::string deviceStatusText(const Bytes& status)
{
    if (status.size() < 2)
        return hex(status);
    std::string present;
    const auto add = [&](bool isThere, const char* name)
    {
        if (isThere)
            present += (present.empty() ? "" : ", ") + std::string(name);
    };
    add(status[0] != 0, "USB");
    add((status[1] & 0x02) != 0, "iPod");
    add((status[1] & 0x04) != 0, "Bluetooth");
    add((status[1] & 0x08) != 0, "Pandora");
    add((status[1] & 0x10) != 0, "satellite tuner");
    return (present.empty() ? "nothing present" : present) + "  (" + hex(status) + ")";
}

} // namespace

void Console::row(const std::string& label, const std::string& value) const
{
    output << "  " << style.dim(label + std::string(std::max(1, labelWidth - static_cast<int>(label.size())), ' '))
           << value << "\n";
}

std::string Console::promptState() const
{
    const auto mcu = unit.mcu->state();
    const auto front = unit.programs.pageInFront();
    const auto running = unit.programs.running().size();
    const auto source = mcu.source ? sourceName(*mcu.source) : std::string("no source");
    auto text = mcu.silent   ? style.warning("mcu silent")
                : mcu.agreed ? style.good(source)
                             : style.warning(mcu.wanted ? source + " → " + sourceName(*mcu.wanted) : source);
    text += style.dim(" · ") + (front == NUM_OF_PAGES ? style.dim("no page") : style.bold(pageName(front)));
    text += style.dim(" · " + std::to_string(running) + (running == 1 ? " program" : " programs"));
    return unit.engine.isRunning() ? text : style.bad("engine off") + style.dim(" · ") + text;
}

Outcome Console::state(const Words&)
{
    const auto mcu = unit.mcu->state();
    output << style.bold("Unit") << "\n";
    row("engine", unit.engine.isRunning() ? style.good("runs") + style.dim("  pid " + std::to_string(unit.engine.pid()))
                                          : style.bad("off"));
    const auto front = unit.programs.pageInFront();
    row("in front",
        front == NUM_OF_PAGES ? "no page" : std::string(pageInfo(front)->title) + style.dim("  ") + pageName(front));
    std::string usb;
    for (int number = 1; number <= Unit::usbCount; ++number)
        if (unit.isUsbPlugged(number))
            usb += (usb.empty() ? "" : ", ") + std::to_string(number);
    row("usb storage", usb.empty() ? "none" : usb);
    row("camera", std::string(unit.videoDecoder->hasSignal() ? "signal" : "no signal") +
                      style.dim("  polled " + std::to_string(unit.videoDecoder->reads()) + " times"));
    row("folder", unit.folder());

    output << style.bold("Microcontroller") << "\n";
    row("port", unit.mcuPort());
    row("source", (mcu.source ? sourceName(*mcu.source) : std::string("none")) +
                      (mcu.agreed ? style.good("  agreed") : style.warning("  not agreed")) +
                      (mcu.wanted ? style.dim("  asked for ") + sourceName(*mcu.wanted) : ""));
    row("heartbeat", mcu.sinceHeartbeat ? secondsText(*mcu.sinceHeartbeat) + " ago" +
                                              style.dim("  " + std::to_string(mcu.heartbeats) + " so far")
                                        : std::string("none yet"));
    row("device status", mcu.deviceStatus ? deviceStatusText(*mcu.deviceStatus) : "none yet");
    row("muted", mcu.muted ? "yes" : "no");
    row("panel",
        std::string(unit.panel->state().powered ? "on" : "off") + style.dim("  device id " + hex(mcu.deviceId)));
    row("tuner", unit.tuner->text() + style.dim(unit.tuner->region() == 1 ? "  Europe" : "  Americas") +
                     (unit.tuner->weatherAlert() ? style.warning("  weather alert") : ""));
    const auto supply = unit.supply->state();
    row("supply", voltsText(supply.volts) + (supply.lights ? ", lights on" : "") +
                      (supply.trigger ? ", camera trigger on" : "") +
                      style.dim("  dimmer " + std::to_string(unit.panel->state().dimmer)));
    row("power off", mcu.readyForPowerOff ? "the unit is ready" : "no");
    row("link", (mcu.silent ? style.warning("silent") + "  " : std::string()) + std::to_string(mcu.received) + " in, " +
                    std::to_string(mcu.sent) + " out, " + std::to_string(mcu.resent) + " resent, " +
                    std::to_string(mcu.givenUp) + " given up, " + std::to_string(mcu.duplicates) + " repeated, " +
                    std::to_string(mcu.damaged) + " damaged");
    if (!mcu.recent.empty())
        output << style.bold("Last frames") << style.dim("  (<- from the unit)") << "\n";
    for (const auto& frame : mcu.recent)
        output << "  " << frame << "\n";
    return {};
}

Outcome Console::pages(const Words&)
{
    const auto running = unit.programs.running();
    const auto front = unit.programs.pageInFront();
    constexpr int page = 14, title = 18, program = 14, pid = 9;
    output << style.dim("  " + padded("page", page) + padded("", title) + padded("program", program) +
                        padded("pid", pid) + "state")
           << "\n";
    for (const auto& info : allPages())
    {
        const auto found = running.find(info.appType);
        const bool runs = found != running.end();
        const bool inFront = info.page == front;
        std::string remark = !runs ? style.dim("-") : found->second.connected ? "connected" : style.warning("starting");
        if (runs && !found->second.fault.empty())
            remark += style.warning("  " + found->second.fault);
        const auto name = padded(pageName(info.page), page) + padded(info.title, title);
        output << (inFront ? style.good("▸ ") : "  ") << (inFront ? style.bold(name) : name)
               << padded(appTypeName(info.appType), program)
               << padded(runs ? std::to_string(found->second.pid) : "", pid) << remark
               << (inFront ? style.good("  in front") : "") << "\n";
    }
    return {};
}

Outcome Console::i2c(const Words& words)
{
    const auto what = words.size() > 1 ? words[1] : std::string();
    const auto delay = what == "slow" && words.size() == 3 ? parseDuration(words[2]) : std::nullopt;
    if (!delay && !(words.size() == 2 && (what == "fail" || what == "well")))
        return usageOf("i2c");
    unit.videoDecoder->setFailing(what == "fail");
    unit.videoDecoder->slowBy(delay.value_or(std::chrono::milliseconds(0)));
    return {};
}

Outcome Console::gpio(const Words& words)
{
    if (words.size() == 2 && words[1] == "well")
    {
        unit.gpio->slowBy(std::chrono::milliseconds(0));
        return {};
    }
    if (words.size() == 3 && words[1] == "slow")
    {
        const auto delay = parseDuration(words[2]);
        if (!delay)
            return usageOf("gpio");
        unit.gpio->slowBy(*delay);
        return {};
    }
    if (words.size() == 3)
    {
        constexpr int highestLine = 65535;
        const auto line = parseNumber(words[1], 0, highestLine);
        const auto level = parseNumber(words[2], 0, 1);
        if (!line || !level)
            return usageOf("gpio");
        unit.gpio->drive(static_cast<std::uint32_t>(*line), static_cast<std::uint32_t>(*level));
        return {};
    }
    constexpr std::size_t longestName = 18;
    const auto lines = unit.gpio->lines();
    if (lines.empty())
        output << style.dim("  The unit has touched no line yet.") << "\n";
    for (const auto& [number, line] : lines)
    {
        auto name = lineName(number);
        name.resize(longestName, ' ');
        row("line " + std::to_string(number), (line.level != 0 ? style.good("high") : style.dim("low ")) + "  " + name +
                                                  style.dim("  function " + std::to_string(line.function) +
                                                            ", written " + std::to_string(line.writes) + " times"));
    }
    return {};
}

Outcome Console::events(const Words& words)
{
    constexpr int defaultCount = 20;
    constexpr int mostEvents = 10'000;
    const auto count = words.size() == 2 ? parseNumber(words[1], 1, mostEvents) : std::optional(defaultCount);
    if (words.size() > 2 || !count)
        return { Outcome::failed, "events [N]" };
    const auto shown =
        unit.journal.find({}, static_cast<std::size_t>(*count), [](const Event& event) { return !isDetail(event); });
    const auto now = Clock::now();
    for (const auto& event : shown)
        output << style.dim("  -" + secondsText(std::chrono::duration_cast<std::chrono::milliseconds>(now - event.at)) +
                            "  ")
               << style.accent(event.stream) << " " << event.text << "\n";
    return {};
}

Outcome Console::trail(const Words& words)
{
    if (words.size() != 1)
        return { Outcome::failed, "trail" };
    constexpr std::size_t longest = 200;
    // What comes every few hundred milliseconds, or repeats what another stream says, would bury the rest.
    const auto tells = [](const Event& event)
    {
        const bool regular = event.stream == "frame EVENT_HEAT_BEAT" || event.text.starts_with("heartbeat");
        const bool level = event.stream == "dsp" && (event.text.ends_with(" dB") || event.text.ends_with(" silent"));
        const bool repeats = event.stream == "front" || event.stream == "mcu source" ||
                             event.stream == "frame EVENT_PGN_SEND_CAN" || event.stream == "sent EVENT_PGN_FROM_CAN";
        return !isDetail(event) && !regular && !level && !repeats;
    };
    for (const auto& event : unit.journal.find(headline, longest, tells))
    {
        const auto after = std::chrono::duration_cast<std::chrono::milliseconds>(event.at - headlineAt).count();
        output << style.dim("  +" + std::to_string(after) + " ms  ") << style.accent(event.stream) << " " << event.text
               << "\n";
    }
    return {};
}

Outcome Console::help(const Words& words)
{
    for (const auto& command : commands())
    {
        if (words.size() > 1 && words[1] != command.name)
            continue;
        std::istringstream usage(command.usage);
        for (std::string line; std::getline(usage, line, '\n');)
            output << "  " << style.accent(line) << "\n";
        output << "      " << command.help << "\n";
    }
    if (words.size() == 1)
        output << style.dim("  Names are the system's (mbEQ, AppRadio) or short (eq, radio, fm, aux). Tab completes.")
               << "\n";
    return {};
}

} // namespace Bench
