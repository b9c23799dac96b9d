#include "bench/simulation/Memory.h"

#include "bench/unit/Settings.h"
#include "platform/settings/SetupStore.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

namespace Simulation
{

namespace
{

using nlohmann::json;

/** A setting that was changed so long ago is stored, unless the disk takes nothing. */
constexpr std::chrono::seconds stored { 1 };

} // namespace

Memory::Memory(SimulatedUnit& unitToUse, std::string fileToUse)
    : unit(unitToUse)
    , file(std::move(fileToUse))
{
}

std::string Memory::valueOf(int setting)
{
    return Platform::VX_IsSetupValueString(setting) ? Platform::VX_GetSetupValueString(setting).toStdString()
                                                    : std::to_string(Platform::VX_GetSetupValueInt(setting));
}

std::string Memory::begin()
{
    std::ifstream text(file);
    const auto kept = text ? json::parse(text) : json::object();
    if (kept.contains("source"))
        unit.mcu.setLastMemory({ kept["source"][0], kept["source"][1] });
    std::string wrong;
    if (kept.contains("settings"))
        for (const auto& info : Bench::allSettings())
        {
            const auto found = valueOf(info.index);
            const auto& possible = kept["settings"][std::to_string(info.index)];
            if (std::ranges::find(possible, json(found)) == possible.end())
                wrong = std::string(info.name) + " is " + found + " after the start, and was " + possible.dump();
        }
    isOpen = true;
    return wrong;
}

void Memory::look()
{
    if (!isOpen)
        return;
    const auto now = unit.scheduler.now();
    for (const auto& info : Bench::allSettings())
    {
        auto& values = settings[info.index];
        if (auto value = valueOf(info.index); values.empty() || values.back().text != value)
            values.push_back({ std::move(value), now });
        while (values.size() > 1 && values[1].since + stored < now)
            values.pop_front();
    }
}

void Memory::end()
{
    look();
    const auto source = unit.mcu.state().lastMemory;
    json kept { { "source", { source.type, source.number } } };
    for (const auto& [setting, values] : settings)
        for (const auto& value : values)
            kept["settings"][std::to_string(setting)].push_back(value.text);
    std::ofstream(file, std::ios::trunc) << kept.dump();
}

} // namespace Simulation
