#include "bench/unit/Settings.h"

#include "bench/console/Script.h"
#include "bench/text/Names.h"

namespace Bench
{

std::optional<int> findSetting(const std::string& name)
{
    constexpr int highestSetting = 0xffff;
    for (const auto& info : allSettings())
        if (name == info.name)
            return info.index;
    return parseNumber(name, 0, highestSetting);
}

std::vector<std::string> settingNames()
{
    return namesIn(allSettings());
}

} // namespace Bench
