#include "bench/console/CommandLine.h"

#include "bench/console/Script.h"
#include "bench/text/Names.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace Bench
{

namespace fs = std::filesystem;

namespace
{

std::string inTable(std::string text)
{
    for (std::size_t at = 0; (at = text.find('|', at)) != std::string::npos; at += 2)
        text.insert(at, "\\");
    return text;
}

} // namespace

void CommandLine::offerTo(CLI::App& app)
{
    app.description("A head unit on the bench: the engine with every device and program around it, simulated.");
    app.footer("headunit-bench simulate --help tells of the same unit in simulated time, "
               "headunit-bench replay --help of recordings, headunit-bench check-program --help of what checks a "
               "source program.");
    auto* scripted = app.add_option("--script", script, "Run the commands of this file; 1 when one of them fails");
    scripted->option_text("FILE")->check(CLI::ExistingFile);
    auto* compared =
        app.add_option("--transcript", transcript,
                       "Compare what the unit sends in a script with this file; with HEADUNIT_BLESS set, write it");
    compared->option_text("FILE")->needs(scripted);
    app.add_option("--pictures", pictures,
                   "Let 'picture' write into this folder; without it, into the working folder, in a script not at all")
        ->option_text("FOLDER");
    auto* toured = app.add_flag("--tour", tour,
                                "Show what the unit can do; also what happens without a terminal on standard input");
    auto* window = app.add_flag("--panel", panel, "Show and press the whole unit in a window");
    auto* typed = app.add_flag(
        "--stdin", console,
        "Read commands from standard input even when it is no terminal; goes on after one that fails, and is 1 "
        "at the end");
    window->excludes(compared)->excludes(toured)->excludes(typed);
    scripted->excludes(toured)->excludes(typed);
    toured->excludes(typed);
    app.add_option("--program", programs,
                   "This program in place of the bench's stand-in, as in aux=./mine; for several, several times")
        ->option_text("PROGRAM=FILE")
        ->allow_extra_args(false);
    auto* keep = app.add_flag("--keep", unit.keepFolder, "Keep the unit's folder (configuration, settings, log)");
    auto* own = app.add_flag("--own-display", ownDisplay, "Draw on a display of the unit's own, which nobody looks at");
    app.add_flag("--no-display", noDisplay, "Draw nothing, even when a display is there")->excludes(own);
    auto* recording = app.add_option("--record", unit.recording, "Let the engine record, for headunit-bench replay");
    recording->option_text("FILE");
    auto* withoutEngine = app.add_flag("--no-engine", noEngine, "Leave the engine off; 'engine start' switches it on");
    auto* engine = app.add_option("--engine", unit.engine, "The engine's program; the one beside the bench if not set");
    engine->option_text("FILE");
    app.add_option("--stand-in", unit.standIn,
                   "The program that stands for every source program; the bench's if not set")
        ->option_text("FILE");
    auto* logLibrary = app.add_option("--log-library", unit.logLibrary, "The log library that the engine loads");
    logLibrary->option_text("FILE");
    app.add_option("--resources", unit.resources, "The engine's resource folder")->option_text("FOLDER");
    offerAttachment(app, { recording, withoutEngine, keep, engine, logLibrary, own });
    app.add_flag("--no-wait", noWait, "Begin at once, while the unit still starts");
    app.add_flag("--print-verbs", printVerbs,
                 "Print the tables of the manual: the options, what can be said, and expected");
}

void CommandLine::offerAttachment(CLI::App& app, std::initializer_list<CLI::Option*> ofOwnEngine)
{
    const auto* logFile = std::getenv("HEADUNIT_LOG_FILE");
    attached.log = logFile != nullptr ? logFile : "";
    auto* attach = app.add_option("--attach", attached.configuration,
                                  "Stand around an engine that somebody else runs with this configuration");
    attach->option_text("ENGINE.TOML")->check(CLI::ExistingFile);
    for (auto* each : ofOwnEngine)
        attach->excludes(each);
    app.add_option("--engine-log", attached.log, "Where that engine writes its log; HEADUNIT_LOG_FILE if not set")
        ->option_text("FILE")
        ->needs(attach);
    app.add_option("--control", attached.control,
                   "The programs' socket, HEADUNIT_BENCH_CONTROL of that engine; 'control' beside bus.spi2 if not set")
        ->option_text("SOCKET")
        ->needs(attach);
    const std::string does = " do what is in place of {}: \"systemctl {} ";
    app.add_option("--engine-command", attached.engineCommand,
                   "Lets 'engine start|stop|restart'" + does + "headunit-engine\"")
        ->option_text("COMMAND")
        ->needs(attach);
    app.add_option("--bus-command", attached.busCommand, "Lets 'bus start|stop|restart'" + does + "headunit-bus\"")
        ->option_text("COMMAND")
        ->needs(attach);
    app.add_option("--install-programs", programFolder,
                   "Make a folder of links to --stand-in for that engine to start, and print its configuration's "
                   "tables for them; no more")
        ->option_text("FOLDER");
}

std::string CommandLine::takePrograms()
{
    for (const auto& each : programs)
    {
        const auto end = each.find('=');
        const auto name = each.substr(0, end);
        const auto appType = findApp(name);
        if (end == std::string::npos)
            return "--program " + each + ": it is PROGRAM=FILE, as in aux=./mine";
        if (appType == Pubhead::AppUnknown)
            return "--program " + each + ": '" + name + "' is no program of the unit (" + joined(appNames()) + ")";
        std::error_code none;
        const auto file = fs::absolute(each.substr(end + 1), none).lexically_normal();
        if (!fs::is_regular_file(file, none))
            return "--program " + each + ": there is no file " + file.string();
        if (::access(file.c_str(), X_OK) != 0)
            return "--program " + each + ": " + file.string() + " cannot be executed: " + std::strerror(errno);
        if (!unit.programs.emplace(appType, file.string()).second)
            return "--program " + each + ": " + Pubhead::appTypeName(appType) + " has one already";
    }
    return {};
}

std::string optionTable()
{
    CLI::App app;
    CommandLine ignored;
    ignored.offerTo(app);
    std::string text = "| Option | What it does |\n|---|---|\n";
    for (const auto* option : app.get_options())
    {
        const auto& value = option->get_option_text();
        text += "| " + inTable("`" + option->get_name(false, true) + (value.empty() ? "" : " " + value) + "`") + " | " +
                inTable(option->get_description()) + " |\n";
    }
    return text;
}

} // namespace Bench
