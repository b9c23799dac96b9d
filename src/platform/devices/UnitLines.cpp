#include "platform/devices/UnitLines.h"

#include "platform/config/Configuration.h"

#include <algorithm>

namespace Platform
{

std::vector<std::string> lineProblems()
{
    const auto& configuration = Configuration::get();
    std::vector<std::string> problems;
    for (const auto& [line, use] : unitLines)
        if (!Configuration::isSimulated(configuration.gpio) && !configuration.gpioLines.contains(line))
            problems.push_back("gpio_lines does not say which line of " + configuration.gpio.toStdString() + " is " +
                               std::to_string(line) + " (" + use + "); line " + std::to_string(line) + " is driven");
    for (const auto& [line, chipLine] : configuration.gpioLines)
        if (std::ranges::find(unitLines, line, &UnitLineInfo::line) == unitLines.end())
            problems.push_back("gpio_lines." + std::to_string(line) + " = " + std::to_string(chipLine) +
                               ": nothing in the engine drives line " + std::to_string(line));
    return problems;
}

} // namespace Platform
