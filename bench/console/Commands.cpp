// What each command of the bench does to the unit.
#include "bench/console/Console.h"
#include "bench/text/Screen.h"

#include <algorithm>
#include <ostream>
#include <sstream>
#include <thread>
#include <utility>

namespace Bench
{

using namespace Pubhead;

namespace
{

constexpr int mostFrames = 1000;

} // namespace

Outcome Console::usageOf(const char* command)
{
    for (const auto& each : commands())
        if (std::string(each.name) == command)
            return failed(std::string("usage: ") + each.usage);
    return failed("usage: help");
}

Outcome Console::mcu(const Words& words)
{
    const auto what = words.size() > 1 ? words[1] : std::string();
    if (what == "source" || what == "memory")
    {
        const auto source = findSource(std::span(words).subspan(2));
        if (!source)
            return failed("which source? am fm disc aux sirius ipod usb [1-7] bt off pandora wb, or TYPE NUMBER");
        if (what == "memory")
            unit.mcu->setLastMemory(*source);
        else
            unit.mcu->requestSource(*source);
        return {};
    }
    if (what == "key" || what == "hold" || what == "flood")
        return mcuKeys(words);
    if (what == "send" && words.size() >= 3)
    {
        const auto command = commandOfName(words[2]);
        const auto data = parseBytes(std::span(words).subspan(3));
        if (!data.error.empty())
            return failed(data.error);
        if (command < 0 || data.bytes.size() > McuFrame::maxData)
            return failed("a command (name or number) and at most 102 bytes, in hexadecimal");
        unit.mcu->send({ command, data.bytes });
        return {};
    }
    if (words.size() == 2 && what == "status")
        unit.mcu->requestDeviceStatus();
    else if (words.size() == 2 && what == "power-off")
        unit.mcu->requestPowerOff();
    else
        return mcuFault(words);
    return {};
}

Outcome Console::mcuKeys(const Words& words)
{
    const auto& what = words[1];
    const bool floods = what == "flood";
    Words rest(words.begin() + 2, words.end());
    std::chrono::milliseconds duration { 0 };
    if (what != "key" && !rest.empty())
    {
        const auto parsed = parseDuration(rest.back());
        if (!parsed)
            return failed("'" + rest.back() + "' is no time, for example 3s or 500ms");
        duration = *parsed;
        rest.pop_back();
    }
    if (rest.empty() || rest.size() > 2 || (floods && rest.size() < 2))
        return usageOf("mcu");
    Bytes keys;
    std::istringstream names(rest[0]);
    for (std::string name; std::getline(names, name, ',');)
    {
        const auto key = findKey(name);
        if (!key)
            return failed("there is no key '" + name + "': a name (menu, source ...) or 0 to 255");
        keys.push_back(static_cast<std::uint8_t>(*key));
    }
    if (keys.empty() || (!floods && keys.size() > 1))
        return usageOf("mcu");
    constexpr int highestByte = 255;
    const auto number = rest.size() < 2 ? std::optional(0)
                        : floods        ? parseNumber(rest[1], 1, McuSeries::mostPerSecond)
                                        : parseNumber(rest[1], 0, highestByte);
    if (!number)
        return failed("'" + rest[1] + (floods ? "' is no rate: 1 to 1000 keys a second" : "' is no origin: 0 to 255"));
    if (floods)
        unit.panel->flood(keys, *number, duration);
    else if (what == "hold")
        unit.panel->hold(keys.front(), *number, duration);
    else
    {
        moveFinger();
        unit.panel->pressKey(keys.front(), *number);
    }
    return {};
}

void Console::moveFinger()
{
    std::this_thread::sleep_until(nextKey);
    nextKey = Clock::now() + fingerGap;
}

Outcome Console::mcuFault(const Words& words)
{
    const auto what = words.size() > 1 ? words[1] : std::string();
    if (words.size() == 2 && what == "well")
    {
        unit.mcu->clearFaults();
        return {};
    }
    if (words.size() == 3 && (what == "silent" || what == "delay"))
    {
        const auto duration = parseDuration(words[2]);
        if (!duration)
            return failed("'" + words[2] + "' is no time, for example 3s or 500ms");
        if (what == "silent")
            unit.mcu->silence(*duration);
        else
            unit.mcu->delayBy(*duration);
        return {};
    }
    const bool every = words.size() == 4 && what == "drop" && words[2] == "every";
    const bool named = words.size() == 4 && !every;
    const auto count =
        words.size() > 2 && words.size() <= 4 ? parseNumber(words[every ? 3 : 2], 0, mostFrames) : std::optional(1);
    const auto command = named ? commandOfName(words[3]) : 0;
    if (!count || command < 0 || words.size() > 4)
        return usageOf("mcu");
    const Mcu::FaultyFrames frames { *count, named ? std::optional(command) : std::nullopt };
    if (every)
        unit.mcu->dropEvery(*count);
    else if (what == "drop")
        unit.mcu->dropNext(frames);
    else if (what == "corrupt")
        unit.mcu->corruptNext(frames);
    else if (what == "repeat")
        unit.mcu->repeatNext(frames);
    else if (what == "no-ack")
        unit.mcu->withholdAcks(frames);
    else
        return usageOf("mcu");
    return {};
}

Outcome Console::usb(const Words& words)
{
    const auto number = words.size() == 3 ? parseNumber(words[2], 1, Unit::usbCount) : std::optional(1);
    const auto what = words.size() == 2 || words.size() == 3 ? words[1] : std::string();
    const bool puts = what == "update" || what == "bad-update";
    if (!number || (what != "in" && what != "out" && !puts))
        return usageOf("usb");
    if (puts)
        return unit.putUpdate(*number, what == "update") ? Outcome {} : failed("nothing can be put on this storage");
    const bool done = what == "in" ? unit.plugUsb(*number) : unit.unplugUsb(*number);
    return done ? Outcome {} : failed("the mount point cannot be changed");
}

Outcome Console::camera(const Words& words)
{
    if (words.size() != 2 || (words[1] != "on" && words[1] != "off"))
        return usageOf("camera");
    unit.videoDecoder->setSignal(words[1] == "on");
    return {};
}

Outcome Console::engine(const Words& words)
{
    const auto what = words.size() == 2 ? words[1] : std::string();
    if (what == "stop" || what == "restart")
        unit.engine.stop();
    else if (what == "kill")
        unit.engine.kill();
    else if (what != "start")
        return usageOf("engine");
    if (what == "start" || what == "restart")
        if (auto error = unit.startEngine(); !error.empty())
            return failed(error);
    return {};
}

Outcome Console::bus(const Words& words)
{
    const auto what = words.size() == 2 ? words[1] : std::string();
    if (what == "stop" || what == "restart")
        unit.bus.stop();
    else if (what != "start")
        return usageOf("bus");
    if (what == "start" || what == "restart")
        if (auto error = unit.bus.start(unit.folder()); !error.empty())
            return failed(error);
    return {};
}

Outcome Console::log(const Words& words)
{
    constexpr int defaultTail = 20;
    constexpr int longestTail = 10'000;
    const auto what = words.size() > 1 ? words[1] : std::string("tail");
    if (words.size() == 2 && (what == "on" || what == "off"))
    {
        unit.setSystemDebug(what == "on");
        output << style.dim("Holds from the engine's next start on: engine restart") << "\n";
        return {};
    }
    const auto count = words.size() == 3 ? parseNumber(words[2], 1, longestTail) : std::optional(defaultTail);
    if (what != "tail" || words.size() > 3 || !count)
        return usageOf("log");
    for (const auto& event : unit.journal.find({}, static_cast<std::size_t>(*count), isIn("log")))
        output << event.text << "\n";
    output << style.dim(unit.logFile()) << "\n";
    return {};
}

Outcome Console::expect(const Words& words)
{
    Words rest(words.begin() + 1, words.end());
    if (!rest.empty() && rest.front() == "no")
        return expectAbsence({ rest.begin() + 1, rest.end() });
    auto limit = Expectations::defaultLimit;
    if (auto error = takeTime(rest, "within", limit); !error.empty())
        return failed(error);
    if (!rest.empty() && rest.front() == "order")
        return expectOrder({ rest.begin() + 1, rest.end() }, limit);
    const auto parsed = parseExpectation(rest);
    if (!parsed.error.empty())
        return failed(parsed.error);
    const auto start = Clock::now();
    const auto instead = expectations.wait(parsed.expectation, limit);
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    if (!instead.empty())
        return failed("not seen within " + std::to_string(limit.count()) + " ms: " + parsed.expectation.description +
                      "\n" + instead);
    output << "  " << style.good("✓") << " " << parsed.expectation.description
           << style.dim("  " + std::to_string(took) + " ms") << "\n";
    return {};
}

Outcome Console::expectAbsence(Words words)
{
    const bool hasEnd = std::ranges::find(words, "until") != words.end();
    auto limit = hasEnd ? Expectations::defaultLimit : Expectations::defaultAbsence;
    if (auto error = takeTime(words, "within", limit); !error.empty())
        return failed(error);
    const auto until = std::ranges::find(words, "until");
    const auto absent = parseExpectation({ words.begin(), until });
    const auto end = hasEnd ? parseExpectation({ until + 1, words.end() }) : ParsedExpectation();
    for (const auto& error : { absent.error, end.error })
        if (!error.empty())
            return failed(error);
    if (hasEnd)
    {
        if (auto wrong = expectations.staysAwayUntil(absent.expectation, end.expectation, limit); !wrong.empty())
            return failed(wrong);
    }
    else if (!expectations.staysAway(absent.expectation, limit))
        return failed("seen although it should not be: " + absent.expectation.description);
    output << "  " << style.good("✓") << " no " << absent.expectation.description
           << (hasEnd ? " until " + end.expectation.description : "") << "\n";
    return {};
}

Outcome Console::expectOrder(Words words, std::chrono::milliseconds limit)
{
    std::chrono::milliseconds apart { 0 };
    if (auto error = takeTime(words, "apart", apart); !error.empty())
        return failed(error);
    std::vector<Expectation> inOrder;
    for (const auto& word : words)
    {
        auto parsed = parseExpectation(parseLine(word).words);
        if (!parsed.error.empty())
            return failed(parsed.error);
        inOrder.push_back(std::move(parsed.expectation));
    }
    if (inOrder.size() < 2)
        return usageOf("expect");
    if (const auto instead = expectations.waitInOrder(inOrder, limit, apart); !instead.empty())
        return failed("not seen in this order within " + std::to_string(limit.count()) + " ms; " + instead);
    const char* before = "";
    output << "  " << style.good("✓") << " ";
    for (const auto& expectation : inOrder)
        output << std::exchange(before, ", then ") << expectation.description;
    output << "\n";
    return {};
}

Outcome Console::mark(const Words& words)
{
    if (words.size() != 1)
        return usageOf("mark");
    expectations.forgetThePast();
    return {};
}

Outcome Console::transcript(const Words& words)
{
    if (words.size() < 2)
        return usageOf("transcript");
    if (chosenSections)
        return failed("the transcript's sections have been chosen already");
    TranscriptSections sections;
    for (auto word = words.begin() + 1; word != words.end(); ++word)
    {
        const auto appType = findApp(*word);
        if (*word == "mcu")
            sections.mcu = true;
        else if (*word == "devices")
            sections.devices = true;
        else if (appType != AppUnknown)
            sections.programs.insert(appType);
        else
            return failed("there is no program '" + *word + "'");
    }
    chosenSections = sections;
    return {};
}

Outcome Console::say(const Words& words)
{
    std::string text;
    for (auto word = words.begin() + 1; word != words.end(); ++word)
        text += (text.empty() ? "" : " ") + *word;
    output << "\n" << style.bold(text) << "\n";
    headline = unit.journal.end();
    headlineAt = Clock::now();
    return {};
}

Outcome Console::pause(const Words& words)
{
    const auto duration = words.size() == 2 ? parseDuration(words[1]) : std::nullopt;
    if (!duration)
        return usageOf("pause");
    // For the eye only: nothing that a script checks may rest on it, so without an onlooker it is left out.
    if (watched)
        unit.journal.waitFor(unit.journal.end(), Clock::now() + *duration, [](const Event&) { return false; });
    return {};
}

Outcome Console::picture(const Words& words)
{
    if (words.size() != 2)
        return usageOf("picture");
    if (pictureFolder.empty())
        return {};
    const auto error = savePicture(unit.display(), pictureFolder + "/" + words[1] + ".png");
    return error.empty() ? Outcome {} : failed(error);
}

Outcome Console::touch(const Words& words)
{
    constexpr int widest = 0x7fff;
    const auto x = words.size() == 3 ? parseNumber(words[1], 0, widest) : std::nullopt;
    const auto y = words.size() == 3 ? parseNumber(words[2], 0, widest) : std::nullopt;
    if (!x || !y)
        return usageOf("touch");
    const auto error = touchScreen(unit.display(), *x, *y);
    return error.empty() ? Outcome {} : failed(error);
}

Outcome Console::quit(const Words&)
{
    return { Outcome::leave };
}

} // namespace Bench
