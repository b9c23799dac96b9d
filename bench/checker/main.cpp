// Plays the engine's side towards one source program, and says which rules that breaks.
#include "EngineApi/Catalogue.h"
#include "bench/checker/Report.h"
#include "bench/text/Names.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <filesystem>
#include <future>
#include <iostream>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sys/signalfd.h>
#include <unistd.h>

namespace
{

using namespace Checker;
namespace fs = std::filesystem;

constexpr int unusable = 2;
constexpr const char* displayServer = "/usr/bin/Xvfb";

/** What the command line says. */
struct Choices
{
    std::string program, as;
    double patience = 1;
    int jobs = 4;
    bool json = false, verbose = false, noDisplay = false;
};

/** Empty on success, else what is wrong. */
std::string findSubject(const Choices& choices, Subject& subject)
{
    std::error_code error;
    subject.path = fs::absolute(choices.program, error).string();
    if (!fs::is_regular_file(subject.path, error) || ::access(subject.path.c_str(), X_OK) != 0)
        return choices.program + ": there is no such program that can be run";
    // Without a word it is the program of its file's name.
    const auto as = choices.as.empty() ? fs::path(choices.program).filename().string() : choices.as;
    subject.appType = Bench::findApp(as);
    if (subject.appType == Pubhead::AppUnknown)
        return "'" + as + "' is no program of the unit with a page; --as takes AppAuxIn, aux ...";
    for (const auto& each : Bench::allPages())
        if (each.appType == subject.appType)
            subject.pages.push_back(each.page);
    const auto* config = EngineApi::pageScheduleConfig(subject.pages.front());
    subject.isSource = config != nullptr && config->isSourcePage;
    subject.patience = choices.patience;
    subject.draws = !choices.noDisplay && fs::exists(displayServer, error);
    return {};
}

Result play(const Check& check, const Subject& subject)
{
    if (subject.isInterrupted())
        return { check.name, false, {}, {}, {}, "interrupted" };
    Exchange exchange(subject);
    const bool finished = check.play(exchange);
    auto problem = exchange.getProblem();
    if (problem.empty() && !finished && exchange.getFaults().empty())
        problem = "it did not come to its end";
    return { check.name, finished, exchange.getFaults(), exchange.getTrace(), exchange.output(), problem };
}

/** Several at a time, and the results in order. */
template <typename Take>
void playAll(std::span<const Check> checks, const Subject& subject, int jobs, const Take& take)
{
    std::vector<std::promise<Result>> results(checks.size());
    std::mutex lock;
    auto left = checks.size();
    const auto work = [&]
    {
        for (;;)
        {
            std::size_t index = 0;
            {
                const std::scoped_lock guard(lock);
                if (left == 0)
                    return;
                // The last ones take longest, and are begun first.
                index = --left;
            }
            results[index].set_value(play(checks[index], subject));
        }
    };
    std::vector<std::jthread> workers;
    for (int i = 0; i < jobs; ++i)
        workers.emplace_back(work);
    for (auto& result : results)
        take(result.get_future().get());
}

/** Readable when the user or the system wants the process to end, which cleans up first. Before any thread starts. */
int takeInterruption()
{
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const auto number : { SIGINT, SIGTERM, SIGHUP })
        ::sigaddset(&signals, number);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return ::signalfd(-1, &signals, SFD_CLOEXEC);
}

/** The exit status. */
int check(const Choices& choices, Subject& subject)
{
    Report report(Ctl::Style::ofOutput(), choices.verbose);
    auto all = nlohmann::json::array();
    bool broken = false, impossible = false;
    const auto take = [&](const Result& result)
    {
        if (subject.isInterrupted())
            return;
        broken = broken || !result.faults.empty();
        impossible = impossible || !result.problem.empty();
        if (choices.json)
            all.push_back(describe(result, choices.verbose));
        else
            report.add(result);
    };

    const auto checks = allChecks();
    constexpr std::size_t first = 2;
    const auto started = play(checks[0], subject);
    take(started);
    // A program that does not come up shows nothing else.
    if (started.finished)
    {
        const auto heard = play(checks[1], subject);
        subject.hasHeartbeat = heard.faults.empty();
        take(heard);
        playAll(checks.subspan(first), subject, choices.jobs, take);
    }
    if (subject.isInterrupted())
    {
        std::cerr << "interrupted\n";
        return unusable;
    }
    if (choices.json)
        std::cout << nlohmann::json { { "program", subject.path },
                                      { "as", Pubhead::appTypeName(subject.appType) },
                                      { "passed", !broken && !impossible },
                                      { "checks", all } }
                         .dump(2, ' ', false, nlohmann::json::error_handler_t::replace)
                  << "\n";
    else
        report.end();
    return impossible ? unusable : broken ? 1 : 0;
}

} // namespace

int main(int argc, char** argv)
{
    Choices choices;
    CLI::App app {
        "Plays the engine's side towards a source program, in right orders and wrong ones, and says which rules of\n"
        "docs/source-programs.md it breaks. Each check starts it anew, on a bus of its own. Status 1 when a rule is\n"
        "broken, 2 when it cannot be checked.",
        "headunit-bench check-program"
    };
    app.add_option("program", choices.program, "What the engine would start")->required();
    app.add_option("--as", choices.as,
                   "Which program of the unit it is (AppAuxIn, aux ...); else its file's name says so");
    app.add_flag("--verbose", choices.verbose, "Show every message, with the time since the check began");
    app.add_flag("--json", choices.json, "Print the results as JSON");
    app.add_flag("--no-display", choices.noDisplay, "Give it no display, even where there is Xvfb");
    app.add_option("--patience", choices.patience, "Every time limit so many times as long, for a slow machine")
        ->capture_default_str()
        ->check(CLI::Range(1.0, 1000.0));
    app.add_option("--jobs", choices.jobs, "So many checks at a time")->capture_default_str()->check(CLI::Range(1, 64));
    CLI11_PARSE(app, argc, argv);
    Subject subject {};
    if (const auto error = findSubject(choices, subject); !error.empty())
    {
        std::cerr << error << "\n";
        return unusable;
    }
    subject.interruption = takeInterruption();
    return check(choices, subject);
}
