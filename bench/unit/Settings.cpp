#include "bench/unit/Settings.h"

#include "bench/console/Script.h"
#include "bench/text/Names.h"

#include <limits>

namespace Bench
{

std::optional<int> findSetting(const std::string& name)
{
    for (const auto& info : allSettings())
        if (name == info.name)
            return info.index;
    return parseNumber(name, 0, highestSetting());
}

int highestSetting()
{
    return allSettings().back().index;
}

std::string whyNoValue(int setting, const std::string& value)
{
    const auto* info = Platform::settingInfo(setting);
    constexpr int lowest = std::numeric_limits<int>::min(), highest = std::numeric_limits<int>::max();
    const auto number = parseNumber(value, lowest, highest);
    if (info == nullptr || (info->isText && !number))
        return {};
    if (number && *number >= info->lowest && *number <= info->highest)
        return {};
    std::string names;
    for (const auto* name : info->values)
        names += (names.empty() ? ": " : ", ") + std::string(name);
    return std::string(info->name) + " goes from " + std::to_string(info->lowest) + " to " +
           std::to_string(info->highest) + names;
}

std::vector<std::string> settingNames()
{
    return namesIn(allSettings());
}

} // namespace Bench
