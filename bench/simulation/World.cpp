#include "bench/simulation/World.h"

#include <numeric>
#include <sstream>

namespace Simulation
{

std::string World::read(std::istream& text)
{
    std::string line;
    for (int number = 1; std::getline(text, line); ++number)
    {
        const auto wrong = [&](const std::string& what) { return "line " + std::to_string(number) + ": " + what; };
        std::istringstream words(line.substr(0, line.find('#')));
        std::string word;
        if (!(words >> word))
            continue;
        if (word.find_first_not_of("0123456789") == std::string::npos)
        {
            std::string actionName;
            const auto* action = words >> actionName ? findAction(actionName) : nullptr;
            if (action == nullptr)
                return wrong("no action '" + actionName + "'");
            actions.emplace_back(std::stoi(word), action);
            continue;
        }
        int first = 0, second = 0;
        const bool isPair = word == "pace" || word == "busy";
        if (!(words >> first) || first < 0 || (isPair && !(words >> second)) || (word == "pace" && second < first) ||
            (word == "busy" && second < 1))
            return wrong("a number is missing");
        const std::chrono::milliseconds time { first };
        if (word == "pace")
            shortestPause = time, longestPause = std::chrono::milliseconds(second);
        else if (word == "busy")
            load = { first, std::chrono::milliseconds(second) };
        else if (word == "rest-every")
            actionsToRest = first;
        else if (word == "start")
            habits.start = time;
        else if (word == "answer")
            habits.answer = time;
        else if (word == "slow-start")
            habits.slowStarts = first;
        else if (word == "failed-start")
            habits.failedStarts = first;
        else if (word == "answers-twice")
            habits.answersTwice = first;
        else
            return wrong("'" + word + "' means nothing");
    }
    return actions.empty() ? "nothing happens in it" : "";
}

const Action& World::choose(Chance& chance) const
{
    const auto total =
        std::accumulate(actions.begin(), actions.end(), 0, [](int sum, const auto& each) { return sum + each.first; });
    auto left = chance.between(0, total - 1);
    for (const auto& [weight, action] : actions)
        if ((left -= weight) < 0)
            return *action;
    return *actions.back().second;
}

} // namespace Simulation
