// What the bench tells about the unit.
#include "ctl/Columns.h"
#include "bench/console/Verb.h"
#include "bench/console/Watch.h"

#include <ostream>

namespace Bench
{

using namespace Pubhead;

namespace
{

std::string secondsText(std::chrono::milliseconds time)
{
    return fixed(static_cast<double>(time.count()) / 1000.0, 1) + " s";
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

Outcome showState(Console& console, const Arguments&)
{
    auto& unit = console.unit;
    auto& output = console.output;
    const auto& style = console.style;
    const auto mcu = unit.mcu->state();
    output << style.bold("Unit") << "\n";
    console.row("engine", unit.engine.isRunning()
                              ? style.good("runs") + style.dim("  pid " + std::to_string(unit.engine.pid()))
                              : style.bad("off"));
    const auto front = unit.programs.pageInFront();
    console.row("in front", front == NUM_OF_PAGES
                                ? "no page"
                                : std::string(pageInfo(front)->title) + style.dim("  ") + pageName(front));
    std::string usb;
    for (int number = 1; number <= Unit::usbCount; ++number)
        if (unit.isUsbPlugged(number))
            usb += (usb.empty() ? "" : ", ") + std::to_string(number);
    console.row("usb storage", usb.empty() ? "none" : usb);
    console.row("camera", std::string(unit.videoDecoder->hasSignal() ? "signal" : "no signal") +
                              style.dim("  polled " + std::to_string(unit.videoDecoder->reads()) + " times"));
    console.row("folder", unit.folder());

    output << style.bold("Microcontroller") << "\n";
    console.row("port", unit.mcuPort());
    console.row("source", (mcu.source ? sourceName(*mcu.source) : std::string("none")) +
                              (mcu.agreed ? style.good("  agreed") : style.warning("  not agreed")) +
                              (mcu.wanted ? style.dim("  asked for ") + sourceName(*mcu.wanted) : ""));
    console.row("heartbeat", mcu.sinceHeartbeat ? secondsText(*mcu.sinceHeartbeat) + " ago" +
                                                      style.dim("  " + std::to_string(mcu.heartbeats) + " so far")
                                                : std::string("none yet"));
    console.row("device status", mcu.deviceStatus ? deviceStatusText(*mcu.deviceStatus) : "none yet");
    console.row("muted", mcu.muted ? "yes" : "no");
    const auto panel = unit.panel->state();
    const auto supply = unit.supply->state();
    console.row("panel", std::string(panel.powered ? "on" : "off") + style.dim("  device id " + hex(mcu.deviceId)));
    console.row("tuner", unit.tuner->text() + style.dim(unit.tuner->region() == 1 ? "  Europe" : "  Americas") +
                             (unit.tuner->weatherAlert() ? style.warning("  weather alert") : ""));
    console.row("supply", voltsText(supply.volts) + (supply.lights ? ", lights on" : "") +
                              (supply.trigger ? ", camera trigger on" : "") +
                              style.dim("  dimmer " + std::to_string(panel.dimmer)));
    console.row("power off", mcu.readyForPowerOff ? "the unit is ready" : "no");
    console.row("link", (mcu.silent ? style.warning("silent") + "  " : std::string()) + linkText(mcu));
    if (!mcu.recent.empty())
        output << style.bold("Last frames") << style.dim("  (<- from the unit)") << "\n";
    for (const auto& frame : mcu.recent)
        output << "  " << frame << "\n";
    return {};
}

Outcome showPages(Console& console, const Arguments&)
{
    auto& unit = console.unit;
    auto& output = console.output;
    const auto& style = console.style;
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

Outcome showEvents(Console& console, const Arguments& given)
{
    const auto& style = console.style;
    constexpr int usualCount = 20;
    const auto shown = console.unit.journal.find({}, static_cast<std::size_t>(given.number(0, usualCount)),
                                                 [](const Event& event) { return !isDetail(event); });
    const auto now = Clock::now();
    for (const auto& event : shown)
        console.output << style.dim("  -" +
                                    secondsText(std::chrono::duration_cast<std::chrono::milliseconds>(now - event.at)) +
                                    "  ")
                       << style.accent(event.stream) << " " << event.text << "\n";
    return {};
}

Outcome showTrail(Console& console, const Arguments&)
{
    const auto& style = console.style;
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
    for (const auto& event : console.unit.journal.find(console.headline, longest, tells))
    {
        const auto after = std::chrono::duration_cast<std::chrono::milliseconds>(event.at - console.headlineAt).count();
        console.output << style.dim("  +" + std::to_string(after) + " ms  ") << style.accent(event.stream) << " "
                       << event.text << "\n";
    }
    return {};
}

Outcome showLog(Console& console, const Arguments& given)
{
    constexpr int usualTail = 20;
    const auto count = static_cast<std::size_t>(given.number(1, usualTail));
    for (const auto& event : console.unit.journal.find({}, count, isIn("log")))
        console.output << event.text << "\n";
    console.output << console.style.dim(console.unit.logFile()) << "\n";
    return {};
}

Outcome setDumps(Console& console, const Arguments& given)
{
    console.unit.setSystemDebug(given[0] == "on");
    console.output << console.style.dim("Holds from the engine's next start on: engine restart") << "\n";
    return {};
}

Outcome watch(Console& console, const Arguments& given)
{
    if (console.liveView)
        console.liveView(given.has(0) ? std::optional(given.time(0)) : std::nullopt);
    else
        for (const auto& line : composeWatch(console.unit, console.style))
            console.output << line << "\n";
    return {};
}

} // namespace

Verbs reportVerbs()
{
    return {
        { "state", "What the bench knows: engine, source, agreement, heartbeat, last frames.", showState },
        { "pages", "Every page with its program, and which one is in front.", showPages },
        { "events [COUNT]", "What happened last, on all devices.", showEvents },
        { "trail", "The frames and messages since the last headline.", showTrail },
        { "watch [TIME]", "The whole unit at a glance, drawn again and again until a key is pressed; once in a script.",
          watch },
        { "log [tail] [COUNT]", "The end of the engine's log.", showLog },
        { "log on|off", "Whether it has the traffic dumps, from the engine's next start on.", setDumps },
    };
}

} // namespace Bench
