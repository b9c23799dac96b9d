#include "bench/checker/Report.h"

#include "protocol/Rules.h"

#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace Checker
{

namespace
{

std::string sentenceOf(const std::string& rule)
{
    for (const auto& each : Protocol::rules())
        if (rule == each.id)
            return Protocol::withTimes(each.sentence);
    return {};
}

/** The end of what a program wrote, where an error usually stands. */
std::vector<std::string> lastLines(const std::string& text)
{
    constexpr std::size_t most = 3;
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        lines.push_back(line);
        if (lines.size() > most)
            lines.erase(lines.begin());
    }
    return lines;
}

} // namespace

void Report::add(const Result& result)
{
    ++checks;
    if (!result.problem.empty())
    {
        ++unmade;
        std::cout << style.bad("✗ ") << result.name << ": " << style.bad("not checked, " + result.problem) << "\n";
    }
    else if (result.faults.empty())
        std::cout << style.good("✓ ") << result.name << "\n";
    for (const auto& fault : result.faults)
        printFault(result, fault);
    if (verbose)
        for (const auto& line : result.trace)
            std::cout << style.dim("    " + line) << "\n";
    std::cout << std::flush;
}

void Report::printFault(const Result& result, const Fault& fault)
{
    std::cout << style.bad("✗ ") << result.name << ": ";
    if (!told.insert(fault.rule + fault.what).second)
    {
        std::cout << "the same (" << fault.rule << ")\n";
        return;
    }
    if (std::find(broken.begin(), broken.end(), fault.rule) == broken.end())
        broken.push_back(fault.rule);
    std::cout << fault.what << "\n    " << style.bold(fault.rule + ": ") << sentenceOf(fault.rule) << "\n";
    for (const auto& line : lastLines(result.output))
        std::cout << style.dim("    it wrote: " + line) << "\n";
}

void Report::end() const
{
    std::string rules;
    for (const auto& rule : broken)
        rules += (rules.empty() ? "" : ", ") + rule;
    const bool isGood = broken.empty() && unmade == 0;
    std::cout << "\n"
              << (isGood ? style.good("✓ ") : style.bad("✗ ")) << checks << " checks"
              << (unmade > 0 ? ", " + std::to_string(unmade) + " not made" : "")
              << (rules.empty() ? ", no rule broken" : ", broken: " + rules + " of docs/source-programs.md") << ".\n";
}

nlohmann::json describe(const Result& result, bool withTrace)
{
    nlohmann::json object { { "check", result.name },
                            { "passed", result.faults.empty() && result.problem.empty() },
                            { "faults", nlohmann::json::array() } };
    for (const auto& fault : result.faults)
        object["faults"].push_back(
            { { "rule", fault.rule }, { "what", fault.what }, { "sentence", sentenceOf(fault.rule) } });
    if (!result.problem.empty())
        object["problem"] = result.problem;
    if (!result.faults.empty())
        object["output"] = result.output;
    if (withTrace)
        object["exchange"] = result.trace;
    return object;
}

} // namespace Checker
