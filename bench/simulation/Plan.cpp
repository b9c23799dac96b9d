#include "bench/simulation/Plan.h"

#include "bench/console/Script.h"

#include <sstream>

namespace Simulation
{

namespace
{

constexpr const char* waiting = "wait";
constexpr const char* restRemark = "# at rest";
constexpr const char* stepsRemark = "# after this many steps: ";

} // namespace

std::string scenarioOf(const Plan& plan)
{
    std::ostringstream text;
    std::chrono::milliseconds pause { 0 };
    const auto writePause = [&](const char* remark = "")
    {
        if (pause.count() > 0)
            text << waiting << ' ' << pause.count() << "ms" << remark << "\n";
        pause = {};
    };
    for (const auto& deed : plan)
    {
        pause += deed.pause;
        if (deed.line.empty())
            continue;
        if (deed.line == rest)
        {
            writePause((std::string("  ") + restRemark).c_str());
            continue;
        }
        writePause();
        text << deed.line;
        if (deed.steps > 0)
            text << "  " << stepsRemark << deed.steps;
        text << "\n";
    }
    writePause();
    return text.str();
}

std::string readScenario(std::istream& text, Plan& plan)
{
    std::string line;
    Deed next;
    for (int number = 1; std::getline(text, line); ++number)
    {
        const auto [words, error] = Bench::parseLine(line);
        const auto wrong = [&](const std::string& what) { return "line " + std::to_string(number) + ": " + what; };
        if (!error.empty())
            return wrong(error);
        if (words.empty())
            continue;
        if (words.front() == waiting)
        {
            const auto time = words.size() == 2 ? Bench::parseDuration(words[1]) : std::nullopt;
            if (!time)
                return wrong("a time is missing");
            next.pause += *time;
            if (line.find(restRemark) != std::string::npos)
                plan.push_back({ .pause = std::exchange(next, {}).pause, .line = rest });
            continue;
        }
        if (const auto remark = line.find(stepsRemark); remark != std::string::npos)
        {
            const auto steps = Bench::parseNumber(line.substr(remark + std::string(stepsRemark).size()), 0, 100'000);
            if (!steps)
                return wrong("a number of steps is missing");
            next.steps = *steps;
        }
        next.line = Bench::joined(words);
        plan.push_back(std::exchange(next, {}));
    }
    if (next.pause.count() > 0)
        plan.push_back(next);
    return {};
}

} // namespace Simulation
