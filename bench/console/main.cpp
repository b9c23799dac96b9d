// The simulated unit by hand or by script.
#include "bench/console/CommandLine.h"
#include "bench/console/Terminal.h"
#include "bench/console/Verb.h"
#include "bench/panel/PanelWindow.h"
#include "bench/text/Names.h"
#include "bench/text/Screen.h"
#include "bench/unit/VirtualDisplay.h"

#include <CLI/CLI.hpp>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>
#include <unistd.h>

namespace
{

using namespace Bench;

/**
    Ends every wait of the console when the user or the system asks the bench to end, so that it still cleans up. A person at the
    terminal gives up with Ctrl-C what is waited for, and no more.
*/
class Interruption
{
public:
    Interruption(Journal& journal, bool isConversation)
    {
        // The signals are blocked before any thread starts, so that this thread alone gets them.
        thread = std::thread(
            [this, &journal, isConversation]
            {
                int number = 0;
                while (::sigwait(&signals(), &number) == 0 && !ending)
                    journal.interrupt(!isConversation || number != SIGINT);
            });
    }

    ~Interruption()
    {
        ending = true;
        ::pthread_kill(thread.native_handle(), SIGTERM);
        thread.join();
    }

    /** An output that nobody reads any longer ends nothing at once either: the script sees it. */
    static void block()
    {
        ::pthread_sigmask(SIG_BLOCK, &signals(), nullptr);
        std::signal(SIGPIPE, SIG_IGN);
    }

private:
    std::atomic<bool> ending { false };
    std::thread thread;

    static const sigset_t& signals()
    {
        static const sigset_t set = []
        {
            sigset_t made;
            ::sigemptyset(&made);
            for (const auto number : { SIGINT, SIGTERM, SIGHUP })
                ::sigaddset(&made, number);
            return made;
        }();
        return set;
    }
};

/** Compares what the unit has sent with the transcript in this file, or keeps it there. Empty on success. */
std::string checkTranscript(Unit& unit, const TranscriptSections& sections, const std::string& path)
{
    // What is still on its way when the script ends belongs to the run.
    if (auto error = unit.engine().controlEngine("stop"); !error.empty())
        return error;
    unit.programs.stop();
    if (const auto forgotten = unit.journal.forgotten(); forgotten > 0)
        return "no transcript: of so long a run the first " + std::to_string(forgotten) + " events are forgotten";
    const auto events = unit.journal.find({}, Journal::capacity, [](const Event&) { return true; });
    const auto seen = composeTranscript(events, sections);
    if (std::getenv("HEADUNIT_BLESS") != nullptr)
        return std::ofstream(path, std::ios::binary) << seen << std::flush ? "" : path + ": cannot be written";
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return path + ": cannot be read";
    const std::string kept { std::istreambuf_iterator(file), {} };
    const auto difference = transcriptDifference(kept, seen);
    return difference.empty() ? "" : path + ", " + difference + "\n./test --bless keeps what is new";
}

/** The exit status. */
int installPrograms(const CommandLine& choices)
{
    auto folder = std::filesystem::absolute(choices.programFolder).lexically_normal().string();
    if (folder.ends_with('/'))
        folder.pop_back();
    if (const auto error = linkPrograms(choices.unit.standIn, folder); !error.empty())
    {
        std::cerr << error << "\n";
        return 2;
    }
    std::cout << programTables(folder);
    return 0;
}

/** The other program, which has the engine in it. */
int become(const char* name, char** arguments)
{
    const auto program =
        (std::filesystem::path(Unit::Options::besideThisProgram().engine).parent_path() / name).string();
    ::execv(program.c_str(), arguments);
    std::cerr << program << ": " << std::strerror(errno) << "\n";
    return 2;
}

/** The exit status. */
int playScript(Console& commands, Unit& unit, const CommandLine& choices)
{
    const auto style = Style::ofOutput();
    std::ifstream file(choices.script);
    const auto name = std::filesystem::path(choices.script).filename().string();
    bool succeeded = runScript(commands, file, name, AfterFailure::end);
    if (succeeded && !choices.transcript.empty())
        if (const auto error = checkTranscript(unit, commands.transcriptSections(), choices.transcript); !error.empty())
        {
            succeeded = false;
            std::cout << style.bad("✗ " + error) << "\n";
        }
    std::cout << "\n" << (succeeded ? style.good("✓ " + name + " passed.") : style.bad("✗ " + name + " failed."));
    const bool stays = choices.unit.keepFolder || choices.unit.attached;
    std::cout << style.dim(succeeded                         ? "  Drive it yourself: headunit-bench, then help."
                           : stays && unit.logFile().empty() ? ""
                           : stays                           ? "  The engine's log: " + unit.logFile()
                                                             : "  Run it again with --keep for the engine's log.")
              << std::endl;
    return succeeded ? 0 : 1;
}

/**
    Until engine and microcontroller agree on a source, its page is there, and so are the programs that the engine starts
    behind the scenes. A unit that never gets there is worth a look, too.
*/
void waitForUnit(const Unit& unit)
{
    constexpr std::chrono::seconds longestStart { 30 };
    const auto deadline = Clock::now() + longestStart;
    const auto reaches = [&](const std::string& what, const Journal::Matches& matches)
    {
        const auto matchesOrEnds = [&](const Event& event) { return matches(event) || event.text == "ended"; };
        const auto event = unit.journal.waitFor({}, deadline, matchesOrEnds);
        if (!event)
            std::cerr << "Within " << longestStart.count() << " s " << what << ".\n";
        return event && event->text != "ended";
    };
    bool goesOn = reaches("engine and microcontroller have not agreed on a source",
                          [](const auto& event) { return event.stream == "mcu agreed"; }) &&
                  reaches("no page has been shown",
                          [](const auto& event) { return event.stream.starts_with("page ") && event.text == "shown"; });
    for (const auto& info : allPages())
    {
        const std::string program = Pubhead::appTypeName(info.appType);
        const auto isConnected = [&](const auto& event)
        { return event.stream == "program " + program && event.text == "connected"; };
        goesOn = goesOn && (!info.inBackground || reaches(program + " has not answered the engine", isConnected));
    }
}

int converseAtTerminal(Console& commands)
{
    std::cout << Style::ofOutput().dim(
                     "Try: pages, mcu source aux, program eq show. help lists the rest, quit ends it.")
              << "\n";
    converse(commands);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    for (const auto& [word, program] :
         { std::pair("simulate", "headunit-simulation"), std::pair("replay", "headunit-replay"),
           std::pair("check-program", "headunit-checker") })
        if (argc > 1 && std::string_view(argv[1]) == word)
            return become(program, argv + 1);
    CLI::App app;
    CommandLine choices;
    choices.offerTo(app);
    CLI11_PARSE(app, argc, argv);
    if (choices.printVerbs)
    {
        std::cout << optionTable() << "\n" << verbTables();
        return 0;
    }
    if (const auto error = choices.takePrograms(); !error.empty())
    {
        std::cerr << error << "\n";
        return 2;
    }
    if (!choices.programFolder.empty())
        return installPrograms(choices);
    if (!choices.attached.configuration.empty())
        choices.unit.attached = choices.attached;
    const auto display = displayOfEnvironment(Display::ofEnvironment);
    if (choices.panel && display.empty())
    {
        std::cerr << "there is no display for the panel: DISPLAY names one\n";
        return 2;
    }
    if (!display.empty() && !canBeOpened(display))
    {
        const auto error = "the display " + display + " of DISPLAY cannot be opened";
        if (choices.panel)
        {
            std::cerr << error << "\n";
            return 2;
        }
        if (!choices.noDisplay && !choices.ownDisplay)
            std::cerr << error << ": nothing is drawn\n";
        choices.noDisplay = !choices.ownDisplay;
    }
    // Behind the panel the unit draws where only the panel looks.
    choices.ownDisplay = choices.ownDisplay || (choices.panel && !choices.noDisplay && !choices.unit.attached &&
                                                VirtualDisplay::isInstalled());
    if (choices.noDisplay || choices.ownDisplay)
        choices.unit.display = choices.noDisplay ? Display::none : Display::own;

    const bool atTerminal = ::isatty(STDIN_FILENO) == 1;
    const bool watched = ::isatty(STDOUT_FILENO) == 1;
    auto& script = choices.script;
    if (script.empty() && !choices.panel && (choices.tour || (!atTerminal && !choices.console)))
        script = choices.unit.resources + "/bench/tour.scenario";
    if (!script.empty() && !std::filesystem::exists(script))
    {
        std::cerr << script << ": there is no such file\n";
        return 2;
    }

    Interruption::block();
    const auto style = Style::ofOutput();
    Unit unit(choices.unit);
    const Interruption interruption(unit.journal, atTerminal && script.empty() && !choices.panel);
    auto error = unit.start();
    if (error.empty() && !choices.noEngine && !choices.unit.attached)
        error = unit.startEngine();
    if (!error.empty())
    {
        std::cerr << style.bad(error) << "\n";
        return 2;
    }
    std::cout << style.bold("Head unit on the bench") << style.dim("  " + unit.folder()) << "\n";

    if (choices.pictures.empty() && script.empty())
        choices.pictures = ".";
    Console commands(unit, style, std::cout, watched);
    commands.pictureFolder = choices.pictures;
    commands.tellsConsequences = watched && script.empty();
    // The panel shows how the unit comes up.
    if (!choices.noEngine && !choices.unit.attached && !choices.noWait && !choices.panel)
        waitForUnit(unit);
    const int status = choices.panel     ? BenchPanel::runPanel(unit, { choices.ownDisplay, choices.pictures, script })
                       : !script.empty() ? playScript(commands, unit, choices)
                       : atTerminal      ? converseAtTerminal(commands)
                                    : (runScript(commands, std::cin, "standard input", AfterFailure::nextLine) ? 0 : 1);
    const auto folder = unit.folder();
    unit.stop();
    if (choices.unit.keepFolder)
        std::cout << style.dim("Kept: " + folder) << "\n";
    return status;
}
