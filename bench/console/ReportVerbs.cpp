// What the bench tells about the unit.
#include "bench/console/ActiveFaults.h"
#include "bench/console/EventText.h"
#include "bench/console/Verb.h"
#include "bench/console/Watch.h"
#include "bench/dsp/DspModel.h"
#include "ctl/Columns.h"
#include "ctl/Table.h"

#include <ostream>

namespace Bench
{

using Ctl::fixed;

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
    showReport(console, "state");
    output << style.bold("Bench") << "\n";
    console.row("engine", unit.engine().isRunning()
                              ? style.good("runs") + style.dim("  pid " + std::to_string(unit.engine().pid()))
                              : style.bad("off"));
    std::string usb;
    for (int number = 1; number <= Unit::usbCount; ++number)
        if (unit.isUsbPlugged(number))
            usb += (usb.empty() ? "" : ", ") + std::to_string(number);
    console.row("usb storage", usb.empty() ? "none" : usb);
    console.row("camera", std::string(unit.videoDecoder->hasSignal() ? "signal" : "no signal") +
                              style.dim("  polled " + std::to_string(unit.videoDecoder->reads()) + " times"));
    console.row("dsp", isMuted(unit.dsp->memory()) ? style.warning("muted") : "not muted");
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
        output << "  " << (style.width > 2 ? Ctl::shortened(frame, style.width - 2) : frame) << "\n";
    const auto faults = activeFaults(unit);
    if (!faults.empty())
        output << style.bold("Faults") << "\n";
    for (const auto& fault : faults)
        output << "  " << style.warning(fault.what) << style.dim("  " + fault.cure + " ends it") << "\n";
    return {};
}

Outcome showPages(Console& console, const Arguments&)
{
    showReport(console, "pages");
    const auto front = console.unit.programs.pageInFront();
    console.row("on the screen", front == NUM_OF_PAGES ? "no page of the programs"
                                                       : std::string(pageInfo(front)->title) +
                                                             console.style.dim("  " + std::string(pageName(front))));
    return {};
}

Outcome showPrograms(Console& console, const Arguments&)
{
    showReport(console, "programs");
    const auto front = console.unit.programs.pageInFront();
    Ctl::Table table({ { "" }, { "program" }, { "pid", Ctl::Table::right }, { "engine" }, { "fault" }, { "plays" } });
    for (const auto& [appType, program] : console.unit.programs.running())
    {
        const auto* plays = pageInfo(program.source);
        const bool inFront = front != NUM_OF_PAGES && pageInfo(front)->appType == appType;
        table.add(
            { { inFront ? "▸" : "", &Style::good },
              { appTypeName(appType), inFront ? &Style::bold : nullptr },
              { std::to_string(program.pid) },
              { program.connected ? "connected" : "unknown to it", program.connected ? nullptr : &Style::warning },
              { program.faultText(), &Style::warning },
              { plays != nullptr ? plays->title : "" } });
    }
    console.output << console.style.bold("Bench") << "\n"
                   << (table.isEmpty() ? console.style.dim("  no program runs") + "\n" : table.text(console.style));
    return {};
}

std::vector<Event> lastFolded(const Console& console, int count, const Journal::Matches& matches)
{
    auto events = folded(console.unit.journal.find({}, Journal::capacity, matches));
    events.erase(events.begin(), events.end() - std::min<std::ptrdiff_t>(count, std::ssize(events)));
    return events;
}

Outcome showEvents(Console& console, const Arguments& given)
{
    const auto& style = console.style;
    constexpr int usualCount = 20;
    const auto subjects = given.words(1);
    const auto isShown = [&](const Event& event)
    {
        return subjects.empty() ? weightOf(event) != Weight::detail
                                : std::ranges::find(subjects, subjectOf(event).name) != subjects.end();
    };
    const auto events = lastFolded(console, given.number(0, usualCount), isShown);
    const auto now = Clock::now();
    for (const auto& event : events)
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
    const auto tells = [](const Event& event)
    {
        const bool isSent = event.stream.starts_with("sent ") && event.stream != "sent EVENT_PGN_FROM_CAN";
        return isSent || weightOf(event) == Weight::telling;
    };
    for (const auto& event : console.unit.journal.find(console.headline, longest, tells))
    {
        const auto after =
            std::chrono::duration_cast<std::chrono::milliseconds>(event.at - console.headline.at).count();
        console.output << style.dim("  +" + std::to_string(after) + " ms  ") << style.accent(event.stream) << " "
                       << event.text << "\n";
    }
    return {};
}

Outcome showLog(Console& console, const Arguments& given)
{
    constexpr int usualTail = 20;
    if (auto error = console.unit.whyUnseen("log"); !error.empty())
        return failed(error);
    for (const auto& event : lastFolded(console, given.number(0, usualTail), isIn("log")))
        console.output << event.text << "\n";
    console.output << console.style.dim(console.unit.logFile()) << "\n";
    return {};
}

Outcome setDumps(Console& console, const Arguments& given)
{
    if (auto error = console.unit.engine().setSystemDebug(given[0] == "on"); !error.empty())
        return failed(error);
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
        { "state",
          "What the engine says of the unit, and what the bench knows: source, agreement, heartbeat, last frames.",
          showState },
        { "pages", "What the engine says of every page, and which one the programs show.", showPages },
        { "programs", "What the engine says of the programs, and what they do.", showPrograms },
        { "events [COUNT] [SUBJECT...]", "What happened last, on all devices; of some subjects with all details.",
          showEvents },
        { "trail", "The frames and messages since the last headline, or since a person's last command.", showTrail },
        { "watch [TIME]", "The whole unit at a glance, drawn again and again until a key is pressed; once in a script.",
          watch },
        { "log [COUNT]", "The end of the engine's log.", showLog },
        { "log tail [COUNT]", "The same.", showLog },
        { "log on|off", "Whether it has the traffic dumps, from the engine's next start on.", setDumps },
    };
}

} // namespace Bench
