// The boat's network on the console: the display, and the messages as lines.
#include "bench/console/Columns.h"
#include "bench/console/Console.h"

#include <algorithm>
#include <ostream>
#include <sstream>

namespace Bench
{

namespace
{

constexpr int highestByte = 255;

std::optional<std::uint8_t> byteOf(const Words& words, std::size_t at, int fallback)
{
    const auto number = at < words.size() ? parseNumber(words[at], 0, highestByte) : std::optional(fallback);
    return number ? std::optional(static_cast<std::uint8_t>(*number)) : std::nullopt;
}

Outcome noByte(const std::string& word)
{
    return failed("'" + word + "' is no number from 0 to 255");
}

struct Request
{
    const char* name;
    int usualZone;
    void (*run)(NetworkDisplay& display, std::uint8_t zone);
};

constexpr Request requests[] = {
    { "zones", 0, [](auto& display, auto) { display.requestZones(); } },
    { "configuration", 1, [](auto& display, auto zone) { display.requestConfiguration(zone); } },
    { "parameters", 1, [](auto& display, auto zone) { display.requestParameters(zone); } },
    { "volumes", 0, [](auto& display, auto zone) { display.requestVolumes(zone); } },
};

Outcome changeVolume(NetworkDisplay& display, const Words& words)
{
    const auto& what = words[1];
    const auto zone = byteOf(words, 2, 0);
    if (!zone)
        return noByte(words[2]);
    if (what == "mute")
        display.toggleMute(*zone);
    else if (what == "step")
        display.stepVolume(*zone, words[3] == "up");
    else if (const auto percent = byteOf(words, 3, 0))
        display.setVolume(*zone, *percent);
    else
        return noByte(words[3]);
    return {};
}

Outcome changeTone(NetworkDisplay& display, const Words& words)
{
    constexpr int lowest = -128, highest = 127;
    const auto* field = std::ranges::find(toneFields, words[2], &ToneField::name);
    if (field == toneFields.end())
        return failed("there is no '" + words[2] + "': fader, balance, subwoofer, treble, middle or bass");
    const auto value = parseNumber(words[3], lowest, highest);
    if (!value)
        return failed("'" + words[3] + "' is no number from -128 to 127");
    const auto zone = byteOf(words, 4, 1);
    if (!zone)
        return noByte(words[4]);
    display.setTone(*zone, *field, static_cast<std::int8_t>(*value));
    return {};
}

Outcome sendRaw(NetworkDisplay& display, const Words& words)
{
    const auto pgn = parseNumber(words[2], 0, Pgn::highest);
    if (!pgn)
        return failed("'" + words[2] + "' is no PGN");
    if (words[1] == "iso")
    {
        display.isoRequest(*pgn);
        return {};
    }
    const auto content = parseBytes(std::span(words).subspan(3));
    if (!content.error.empty())
        return failed(content.error);
    if (content.bytes.size() > longestToUnit)
        return failed("at most " + std::to_string(longestToUnit) + " bytes reach the unit");
    display.send(*pgn, content.bytes);
    return {};
}

Outcome flood(NetworkDisplay& display, const Words& words)
{
    const auto rate = parseNumber(words[2], 1, McuSeries::mostPerSecond);
    if (!rate)
        return failed("'" + words[2] + "' is no rate: 1 to 1000 requests a second");
    const auto duration = parseDuration(words[3]);
    if (!duration)
        return failed("'" + words[3] + "' is no time, for example 3s or 500ms");
    display.flood(*rate, *duration);
    return {};
}

std::string toneText(const std::optional<ZoneTone>& tone, const char* kind)
{
    // The zone stands at the line's begin already.
    const auto text = tone ? tone->text(kind) : std::string();
    return tone ? text.substr(text.find(": ") + 2) : "not known";
}

} // namespace

Outcome Console::mfd(const Words& words)
{
    const auto from = unit.journal.end();
    auto outcome = mfdCommand(words);
    if (watched && outcome.kind == Outcome::done && words[1] != "state" && words[1] != "flood")
        showAnswers(from);
    return outcome;
}

void Console::showAnswers(Place from)
{
    constexpr std::chrono::milliseconds patience { 250 };
    constexpr std::size_t most = 16;
    unit.journal.waitFor(from, Clock::now() + patience, [](const Event&) { return false; });
    const auto isAnswer = [](const Event& event)
    { return event.stream == "mfd" || event.stream.starts_with("mfd zone"); };
    for (const auto& event : unit.journal.find(from, most, isAnswer))
    {
        const auto zone = event.stream == "mfd" ? std::string() : event.stream.substr(event.stream.find(' ') + 1) + " ";
        output << style.dim("  < " + zone + event.text) << "\n";
    }
}

Outcome Console::mfdCommand(const Words& words)
{
    const auto what = words.size() > 1 ? words[1] : std::string();
    const auto isWith = [&](const char* name, std::size_t least, std::size_t most)
    { return what == name && words.size() >= 2 + least && words.size() <= 2 + most; };
    const auto turn = unit.networkDisplay.use();
    auto& display = *turn;
    if (isWith("state", 0, 0))
        return mfdState();
    if (isWith("volume", 2, 2) || isWith("mute", 0, 1) ||
        (isWith("step", 2, 2) && (words[3] == "up" || words[3] == "down")))
        return changeVolume(display, words);
    if (isWith("tone", 2, 3))
        return changeTone(display, words);
    if (isWith("iso", 1, 1) || isWith("raw", 1, longestToUnit + 2))
        return sendRaw(display, words);
    if (isWith("flood", 2, 2))
        return flood(display, words);
    if (isWith("update", 0, 0))
        display.startUpdate();
    else if (isWith("phone", 0, 0))
        display.choosePhone();
    else if (isWith("update", 1, 1) && words[2] == "data")
        display.startUpdateByData();
    else if (isWith("request", 1, 2))
    {
        const auto* request = std::ranges::find(requests, words[2], &Request::name);
        if (request == std::end(requests))
            return usageOf("mfd");
        const auto zone = byteOf(words, 3, request->usualZone);
        if (!zone)
            return noByte(words[3]);
        request->run(display, *zone);
    }
    else if (isWith("version", 1, 2))
    {
        const auto selector = byteOf(words, 2, 0);
        if (!selector)
            return noByte(words[2]);
        const auto text = words.size() == 4 ? words[3] : std::string();
        if (text.size() >= McuFrame::maxData)
            return failed("a version has at most " + std::to_string(McuFrame::maxData - 1) + " bytes");
        display.requestVersion(*selector, text);
    }
    else
        return usageOf("mfd");
    return {};
}

Outcome Console::mfdState()
{
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
    row("last answer", display.lastAnswer.empty() ? "none yet" : display.lastAnswer);
    row("messages", std::to_string(display.received) + " of the unit, " + std::to_string(display.sent) + " to it");
    const auto log = unit.networkLog->state();
    row("log", (log.file.empty() ? "off" : log.file) + style.dim("  " + std::to_string(log.logged) + " lines so far"));
    row("served", log.port == 0 ? "off"
                                : "port " + std::to_string(log.port) + ", " + std::to_string(log.readers) +
                                      " readers, " + std::to_string(log.dropped) + " dropped");
    row("lines fed", std::to_string(log.fed) + " to the unit, " + std::to_string(log.skipped) + " skipped, " +
                         std::to_string(log.refused) + " refused");
    return {};
}

Outcome Console::n2k(const Words& words)
{
    constexpr int highestPort = 65535;
    const auto what = words.size() > 1 ? words[1] : std::string();
    auto& network = unit.networkLog;
    const bool off = words.size() == 3 && words[2] == "off";
    if (what == "log" && off)
        network->stopLogging();
    else if (what == "serve" && off)
        network->stopServing();
    else if (what == "play" && off)
        network->stopPlaying();
    else if (what == "log" && words.size() == 3)
    {
        if (auto error = network->logTo(words[2]); !error.empty())
            return failed(error);
    }
    else if (what == "serve" && words.size() <= 3)
    {
        const auto port = words.size() == 3 ? parseNumber(words[2], 0, highestPort) : std::optional(0);
        if (!port)
            return failed("'" + words[2] + "' is no port: 0 to 65535");
        if (auto error = network->serve(*port); !error.empty())
            return failed(error);
        output << "  port " << style.bold(std::to_string(network->state().port)) << "\n";
    }
    else if (what == "play" && (words.size() == 3 || words.size() == 4))
    {
        std::optional<double> speed;
        if (words.size() == 4)
        {
            constexpr double slowest = 0.01, fastest = 1000;
            double value = 0;
            std::istringstream text(words[3]);
            if (!(text >> value) || !text.eof() || !(value >= slowest && value <= fastest))
                return failed("'" + words[3] + "' is no speed: 0.01 to 1000, 1 is the file's own");
            speed = value;
        }
        if (auto error = network->play(words[2], speed); !error.empty())
            return failed(error);
    }
    else
        return usageOf("n2k");
    return {};
}

} // namespace Bench
