// A whole unit in simulated time: one thread, one seed.
#include "bench/simulation/Shrink.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace
{

using namespace Simulation;
namespace fs = std::filesystem;
using Seconds = std::chrono::duration<double>;

struct Choices
{
    std::vector<std::string> worlds;
    std::string scenario;
    std::uint64_t seed = 1;
    int runs = 1;
    double minutes = 30;
    bool untilFailure = false, shrinks = false;
    Report report { .lastEvents = 40 };
};

/** Empty on success, else what is wrong. */
template <typename Read>
std::string readFile(const fs::path& file, Read&& read)
{
    std::ifstream text(file);
    const auto error = text ? read(text) : std::string("there is no such file");
    return error.empty() ? "" : file.string() + ": " + error;
}

std::string readWorld(const std::string& name, World& world)
{
    const auto file = fs::exists(name) ? fs::path(name) : fs::path(resources()) / "worlds" / (name + ".world");
    world.name = file.stem().string();
    return readFile(file, [&](auto& text) { return world.read(text); });
}

void printBroken(const World& world, std::uint64_t seed, const Result& result)
{
    std::printf("✗ %s, seed %llu, life %d, step %llu, %.6f s: %s\n", world.name.c_str(),
                static_cast<unsigned long long>(seed), result.lives, static_cast<unsigned long long>(result.steps),
                result.inLife.count(), result.broken.c_str());
    std::fflush(stdout);
}

void printShort(const World& world, std::uint64_t seed, const Result& result)
{
    const auto found = shrink(world, seed, result);
    if (!found)
    {
        std::printf("Done again as a plan, it breaks no promise.\n");
        return;
    }
    std::printf("# headunit-bench simulate --world %s --seed %llu --scenario THIS-FILE\n# %s\n%s", world.name.c_str(),
                static_cast<unsigned long long>(found->seed), found->result.broken.c_str(),
                scenarioOf(found->plan).c_str());
    std::fflush(stdout);
}

/** How many runs broke a promise. */
int runAll(const Choices& choices, const World& world, const Plan* plan, std::uint64_t firstSeed)
{
    Seconds simulated {};
    int broken = 0;
    const auto wall = std::chrono::steady_clock::now();
    const auto length =
        std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double, std::ratio<60>>(choices.minutes));
    for (int i = 0; i < choices.runs; ++i)
    {
        const auto seed = firstSeed + static_cast<std::uint64_t>(i);
        const auto result =
            plan != nullptr ? run(world, seed, *plan, choices.report) : run(world, seed, length, choices.report);
        simulated += result.simulated;
        if (result.broken.empty())
            continue;
        ++broken;
        printBroken(world, seed, result);
        if (choices.shrinks)
            printShort(world, seed, result);
    }
    const Seconds took = std::chrono::steady_clock::now() - wall;
    const std::chrono::hh_mm_ss clock(std::chrono::round<std::chrono::seconds>(simulated));
    std::printf("%s %-8s seeds %llu to %llu, %d:%02d:%02d simulated in %.1f s, %.0f times real time%s\n",
                broken == 0 ? "✓" : "✗", world.name.c_str(), static_cast<unsigned long long>(firstSeed),
                static_cast<unsigned long long>(firstSeed) + static_cast<unsigned long long>(choices.runs) - 1,
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()), took.count(), simulated / took,
                broken == 0 ? "" : (", " + std::to_string(broken) + " broken").c_str());
    std::fflush(stdout);
    return broken;
}

} // namespace

int main(int argc, char** argv)
{
    Choices choices;
    CLI::App app { "The head unit in simulated time: one thread, and a seed that decides every order.",
                   "headunit-bench simulate" };
    app.add_option("--world", choices.worlds,
                   "What happens: a file, or one of calm, hurried, storm, voyage; all of them without");
    app.add_option("--scenario", choices.scenario,
                   "Do what this file says instead; of the world, only how its programs are");
    app.add_option("--seed", choices.seed, "The first one")->capture_default_str();
    app.add_option("--runs", choices.runs, "So many, each with the next seed")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--minutes", choices.minutes, "Simulated time of a run")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_flag("--until-failure", choices.untilFailure, "Go on with the next seeds until a promise breaks");
    app.add_flag("--shrink", choices.shrinks, "Find a short scenario that breaks the same promise, and print it");
    app.add_flag("--journal", choices.report.whole, "Print everything that happened");
    app.add_option("--trace", choices.report.trace,
                   "Write the last life of the last run for a trace viewer (Perfetto)");
    CLI11_PARSE(app, argc, argv);
    if (choices.worlds.empty())
        choices.worlds = { "calm", "hurried", "storm", "voyage" };

    std::vector<World> worlds(choices.worlds.size());
    Plan plan;
    std::string error;
    for (std::size_t i = 0; i < worlds.size() && error.empty(); ++i)
        error = readWorld(choices.worlds[i], worlds[i]);
    if (error.empty() && !choices.scenario.empty())
        error = readFile(choices.scenario, [&](auto& text) { return readScenario(text, plan); });
    if (!error.empty())
    {
        std::cerr << error << "\n";
        return 2;
    }

    int broken = 0;
    auto seed = choices.seed;
    try
    {
        do
        {
            for (const auto& world : worlds)
                broken += runAll(choices, world, choices.scenario.empty() ? nullptr : &plan, seed);
            seed += static_cast<std::uint64_t>(choices.runs);
        } while (choices.untilFailure && broken == 0);
    }
    catch (const std::system_error& failure) // no folder, no process
    {
        std::cerr << failure.what() << "\n";
        return 2;
    }
    return broken == 0 ? 0 : 1;
}
