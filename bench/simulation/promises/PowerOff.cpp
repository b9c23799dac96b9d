#include "bench/simulation/Promises.h"

namespace Simulation
{

namespace
{

using namespace std::chrono_literals;

/** Six seconds for the satellite tuner, eight for the programs, and the frames. */
constexpr auto longest = 15s;

bool linkFailed(const SimulatedUnit& unit, const Since& since)
{
    return !unit.journal
                .find(since.begin, 1,
                      [](const Bench::Event& event)
                      { return event.stream == "mcu link" && event.text != "back" && !event.text.starts_with("rep"); })
                .empty();
}

std::string oneReady(SimulatedUnit& unit, const Since& since)
{
    const int times = unit.timesReadyForPowerOff();
    if (times > 1)
        return "the unit said it " + std::to_string(times) + " times";
    if (times == 1 && !since.powerOffAt)
        return "nobody had asked for it";
    if (times == 0 && since.powerOffAt && unit.scheduler.now() - *since.powerOffAt > longest &&
        !linkFailed(unit, since))
        return "it has not come";
    return {};
}

constexpr Promise all[] { { "power-off ends with one ready", oneReady, false } };

} // namespace

std::span<const Promise> powerOffPromises()
{
    return all;
}

} // namespace Simulation
