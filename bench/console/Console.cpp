#include "bench/console/Console.h"
#include "bench/unit/Settings.h"

#include <algorithm>
#include <istream>
#include <iterator>
#include <ostream>

namespace Bench
{

namespace
{

Words joinedLists(std::initializer_list<Words> lists)
{
    Words all;
    for (const auto& list : lists)
        all.insert(all.end(), list.begin(), list.end());
    return all;
}

/** In front of a command of a script: leave it out when nothing is drawn. */
constexpr std::string_view displayCondition = "if-display";

Words nothing(const Words&)
{
    return {};
}

Words mcuWords(const Words& before)
{
    if (before.size() == 1)
        return { "source", "memory", "key",   "hold",    "flood",  "send",   "status", "power-off",
                 "silent", "drop",   "delay", "corrupt", "repeat", "no-ack", "well" };
    if (before.size() == 2 && (before[1] == "source" || before[1] == "memory"))
        return sourceNames();
    if (before.size() == 2 && (before[1] == "key" || before[1] == "hold" || before[1] == "flood"))
        return keyNames();
    if (before.size() == 2 && before[1] == "send")
        return commandNames();
    if (before.size() == 2 && before[1] == "drop")
        return { "every" };
    if (before.size() == 3 &&
        (before[1] == "drop" || before[1] == "corrupt" || before[1] == "repeat" || before[1] == "no-ack"))
        return commandNames();
    return {};
}

Words autotestWords(const Words& before)
{
    if (before.size() == 1)
        return { "enter", "leave", "key",   "source", "states", "volume", "id",
                 "text",  "send",  "again", "ack",    "hold",   "go",     "damage" };
    return {};
}

Words mfdWords(const Words& before)
{
    if (before.size() == 1)
        return { "volume", "step",  "mute",   "tone",    "request", "iso",
                 "raw",    "phone", "update", "version", "flood",   "state" };
    if (before.size() == 2 && before[1] == "tone")
    {
        Words names;
        for (const auto& field : toneFields)
            names.emplace_back(field.name);
        return names;
    }
    if (before.size() == 2 && before[1] == "request")
        return { "zones", "configuration", "parameters", "volumes" };
    if (before.size() == 2 && before[1] == "update")
        return { "data" };
    if (before.size() == 3 && before[1] == "step")
        return { "up", "down" };
    return {};
}

Words networkWords(const Words& before)
{
    if (before.size() == 1)
        return { "log", "serve", "play" };
    return before.size() == 2 ? Words { "off" } : Words();
}

Words programWords(const Words& before)
{
    if (before.size() == 1)
        return joinedLists({ appNames(), pageNames() });
    if (before.size() == 2)
        return { "show", "stop", "crash",  "silent", "slow", "hang", "wake",
                 "exit", "send", "window", "text",   "set",  "do" };
    if (before.size() == 3 && (before[2] == "show" || before[2] == "stop"))
        return pageNames();
    if (before.size() == 3 && before[2] == "set")
        return settingNames();
    if (before.size() == 3 && (before[2] == "silent" || before[2] == "slow"))
        return { "off" };
    return {};
}

Words remoteWords(const Words& before)
{
    Words keys;
    for (const auto& key : WiredRemote::keys())
        keys.emplace_back(key.name);
    if (before.size() == 1)
        return joinedLists({ keys, { "hold", "bytes", "unplug", "plug", "stall", "show" } });
    if (before.size() == 2 && before[1] == "hold")
        return keys;
    if (before.size() == 2 && before[1] == "stall")
        return { "off" };
    return {};
}

Words dspWords(const Words& before)
{
    if (before.size() == 1)
        return { "state", "plot", "play", "fail" };
    if (before.size() == 2 && before[1] == "fail")
        return { "open", "configure", "transfer", "crc", "slow", "gone", "well" };
    if (before.size() == 3 && before[2] == "crc")
        return { "once", "always" };
    if (before.size() == 4 && before[1] == "play")
        return { "front", "rear", "line", "output", "subwoofer" };
    return {};
}

Words expectWords(const Words& before)
{
    if (before.size() == 1)
        return { "mcu", "page", "program", "log", "engine", "gpio", "dsp", "remote", "autotest", "mfd", "n2k", "no" };
    const auto& subject = before[1];
    if (before.size() == 2 && subject == "mcu")
        return { "source", "agreed",    "frame", "link", "ready-for-power-off",
                 "power",  "device-id", "tuner", "hold", "flood" };
    if (before.size() == 2 && subject == "page")
        return pageNames();
    if (before.size() == 2 && subject == "program")
        return appNames();
    if (before.size() == 2 && subject == "dsp")
        return { "boot", "mute", "source", "write" };
    if (before.size() == 2 && subject == "remote")
        return { "dimmer", "plugged", "unplugged" };
    if (before.size() == 2 && subject == "engine")
        return { "started", "exit", "signal" };
    if (before.size() == 3 && subject == "mcu" && before[2] == "source")
        return sourceNames();
    if (before.size() == 2 && subject == "autotest")
        return { "ready", "entered", "left", "key", "source", "volume", "states", "id", "text", "message", "damaged" };
    if (before.size() == 2 && subject == "mfd")
        return { "sent", "flood" };
    if (before.size() == 2 && subject == "n2k")
        return { "played" };
    if (before.size() == 3 && subject == "mcu" && before[2] == "power")
        return { "on", "off" };
    if (before.size() == 3 && subject == "mcu" && before[2] == "frame")
        return commandNames();
    if (before.size() == 3 && subject == "page")
        return { "shown", "hidden", "covered", "confirmed", "in-front", "settled" };
    if (before.size() == 3 && subject == "program")
        return { "running", "connected", "gone", "within" };
    return { "within" };
}

Words oneOf(const Words& before, Words words)
{
    return before.size() == 1 ? words : Words();
}

Words helpWords(const Words& before)
{
    Words names;
    for (const auto& command : Console::commands())
        names.emplace_back(command.name);
    return oneOf(before, names);
}

} // namespace

std::span<const Console::Command> Console::commands()
{
    static const Command table[] = {
        { "mcu",
          "mcu source NAME [N] | memory NAME [N] | key NAME|N [ORIGIN] | send COMMAND [BYTES] | status | power-off\n"
          "mcu hold KEY [ORIGIN] TIME | flood KEY[,KEY...] RATE TIME\n"
          "mcu silent TIME | delay TIME | drop|corrupt|repeat|no-ack [N [FRAME]] | drop every N | well",
          "The microcontroller: ask for a source, press a key, hold it, press many (RATE a second); send a frame; or "
          "let its link fail. 'well' ends all faults.",
          &Console::mcu, mcuWords },
        { "autotest",
          "autotest enter | leave | key ITEM [ARG] | source TYPE NUM | states | volume N | id TEXT | text ITEM | "
          "send HEX..\n"
          "autotest again | ack | hold | go | damage [N]",
          "The factory's test equipment. It acknowledges each message of the unit by itself, but not between 'hold' "
          "and "
          "'go'; 'again' asks for the last message once more, 'damage' spoils its next frames.",
          &Console::autotest, autotestWords },
        { "mfd",
          "mfd volume ZONE PERCENT | step ZONE up|down | mute [ZONE] | tone NAME VALUE [ZONE]\n"
          "mfd request zones|configuration|parameters|volumes [ZONE] | iso PGN | raw PGN [BYTES]\n"
          "mfd phone | update [data] | version 0|3|4 [TEXT] | flood RATE TIME | state",
          "A multifunction display on the boat's network: see and change the zones (0 is both, the tone's NAME is "
          "fader, balance, subwoofer, treble, middle or bass), choose the phone's music, ask for a message or a "
          "version, start an update, ask for the volumes RATE times a second; what it knows of the unit.",
          &Console::mfd, mfdWords },
        { "n2k", "n2k log FILE|off | serve [PORT]|off | play FILE [SPEED]|off",
          "The messages of the boat's network as lines: to a file, to readers on a port of this machine, whose lines "
          "go to the unit, or from a file to the unit (SPEED 1 with the file's own time distances, else at once).",
          &Console::n2k, networkWords },
        { "program",
          "program NAME show [PAGE] | stop [PAGE] | crash | silent [off] | slow TIME|off | hang | wake | exit | "
          "send WHAT [ARG1 [ARG2]] | window MESSAGE [W [L]] | text LINE1 LINE2 | set SETTING VALUE | do WORDS",
          "A source program: let it ask for a page or give it back, send a message to the engine (over the bus, or to "
          "its "
          "window), write on the wired remote, change a setting, or misbehave. What it does by itself ('do'), it says "
          "when asked for something else.",
          &Console::program, programWords },
        { "menu", "menu PAGE", "A touch on a page of the main menu, which need not be in front.", &Console::menu,
          [](const Words& before) { return oneOf(before, pageNames()); } },
        { "set", "set SETTING VALUE", "A setting, by its name or number, as the setup program changes it.",
          &Console::set, [](const Words& before) { return oneOf(before, settingNames()); } },
        { "bt",
          "bt connect [NAME] | disconnect | call [NAME] | hang-up | paired | link open|closed | pandora on|off | "
          "signal N | battery N | audio | setup",
          "What happens to the Bluetooth module, told by its program.", &Console::bluetooth,
          [](const Words& before)
          {
              return oneOf(before, { "connect", "disconnect", "call", "hang-up", "paired", "link", "pandora", "signal",
                                     "battery", "audio", "setup" });
          } },
        { "ipod", "ipod connect [analog|digital] | path analog|digital | disconnect | pandora on|off | restart",
          "An iPod comes and goes, told by its program.", &Console::iPod,
          [](const Words& before)
          {
              return before.size() == 2 ? Words { "analog", "digital", "on", "off" }
                                        : oneOf(before, { "connect", "path", "disconnect", "pandora", "restart" });
          } },
        { "satellite", "satellite in | out | channel N | favourites N | favourite",
          "The satellite tuner, told by its program.", &Console::satellite,
          [](const Words& before) {
              return oneOf(before, { "in", "out", "channel", "favourites", "favourite" });
          } },
        { "unlock", "unlock CODE", "The code of the locked unit; the right one is 1234.", &Console::unlock, nothing },
        { "usb", "usb in|out|update|bad-update [1-8]",
          "USB storage comes and goes; an update program on it, or one that does not start.", &Console::usb,
          [](const Words& before) {
              return oneOf(before, { "in", "out", "update", "bad-update" });
          } },
        { "camera", "camera on|off", "The camera's picture signal.", &Console::camera,
          [](const Words& before) {
              return oneOf(before, { "on", "off" });
          } },
        { "engine", "engine start|stop|restart|kill",
          "The engine's process; its programs go on without it for a while.", &Console::engine,
          [](const Words& before) {
              return oneOf(before, { "start", "stop", "restart", "kill" });
          } },
        { "bus", "bus start|stop|restart", "The message bus of the engine and its programs.", &Console::bus,
          [](const Words& before) {
              return oneOf(before, { "start", "stop", "restart" });
          } },
        { "state", "state", "What the bench knows: engine, source, agreement, heartbeat, last frames.", &Console::state,
          nothing },
        { "pages", "pages", "Every page with its program, and which one is in front.", &Console::pages, nothing },
        { "events", "events [N]", "What happened last, on all devices.", &Console::events, nothing },
        { "trail", "trail", "The frames and messages since the last headline.", &Console::trail, nothing },
        { "gpio", "gpio [LINE 0|1] | slow TIME | well",
          "The lines that the unit has used, a level from outside, or how long they take.", &Console::gpio,
          [](const Words& before) {
              return oneOf(before, { "slow", "well" });
          } },
        { "i2c", "i2c slow TIME | fail | well", "The camera's bus answers later, or refuses.", &Console::i2c,
          [](const Words& before) {
              return oneOf(before, { "slow", "fail", "well" });
          } },
        { "remote", "remote KEY | hold KEY TIME | bytes HEX... | unplug | plug | stall [off] | show",
          "The wired remote: press a key, let it go away or take no bytes, look at its display.", &Console::remote,
          remoteWords },
        { "tune", "tune FREQUENCY", "The tuner: 101.1 on FM, 1000 on AM.", &Console::tune, nothing },
        { "seek", "seek up|down [step]", "The tuner goes to the next station, or one step.", &Console::seek,
          [](const Words& before) {
              return oneOf(before, { "up", "down" });
          } },
        { "rds", "rds \"NAME\" \"TEXT\"", "What the station says: a name of 8 characters, a text of 64.", &Console::rds,
          nothing },
        { "weather", "weather on|off", "The weather alert.", &Console::weather,
          [](const Words& before) {
              return oneOf(before, { "on", "off" });
          } },
        { "battery", "battery VOLTS", "The supply voltage, as the microcontroller measures it.", &Console::battery,
          nothing },
        { "lights", "lights on|off", "The boat's lights.", &Console::lights,
          [](const Words& before) {
              return oneOf(before, { "on", "off" });
          } },
        { "panel", "panel trigger on|off | dimmer 0-11", "The camera's trigger input, the dimmer of the panel.",
          &Console::panel,
          [](const Words& before) {
              return before.size() == 2 ? Words { "on", "off" } : oneOf(before, { "trigger", "dimmer" });
          } },
        { "dsp",
          "dsp state | plot [FILE.png] | play IN.wav OUT.wav [OUTPUT]\n"
          "dsp fail open | configure | transfer [N] | crc [once|always] | slow TIME | gone | well",
          "The audio DSP: what the words in its memory mean, what they do to sound (as a picture, or to a file, into "
          "one "
          "channel for each output or those whose name begins with OUTPUT); or let its bus fail. 'well' ends all "
          "faults.",
          &Console::dsp, dspWords },
        { "log", "log [tail [N]] | on | off", "The engine's log; 'on' adds its traffic dumps.", &Console::log,
          [](const Words& before) {
              return oneOf(before, { "tail", "on", "off" });
          } },
        { "expect",
          "expect mcu source NAME | agreed | frame|sent NAME [BYTES] | link TEXT | ready-for-power-off [within TIME]\n"
          "expect mcu power on|off | device-id BYTES | hold|flood TEXT [within TIME]\n"
          "expect page NAME shown|hidden|covered|confirmed|in-front|settled [within TIME]\n"
          "expect program NAME running|connected|gone|TEXT [within TIME]\n"
          "expect log \"TEXT\" | engine started | engine exit N | gpio LINE LEVEL [within TIME]\n"
          "expect remote \"TEXT\" | remote dimmer TEXT | autotest [TEXT] [within TIME]\n"
          "expect dsp TEXT | dsp write TEXT | mfd [sent|flood] TEXT | n2k played [within TIME]\n"
          "expect order \"mcu source aux\" \"page aux shown\" ... [apart TIME] [within TIME]\n"
          "expect no ... until ... [within TIME] | no ... [within TIME]",
          "Waits until it is so, 60 s unless told otherwise; 'expect no ...' that it stays away until something else "
          "has happened, or for 1 s. Each stream has its own place: what met one expectation is behind. 'order' wants "
          "them one after the other, with at least so much time between them.",
          &Console::expect, expectWords },
        { "watch", "watch [TIME]",
          "The whole unit at a glance, drawn again and again until a key is pressed; once in a script.",
          &Console::watch, nothing },
        { "mark", "mark", "From here on, expect looks only at what comes now.", &Console::mark, nothing },
        { "transcript", "transcript mcu|devices|PROGRAM...",
          "Chooses, once in a script, whose part of what the unit sends the run's transcript holds; else it holds all. "
          "--transcript compares it with the one that is kept.",
          &Console::transcript,
          [](const Words&) {
              return joinedLists({ { "mcu", "devices" }, appNames() });
          } },
        { "switches", "switches N [within TIME]",
          "N changes of the page in front, one after the other, by keys, the menu, the network and programs. Fails "
          "when "
          "one takes longer, 200 ms unless told otherwise, or when the unit waits for an answer in vain.",
          &Console::switches, [](const Words& before) { return before.size() == 2 ? Words { "within" } : Words(); } },
        { "say", "say TEXT", "A headline.", &Console::say, nothing },
        { "pause", "pause TIME", "Gives the eye time. Left out when nobody watches.", &Console::pause, nothing },
        { "touch", "touch X Y", "A finger on the screen, 0 0 at its top left.", &Console::touch, nothing },
        { "picture", "picture NAME", "The screen as NAME.png in the folder of --pictures. Left out without it.",
          &Console::picture, nothing },
        { "help", "help [COMMAND]", "This.", &Console::help, helpWords },
        { "quit", "quit", "Ends the unit and leaves.", &Console::quit, nothing }
    };
    return table;
}

Console::Console(Unit& unitToUse, Style styleToUse, std::ostream& outputToUse, bool somebodyWatches)
    : unit(unitToUse)
    , style(styleToUse)
    , output(outputToUse)
    , watched(somebodyWatches)
    , expectations(unitToUse.journal)
{
}

Words Console::completionsFor(const Words& before)
{
    if (before.empty())
    {
        Words names;
        for (const auto& command : commands())
            names.emplace_back(command.name);
        return names;
    }
    for (const auto& command : commands())
        if (before[0] == command.name)
            return command.completions(before);
    return {};
}

Outcome Console::run(const std::string& text)
{
    const auto line = parseLine(text);
    if (!line.error.empty())
        return { Outcome::failed, line.error };
    if (line.words.empty())
        return {};
    if (line.words[0] == displayCondition)
        return ifDisplay(text.substr(text.find(displayCondition) + displayCondition.size()));
    for (const auto& command : commands())
        if (line.words[0] == command.name)
            return (this->*command.run)(line.words);
    return { Outcome::failed, "there is no command '" + line.words[0] + "', see help" };
}

Outcome Console::ifDisplay(const std::string& command)
{
    if (!unit.display().empty())
        return run(command);
    output << style.dim("    left out without a display") << "\n";
    return {};
}

bool Console::runScript(std::istream& script, const std::string& name)
{
    inScript = true;
    int number = 0;
    for (std::string text; std::getline(script, text);)
    {
        ++number;
        auto words = parseLine(text).words;
        if (words.size() > 1 && words[0] == displayCondition)
            words.erase(words.begin());
        const bool speaksForItself =
            words.empty() || words[0] == "say" || words[0] == "expect" || words[0] == "pause" || words[0] == "trail";
        if (!speaksForItself)
            output << "  " << style.accent("›") << " " << text << "\n";
        output.flush();
        const auto outcome = unit.journal.isInterrupted() ? Outcome { Outcome::failed, "interrupted" } : run(text);
        if (outcome.kind == Outcome::leave)
            return true;
        if (outcome.kind == Outcome::failed)
        {
            const auto end = outcome.error.find('\n');
            output << "  "
                   << style.bad("✗ " + name + ":" + std::to_string(number) + ": " + outcome.error.substr(0, end))
                   << "\n";
            std::string rest = end == std::string::npos ? "" : "    " + outcome.error.substr(end + 1);
            for (std::size_t at = 0; (at = rest.find('\n', at)) != std::string::npos; at += 5)
                rest.replace(at, 1, "\n    ");
            output << style.dim(rest) << (rest.empty() ? "" : "\n") << "    in: " << text << "\n";
            return false;
        }
    }
    return true;
}

} // namespace Bench
