// The boat's network: the display, and the messages as lines.
#include "bench/console/Verb.h"
#include "ctl/Columns.h"

#include <algorithm>
#include <ostream>

namespace Bench
{

using Ctl::padded;

namespace
{

void setTone(NetworkDisplay& display, const Arguments& given)
{
    const auto& field = *std::ranges::find(toneFields, given[0], &ToneField::name);
    display.setTone(given.byte(2, 1), field, static_cast<std::int8_t>(given.number(1)));
}

std::string sendRaw(NetworkDisplay& display, const Arguments& given)
{
    const auto content = given.bytes(1);
    if (content.size() > longestToUnit)
        return "at most " + std::to_string(longestToUnit) + " bytes reach the unit";
    display.send(given.number(0), content);
    return {};
}

std::string requestVersion(NetworkDisplay& display, const Arguments& given)
{
    if (given[1].size() >= McuFrame::maxData)
        return "a version has at most " + std::to_string(McuFrame::maxData - 1) + " bytes";
    display.requestVersion(given.byte(0), given[1]);
    return {};
}

std::string toneText(const std::optional<ZoneTone>& tone, const char* kind)
{
    // The zone stands at the line's begin already.
    const auto text = tone ? tone->text(kind) : std::string();
    return tone ? text.substr(text.find(": ") + 2) : "not known";
}

Outcome showDisplay(Console& console, const Arguments&)
{
    auto& unit = console.unit;
    auto& output = console.output;
    const auto& style = console.style;
    const auto display = unit.networkDisplay->state();
    constexpr int zoneWidth = 6, nameWidth = 18, volumeWidth = 9, muteWidth = 6;
    output << style.bold("Display on the network") << "\n"
           << style.dim("  " + padded("zone", zoneWidth) + padded("name", nameWidth) + padded("volume", volumeWidth) +
                        padded("mute", muteWidth))
           << "\n";
    for (const auto& [number, zone] : display.zones)
    {
        output << "  " << padded(std::to_string(number), zoneWidth) << padded(zone.name, nameWidth)
               << padded(zone.volume ? std::to_string(*zone.volume) + " %" : "-", volumeWidth)
               << padded(zone.muted ? (*zone.muted ? "on" : "off") : "-", muteWidth) << "\n";
        for (const auto& [kind, tone] :
             { std::pair("configuration", &zone.configuration), std::pair("parameters", &zone.parameters) })
            output << style.dim("        " + padded(kind, nameWidth)) << toneText(*tone, kind) << "\n";
    }
    if (display.zones.empty())
        output << style.dim("  It knows of no zone yet: mfd request zones") << "\n";
    console.row("last answer", display.lastAnswer.empty() ? "none yet" : display.lastAnswer);
    console.row("messages",
                std::to_string(display.received) + " of the unit, " + std::to_string(display.sent) + " to it");
    const auto log = unit.networkLog->state();
    console.row("log",
                (log.file.empty() ? "off" : log.file) + style.dim("  " + std::to_string(log.logged) + " lines so far"));
    console.row("served", log.port == 0 ? "off"
                                        : "port " + std::to_string(log.port) + ", " + std::to_string(log.readers) +
                                              " readers, " + std::to_string(log.dropped) + " dropped");
    console.row("lines fed", std::to_string(log.fed) + " to the unit, " + std::to_string(log.skipped) + " skipped, " +
                                 std::to_string(log.refused) + " refused, " + std::to_string(log.incomplete) +
                                 " messages incomplete");
    return {};
}

Outcome serve(Console& console, const Arguments& given)
{
    auto& network = console.unit.networkLog;
    const auto* form = std::ranges::find(lineForms, given[1]);
    const bool chosen = form != lineForms.end();
    if (auto error =
            network->serve(given.number(0), chosen ? static_cast<LineForm>(form - lineForms.begin()) : LineForm());
        !error.empty())
        return failed(error);
    console.output << "  port " << console.style.bold(std::to_string(network->state().port)) << "\n";
    return {};
}

} // namespace

Verbs networkVerbs()
{
    return {
        { "mfd volume ZONE PERCENT", "Sets the volume of a zone.",
          on(&Unit::networkDisplay,
             [](auto& display, auto& given) { display.setVolume(given.byte(0), given.byte(1)); }) },
        { "mfd step ZONE up|down", "One step of it; zone 0 is both.",
          on(&Unit::networkDisplay,
             [](auto& display, auto& given) { display.stepVolume(given.byte(0), given[1] == "up"); }) },
        { "mfd mute [ZONE]", "Mutes, or ends it.",
          on(&Unit::networkDisplay, [](auto& display, auto& given) { display.toggleMute(given.byte(0)); }) },
        { "mfd tone TONE LEVEL [ZONE]", "Sets the tone of zone 1, or another; the unit refuses what is out of range.",
          on(&Unit::networkDisplay, setTone) },
        { "mfd request zones", "Asks for the zones (130574).",
          on(&Unit::networkDisplay, &NetworkDisplay::requestZones) },
        { "mfd request configuration [ZONE]", "For the configuration of zone 1, or another (130581).",
          on(&Unit::networkDisplay,
             [](auto& display, auto& given) { display.requestConfiguration(given.byte(0, 1)); }) },
        { "mfd request parameters [ZONE]", "For its parameters (130586).",
          on(&Unit::networkDisplay, [](auto& display, auto& given) { display.requestParameters(given.byte(0, 1)); }) },
        { "mfd request volumes [ZONE]", "For the volume of both zones, or of one (130582).",
          on(&Unit::networkDisplay, [](auto& display, auto& given) { display.requestVolumes(given.byte(0)); }) },
        { "mfd iso PGN", "For any message, by an ISO request.",
          on(&Unit::networkDisplay, [](auto& display, auto& given) { display.isoRequest(given.number(0)); }) },
        { "mfd raw PGN [BYTE...]", "Sends any message.", on(&Unit::networkDisplay, sendRaw) },
        { "mfd phone",
          "Chooses the phone's music (130585); the unit hands it on, and the Bluetooth program asks for its page.",
          on(&Unit::networkDisplay, &NetworkDisplay::choosePhone) },
        { "mfd update", "The trigger of an update, as a message. When it is done, the unit's power is cut.",
          on(&Unit::networkDisplay, &NetworkDisplay::startUpdate) },
        { "mfd update data", "The same as a block of data.",
          on(&Unit::networkDisplay, &NetworkDisplay::startUpdateByData) },
        { "mfd version NUMBER [TEXT]", "Asks for a version (0, 3), or tells one (4).",
          on(&Unit::networkDisplay, requestVersion) },
        { "mfd flood RATE TIME", "Asks for the volumes, so many times a second.",
          on(&Unit::networkDisplay,
             [](auto& display, auto& given) { display.flood(given.number(0), given.time(1)); }) },
        { "mfd state", "What it knows of the unit.", showDisplay },
        { "n2k log FILE", "Writes the messages to a file, behind what is there, as lines.",
          on(&Unit::networkLog, [](auto& network, auto& given) { return network.logTo(given[0]); }) },
        { "n2k log off", "Ends that.", on(&Unit::networkLog, &NetworkLog::stopLogging) },
        { "n2k serve [PORT] [commas|candump|raw]",
          "Gives them to readers on a port of this machine, in this form or with commas; what they write, in any form, "
          "goes to the unit.",
          serve },
        { "n2k serve off", "Ends that.", on(&Unit::networkLog, &NetworkLog::stopServing) },
        { "n2k play FILE [SPEED]",
          "Sends a file's lines to the unit as fast as the link takes them, or SPEED times as fast as they came.",
          on(&Unit::networkLog, [](auto& network, auto& given)
             { return network.play(given[0], given.has(1) ? std::optional(given.speed(1)) : std::nullopt); }) },
        { "n2k play off", "Ends that.", on(&Unit::networkLog, &NetworkLog::stopPlaying) },
    };
}

} // namespace Bench
