// A whole unit in simulated time: one thread, one seed.
#include "bench/simulation/Run.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <juce_events/juce_events.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using namespace Simulation;
namespace fs = std::filesystem;

struct Choices
{
    std::vector<std::string> worlds;
    std::uint64_t seed = 1;
    int runs = 1;
    double minutes = 30;
    bool showJournal = false;
    int lastEvents = 40;
};

fs::path resources()
{
    return fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "resources";
}

void print(const Bench::Event& event, Clock::time_point begin)
{
    const auto at = std::chrono::duration<double>(event.at - begin).count();
    std::printf("%12.6f  %s: %s\n", at, event.stream.c_str(), event.text.c_str());
}

/** The exit status of the process of one run. */
int run(const Choices& choices, const World& world, std::uint64_t seed, int result)
{
    auto folder = (fs::temp_directory_path() / "headunit-simulation-XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr)
        return 2;
    // What the engine prints is for its own standard output.
    if (const int nowhere = ::open("/dev/null", O_WRONLY); nowhere >= 0)
        ::dup2(nowhere, STDERR_FILENO);
    // None of them is taken down: the process ends with the run.
    auto& scheduler = *new Scheduler(seed);
    new juce::ScopedJuceInitialiser_GUI;
    auto& unit = *new SimulatedUnit(scheduler, folder, resources().string());
    unit.programs.habits = world.habits;
    const auto begin = scheduler.now();
    Outcome outcome;
    outcome.broken = unit.start();
    if (outcome.broken.empty())
        outcome = live(unit, world,
                       std::chrono::duration_cast<Clock::duration>(
                           std::chrono::duration<double, std::ratio<60>>(choices.minutes)));
    const auto all = [](const auto&) { return true; };
    if (choices.showJournal || !outcome.broken.empty())
        for (const auto& event : unit.journal.find(
                 {}, choices.showJournal ? Bench::Journal::capacity : static_cast<std::size_t>(choices.lastEvents),
                 all))
            print(event, begin);
    if (!outcome.broken.empty())
        std::printf("✗ %s, seed %llu, step %llu, %.6f s: %s\n", world.name.c_str(),
                    static_cast<unsigned long long>(seed), static_cast<unsigned long long>(outcome.steps),
                    std::chrono::duration<double>(outcome.simulated).count(), outcome.broken.c_str());
    std::fflush(stdout);
    const double simulated = std::chrono::duration<double>(outcome.simulated).count();
    [[maybe_unused]] const auto written = ::write(result, &simulated, sizeof simulated);
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    return outcome.broken.empty() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    Choices choices;
    CLI::App app { "The head unit in simulated time: one thread, and a seed that decides every order.",
                   "headunit-bench simulate" };
    app.add_option("--world", choices.worlds,
                   "What happens: a file, or one of calm, hurried, storm; all three without");
    app.add_option("--seed", choices.seed, "The first one")->capture_default_str();
    app.add_option("--runs", choices.runs, "So many, each with the next seed")->capture_default_str();
    app.add_option("--minutes", choices.minutes, "Simulated time of a run")->capture_default_str();
    app.add_flag("--journal", choices.showJournal, "Print everything that happened");
    CLI11_PARSE(app, argc, argv);
    if (choices.worlds.empty())
        choices.worlds = { "calm", "hurried", "storm" };

    int failed = 0;
    for (const auto& name : choices.worlds)
    {
        World world;
        const auto file = fs::exists(name) ? fs::path(name) : resources() / "worlds" / (name + ".world");
        world.name = file.stem().string();
        std::ifstream text(file);
        if (const auto error = text ? world.read(text) : "there is no such file"; !error.empty())
        {
            std::cerr << file.string() << ": " << error << "\n";
            return 2;
        }
        double simulated = 0;
        int broken = 0;
        const auto wall = std::chrono::steady_clock::now();
        for (int i = 0; i < choices.runs; ++i)
        {
            int pipe[2];
            if (::pipe(pipe) != 0)
                return 2;
            std::fflush(stdout);
            const auto child = ::fork();
            if (child == 0)
                ::_exit(run(choices, world, choices.seed + static_cast<std::uint64_t>(i), pipe[1]));
            ::close(pipe[1]);
            if (child < 0)
            {
                std::cerr << "no process for a run: " << std::strerror(errno) << "\n";
                return 2;
            }
            double lived = 0;
            if (::read(pipe[0], &lived, sizeof lived) == sizeof lived)
                simulated += lived;
            ::close(pipe[0]);
            int status = 0;
            ::waitpid(child, &status, 0);
            if (!WIFEXITED(status))
                std::printf("✗ %s, seed %llu: ended by signal %d\n", world.name.c_str(),
                            static_cast<unsigned long long>(choices.seed + static_cast<std::uint64_t>(i)),
                            WTERMSIG(status));
            broken += status == 0 ? 0 : 1;
        }
        const auto took = std::chrono::duration<double>(std::chrono::steady_clock::now() - wall).count();
        std::printf("%s %-8s %d runs, %.1f simulated hours in %.1f s, %.0f times real time%s\n",
                    broken == 0 ? "✓" : "✗", world.name.c_str(), choices.runs, simulated / 3600, took, simulated / took,
                    broken == 0 ? "" : (", " + std::to_string(broken) + " broken").c_str());
        failed += broken;
    }
    return failed == 0 ? 0 : 1;
}
