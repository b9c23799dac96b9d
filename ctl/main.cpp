// Asks a running engine what it does, and why.
#include "ctl/Address.h"
#include "ctl/ReportTables.h"
#include "ctl/Reports.h"
#include "ctl/Trace.h"
#include "ctl/Watch.h"
#include "ctl/Why.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <csignal>
#include <iostream>

namespace
{

using namespace Ctl;

constexpr std::array endings { SIGINT, SIGTERM, SIGHUP };

/** From here on Ctrl-C and the like wait until somebody looks, so that they break no call. */
void holdInterruptions()
{
    sigset_t held;
    ::sigemptyset(&held);
    for (const auto number : endings)
        ::sigaddset(&held, number);
    ::sigprocmask(SIG_BLOCK, &held, nullptr);
}

bool isInterrupted()
{
    sigset_t waiting;
    return ::sigpending(&waiting) == 0 &&
           std::ranges::any_of(endings, [&](int number) { return ::sigismember(&waiting, number) == 1; });
}

/** What the command line says. */
class Choices
{
public:
    explicit Choices(CLI::App& app);

    std::string bus, configuration;
    /** Asks and prints. */
    std::function<Answer(Client& client)> command;

private:
    bool json = false, all = false;
    std::string name, level, file;
    std::uint32_t seconds = usualTraceSeconds;

    const Style style = Style::ofOutput();

    CLI::App* offer(CLI::App& app, const std::string& word, const std::string& help,
                    const std::function<Answer(Client& client)>& toDo)
    {
        auto* added = app.add_subcommand(word, help);
        added->callback([this, toDo] { command = toDo; });
        return added;
    }
    void offerReports(CLI::App& app);
    void offerQuestions(CLI::App& app);
    /** The text for a person, which is made only when it is wanted. */
    Answer print(Answer answer, const std::function<std::string(const Json& answer)>& text) const
    {
        if (answer.kind == Answer::done)
            std::cout << (json ? answer.value.dump(2, ' ', false, Json::error_handler_t::replace) + "\n"
                               : text(answer.value));
        return answer;
    }
};

Choices::Choices(CLI::App& app)
{
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", std::string("headunit-ctl ") + HEADUNIT_VERSION);
    app.add_option("--bus", bus, "D-Bus address of the engine's bus; else HEADUNIT_BUS in the environment");
    app.add_option("--config", configuration,
                   "The engine's configuration, whose ipc.address is the bus; else the "
                   "session's bus is")
        ->check(CLI::ExistingFile)
        ->default_str("/etc/headunit/engine.toml");
    app.add_flag("--json", json, "Print the answer as JSON: one document, or one a line for watch");
    offerReports(app);
    offerQuestions(app);
    auto* log = offer(app, "log", "Sets how much the engine writes into its log.",
                      [this](Client& client)
                      {
                          return print(client.ask("SetLog", { level, file }), [this](const Json&)
                                       { return (file.empty() ? "The log" : file) + " is at " + level + " now.\n"; });
                      });
    log->add_option("LEVEL", level, "error, info, debug, verbose, or default for what the configuration says")
        ->required();
    log->add_option("FILE", file, "Of this source file alone: Extend/ViewManager");
    auto* trace = offer(app, "trace", "Lets the engine write down what it does, for the Perfetto viewer.",
                        [this](Client& client)
                        {
                            holdInterruptions();
                            return print(takeTrace(client, file, seconds, isInterrupted),
                                         [this](const Json& answer) { return traceText(answer, file, style); });
                        });
    trace->add_option("FILE", file, "What it is written to")->required();
    trace->add_option("SECONDS", seconds, "How long; Ctrl-C ends it earlier")
        ->check(CLI::Range(1u, longestTraceSeconds))
        ->capture_default_str();
    offer(app, "watch", "Tells what changes, line by line, until Ctrl-C.",
          [this](Client& client)
          {
              holdInterruptions();
              return Watch(client, std::cout, style, json).run(isInterrupted);
          });
}

void Choices::offerReports(CLI::App& app)
{
    for (const auto& report : reports())
    {
        const bool isCounters = report.text == countersText;
        auto* added = offer(app, report.name, report.help,
                            [this, &report, isCounters](Client& client)
                            {
                                std::vector<std::string> parameters;
                                if (report.parameter != nullptr)
                                    parameters.push_back(fullName(client, report.parameter, name));
                                auto answer = client.ask(report.method, parameters);
                                if (isCounters && !all)
                                    answer.value = withoutZeros(answer.value);
                                return print(answer, [&](const Json& value) { return textOf(report, value, style); });
                            });
        if (report.parameter != nullptr)
            added->add_option(report.parameter, name, "Only this one");
        if (isCounters)
            added->add_flag("--all", all, "Those that are 0, too");
    }
}

void Choices::offerQuestions(CLI::App& app)
{
    auto* why = app.add_subcommand("why", "Says why something is as it is.")->require_subcommand(1);
    for (const auto& question : questions())
    {
        auto* parent = why;
        std::string word = question.words;
        if (const auto blank = word.find(' '); blank != std::string::npos)
        {
            parent = why->add_subcommand(word.substr(0, blank), question.help)->require_subcommand(1);
            word = word.substr(blank + 1);
        }
        auto* added = offer(*parent, word, question.help,
                            [this, &question](Client& client) {
                                return print(askWhy(client, question, name),
                                             [this](const Json& answer) { return whyText(answer, style); });
                            });
        if (question.parameter != nullptr)
            added->add_option(question.parameter, name)->required();
    }
}

constexpr int statusOf(Answer::Kind kind)
{
    switch (kind)
    {
    case Answer::done:
        return 0;
    case Answer::unknown:
        return 2;
    case Answer::absent:
        return 3;
    default:
        return 1;
    }
}

int complain(const std::string& error, Answer::Kind kind)
{
    std::cerr << "headunit-ctl: " << error << "\n";
    return statusOf(kind);
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app { "Asks a running head unit what it does, and why." };
    app.footer("Exit status: 0; 1 when something failed; 2 when the engine knows no such page, setting and so on; "
               "3 without an engine.");
    Choices choices(app);
    CLI11_PARSE(app, argc, argv);
    const auto address = findAddress(choices.bus, choices.configuration);
    if (!address.error.empty())
        return complain(address.error, Answer::failed);
    Client client(address.bus);
    if (const auto answer = choices.command(client); answer.kind != Answer::done)
        return complain(answer.error, answer.kind);
    return std::cout.flush() ? 0 : complain("standard output takes no more", Answer::failed);
}
