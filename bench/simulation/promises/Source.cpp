#include "EngineApi/Pages.h"
#include "bench/simulation/Promises.h"
#include "bench/text/Names.h"
#include "factory/ScheduleFactroy.h"

namespace Simulation
{

namespace
{

constexpr std::chrono::seconds longestHeartbeat { 4 };

std::string sourceAgrees(SimulatedUnit& unit, const Since&)
{
    const int page = EngineApi::getNormalSource();
    const auto [type, number] = Factory::ScheduleFactroy::getInstance()->mcuSourceForPage(page);
    const auto mcu = unit.mcu.state();
    // A unit whose programs stay silent stops its heartbeat, and would be restarted.
    if (mcu.sinceHeartbeat > longestHeartbeat)
        return {};
    const auto told = mcu.source;
    const Bench::Source own { type, number };
    if (told && *told == own)
        return {};
    // The start source did not get through: neither has one, until somebody chooses.
    if (!told && page == Pubhead::NUM_OF_PAGES && mcu.givenUp > 0)
        return {};
    return std::string(Pubhead::pageName(page)) + " plays, the microcontroller has " +
           (told ? Bench::sourceName(*told) : "none") + " instead of " + Bench::sourceName(own);
}

constexpr Promise all[] {
    { "the source agrees", sourceAgrees, true },
};

} // namespace

std::span<const Promise> sourcePromises()
{
    return all;
}

} // namespace Simulation
