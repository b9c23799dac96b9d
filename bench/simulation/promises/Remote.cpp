#include "bench/simulation/Promises.h"

namespace Simulation
{

namespace
{

std::string remoteShowsItsLines(SimulatedUnit& unit, const Since&)
{
    const auto shown = unit.remote.display().text();
    const auto wanted = unit.remoteTexts->lastingText();
    return !unit.remote.isPlugged() || shown == wanted ? "" : "it shows " + shown + " instead of " + wanted;
}

constexpr Promise all[] {
    { "the wired remote shows its lines", remoteShowsItsLines, true },
};

} // namespace

std::span<const Promise> remotePromises()
{
    return all;
}

} // namespace Simulation
