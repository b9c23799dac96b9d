// What the engine says of itself, by the code of headunit-ctl.
#include "bench/console/Verb.h"
#include "ctl/ReportTables.h"
#include "ctl/Reports.h"
#include "ctl/Trace.h"
#include "ctl/Why.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace Bench
{

namespace
{

/** Verbs that tell of the simulated devices, too. */
constexpr std::array<std::string_view, 5> shownWithDevices { "state", "pages", "programs", "remote", "dsp" };

/** Prints the answer, or tells why there is none. */
Outcome print(Console& console, const Ctl::Answer& answer, const std::function<std::string(const Ctl::Json&)>& text)
{
    if (answer.kind != Ctl::Answer::done)
        return failed(answer.error);
    console.output << text(answer.value);
    return {};
}

Outcome report(Console& console, const Ctl::Report& report, const Arguments& given)
{
    Ctl::Client client(console.unit.engine().busAddress());
    std::vector<std::string> parameters;
    if (report.parameter != nullptr)
        parameters.push_back(Ctl::fullName(client, report.parameter, given[0]));
    return print(console, client.ask(report.method, parameters),
                 [&](const Ctl::Json& answer)
                 {
                     const bool isPart = report.text == Ctl::countersText && !given.has(0);
                     return Ctl::textOf(report, isPart ? Ctl::withoutZeros(answer) : answer, console.style);
                 });
}

/** The question's parameter by the engine's name; "" when it has none. */
std::string parameterOf(const Ctl::Question& question, const Arguments& given)
{
    const std::string kind = question.parameter != nullptr ? question.parameter : "";
    if (kind == "PAGE")
        return Pubhead::pageName(findPage(given[0]));
    if (kind == "PROGRAM")
        return Pubhead::appTypeName(findApp(given[0]));
    return kind.empty() ? "" : given[0];
}

Outcome why(Console& console, const Ctl::Question& question, const Arguments& given)
{
    Ctl::Client client(console.unit.engine().busAddress());
    return print(console, Ctl::askWhy(client, question, parameterOf(question, given)),
                 [&](const Ctl::Json& answer) { return Ctl::whyText(answer, console.style); });
}

/** Asks until the sentence has the text in it. */
Outcome expectReason(Console& console, const Ctl::Question& question, const Arguments& given)
{
    constexpr std::chrono::milliseconds pause { 50 };
    auto words = given.words(question.parameter != nullptr ? 1 : 0);
    auto limit = Expectations::defaultLimit;
    if (auto error = takeTime(words, "within", limit); !error.empty())
        return failed(error);
    const auto text = joined(words);
    const auto parameter = parameterOf(question, given);
    const auto description =
        std::string("why ") + question.words + (parameter.empty() ? "" : " " + parameter) + " \"" + text + "\"";
    auto& journal = console.unit.journal;
    Ctl::Client client(console.unit.engine().busAddress());
    const auto start = Clock::now();
    std::string said;
    while (!journal.isInterrupted())
    {
        const auto answer = Ctl::askWhy(client, question, parameter);
        said = answer.kind == Ctl::Answer::done ? Ctl::whyText(answer.value, Style(false)) : answer.error;
        if (answer.kind == Ctl::Answer::done && said.substr(0, said.find('\n')).find(text) != std::string::npos)
            return met(console, description, start);
        if (Clock::now() >= start + limit)
            return failed("not said within " + std::to_string(limit.count()) + " ms: " + description + "\n" + said);
        journal.waitFor(journal.end(), Clock::now() + pause, [](const Event&) { return false; });
    }
    return failed("interrupted");
}

Outcome trace(Console& console, const Arguments& given)
{
    Ctl::Client client(console.unit.engine().busAddress());
    const auto seconds = static_cast<std::uint32_t>(given.number(1, Ctl::usualTraceSeconds));
    const auto isInterrupted = [&] { return console.unit.journal.isInterrupted(); };
    return print(console, Ctl::takeTrace(client, given[0], seconds, isInterrupted),
                 [&](const Ctl::Json& answer) { return Ctl::traceText(answer, given[0], console.style); });
}

} // namespace

void showReport(Console& console, const std::string& name)
{
    const auto reports = Ctl::reports();
    const auto outcome = report(console, *std::ranges::find(reports, name, &Ctl::Report::name), Arguments({}, {}));
    if (!outcome.error.empty())
        console.output << console.style.warning(outcome.error) << "\n";
}

Verbs diagnosticsVerbs()
{
    Verbs verbs, expectations;
    for (const auto& each : Ctl::questions())
    {
        const auto line =
            std::string("why ") + each.words + (each.parameter != nullptr ? std::string(" ") + each.parameter : "");
        verbs.push_back(
            { line, each.help, [&each](Console& console, auto& given) { return why(console, each, given); } });
        expectations.push_back({ "expect " + line + " TEXT...", "Asks until the answer's sentence has this text in it.",
                                 [&each](Console& console, auto& given)
                                 { return expectReason(console, each, given); } });
    }
    std::ranges::move(expectations, std::back_inserter(verbs));
    for (const auto& each : Ctl::reports())
    {
        const bool isCounters = each.text == Ctl::countersText;
        const std::string more = isCounters ? " [all]" : each.parameter != nullptr ? " [SETTING]" : "";
        if (std::ranges::find(shownWithDevices, each.name) == shownWithDevices.end())
            verbs.push_back({ each.name + more, each.help,
                              [&each](Console& console, auto& given) { return report(console, each, given); } });
    }
    verbs.push_back({ "trace FILE [SECONDS]",
                      "Lets the engine write down what it does for so long (10 s), for the Perfetto viewer.", trace });
    return verbs;
}

} // namespace Bench
