#include "bench/simulation/Run.h"

#include "bench/simulation/Hand.h"
#include "bench/simulation/Life.h"
#include "bench/simulation/Memory.h"
#include "bench/simulation/Trace.h"

#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <juce_gui_basics/juce_gui_basics.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <unistd.h>

namespace Simulation
{

namespace
{

namespace fs = std::filesystem;
using nlohmann::json;
using Seconds = std::chrono::duration<double>;

/** What happens in the next life of a run. */
using Happenings = std::function<Outcome(SimulatedUnit& unit, std::uint64_t seed, const Witness& witness)>;

/** The unit's folder, away when the run is over. */
struct Folder
{
    Folder()
    {
        // Where nothing waits for a disk, if there is such a place.
        const auto* shared = "/dev/shm";
        path = ((::access(shared, W_OK) == 0 ? fs::path(shared) : fs::temp_directory_path()) /
                "headunit-simulation-XXXXXX")
                   .string();
        if (::mkdtemp(path.data()) == nullptr)
            throw std::system_error(errno, std::generic_category(), path);
    }
    ~Folder()
    {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }

    std::string path;
};

void print(const Bench::Journal& journal, Clock::time_point begin, std::size_t most)
{
    for (const auto& event : journal.find({}, most, [](const auto&) { return true; }))
        std::printf("%12.6f  %s: %s\n", Seconds(event.at - begin).count(), event.stream.c_str(), event.text.c_str());
    std::fflush(stdout);
}

void write(int pipe, const json& message)
{
    const auto line = message.dump() + "\n";
    for (std::size_t at = 0; at < line.size();)
    {
        const auto written = ::write(pipe, line.data() + at, line.size() - at);
        if (written < 0)
            ::_exit(2); // nobody wants to know any more
        at += static_cast<std::size_t>(written);
    }
}

/** What the toolkit asks the machine for once takes longer than a short life: all lives begin with the answers. */
void askMachine()
{
    static bool asked = false;
    if (std::exchange(asked, true))
        return;
    // A display would bring in events of the machine's time. Without a name the toolkit would try its first one.
    ::setenv("DISPLAY", "none", 1);
    juce::MessageManager::getInstance();
    juce::Desktop::getInstance();
    juce::MessageManager::deleteInstance(); // each life has its own
}

/** The process of one life. */
[[noreturn]] void liveHere(const std::string& folder, std::uint64_t seed, const World& world,
                           const Happenings& happenings, const Report& report, int pipe)
{
    // What the engine prints is for its own standard output.
    if (const int nowhere = ::open("/dev/null", O_WRONLY); nowhere >= 0)
        ::dup2(nowhere, STDERR_FILENO);
    // None of them is taken down: the process ends with the life.
    auto& scheduler = *new Scheduler(seed);
    new juce::ScopedJuceInitialiser_GUI;
    auto& unit = *new SimulatedUnit(scheduler, folder, resources());
    unit.programs.habits = world.habits;
    scheduler.load = world.load;
    const auto begin = scheduler.now();
    const auto trace = report.trace.empty() ? nullptr : std::make_unique<Trace>(scheduler);
    Outcome outcome;
    outcome.broken = unit.startDevices();
    Memory memory(unit, folder + "/memory.json");
    if (outcome.broken.empty())
    {
        std::string lost;
        scheduler.messageThread().post([&] { lost = memory.begin(); });
        unit.startEngine();
        outcome = happenings(
            unit, seed,
            [&](const Deed& deed)
            {
                memory.look();
                write(pipe, { { "pause", deed.pause.count() }, { "steps", deed.steps }, { "line", deed.line } });
            });
        if (!lost.empty())
            outcome.broken = "what is stored outlives a cut of the power: " + lost;
    }
    memory.end();
    if (report.whole)
        print(unit.journal, begin, Bench::Journal::capacity);
    else if (!outcome.broken.empty())
        print(unit.journal, begin, report.lastEvents);
    if (trace != nullptr)
        if (const auto error = trace->write(report.trace, unit.journal); !error.empty())
            std::printf("%s\n", error.c_str()), std::fflush(stdout);
    write(pipe, { { "broken", outcome.broken },
                  { "cut", outcome.cut },
                  { "steps", outcome.steps },
                  { "seconds", Seconds(outcome.simulated).count() } });
    ::_exit(0);
}

/** Whether another life follows. */
bool live(Result& result, const std::string& folder, std::uint64_t seed, const World& world,
          const Happenings& happenings, const Report& report)
{
    askMachine();
    int ends[2];
    std::fflush(stdout);
    if (::pipe(ends) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    const auto child = ::fork();
    if (child < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0)
    {
        ::close(ends[0]);
        liveHere(folder, seed, world, happenings, report, ends[1]);
    }
    ::close(ends[1]);
    auto* told = ::fdopen(ends[0], "r");
    char* line = nullptr;
    std::size_t capacity = 0;
    bool cut = false, ended = false;
    while (::getline(&line, &capacity, told) > 0)
    {
        const auto message = json::parse(line);
        if (message.contains("line"))
        {
            result.plan.push_back({ std::chrono::milliseconds(message["pause"]), message["steps"], message["line"] });
            continue;
        }
        ended = true;
        result.broken = message["broken"];
        cut = message["cut"];
        result.steps = message["steps"];
        result.inLife = Seconds(message["seconds"]);
        result.simulated += result.inLife;
    }
    std::free(line);
    std::fclose(told);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!ended)
        result.broken = WIFSIGNALED(status) ? "it lives: ended by signal " + std::to_string(WTERMSIG(status))
                                            : "it lives: ended with status " + std::to_string(WEXITSTATUS(status));
    ++result.lives;
    return cut && result.broken.empty();
}

/** Each life has its own chance. */
std::uint64_t seedOfLife(std::uint64_t seed, int life)
{
    constexpr std::uint64_t apart = 0x9E3779B97F4A7C15; // odd, so that no two of them are the same
    return seed + apart * static_cast<std::uint64_t>(life);
}

} // namespace

std::string resources()
{
    return fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "resources";
}

Result run(const World& world, std::uint64_t seed, Clock::duration length, const Report& report)
{
    const Folder folder;
    Result result;
    const Happenings happenings = [&](SimulatedUnit& unit, std::uint64_t seedNow, const Witness& witness)
    {
        // Apart from the scheduler's, so that the same deeds in the same order are the same run without the world.
        Chance chance(~seedNow);
        const auto left = length - std::chrono::duration_cast<Clock::duration>(result.simulated);
        return live(unit, world, chance, left, witness);
    };
    while (result.simulated < length &&
           live(result, folder.path, seedOfLife(seed, result.lives), world, happenings, report))
    {
    }
    return result;
}

Result run(const World& world, std::uint64_t seed, const Plan& plan, const Report& report)
{
    const Folder folder;
    Result result;
    std::size_t begin = 0;
    bool goesOn = true;
    while (goesOn && (begin < plan.size() || result.lives == 0))
    {
        auto end = begin;
        while (end < plan.size() && plan[end].line != powerCut)
            ++end;
        end = std::min(end + 1, plan.size());
        const Plan part(plan.begin() + static_cast<std::ptrdiff_t>(begin),
                        plan.begin() + static_cast<std::ptrdiff_t>(end));
        begin = end;
        const Happenings happenings = [&](SimulatedUnit& unit, std::uint64_t, const Witness& witness)
        { return live(unit, part, witness); };
        goesOn = live(result, folder.path, seedOfLife(seed, result.lives), world, happenings, report);
    }
    return result;
}

} // namespace Simulation
