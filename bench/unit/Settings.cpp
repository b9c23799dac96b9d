#include "bench/unit/Settings.h"

#include "bench/console/Script.h"
#include "bench/text/Names.h"

#include <algorithm>
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

std::vector<std::string> settingValues(int setting)
{
    const auto* info = Platform::settingInfo(setting);
    if (info == nullptr)
        return {};
    if (info->isText)
        return { info->values.begin(), info->values.end() };
    std::vector<std::string> values;
    for (int value = info->lowest; value <= info->highest; ++value)
        values.push_back(std::to_string(value));
    return values;
}

std::string whyNoValue(int setting, const std::string& value)
{
    const auto* info = Platform::settingInfo(setting);
    constexpr int lowest = std::numeric_limits<int>::min(), highest = std::numeric_limits<int>::max();
    const auto number = parseNumber(value, lowest, highest);
    const auto isValue = [&] { return std::ranges::find(info->values, value) != info->values.end(); };
    if (info == nullptr || (info->isText ? isValue() : number && *number >= info->lowest && *number <= info->highest))
        return {};
    std::string names;
    for (const auto* name : info->values)
        names += (names.empty() ? "" : ", ") + std::string(name);
    if (info->isText)
        return std::string(info->name) + " is one of " + names;
    return std::string(info->name) + " goes from " + std::to_string(info->lowest) + " to " +
           std::to_string(info->highest) + (names.empty() ? "" : ": " + names);
}

std::vector<std::string> settingNames()
{
    return namesIn(allSettings());
}

} // namespace Bench
