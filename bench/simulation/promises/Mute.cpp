#include "EngineApi/Provided.h"
#include "bench/simulation/Promises.h"
#include "dsp/AudioServices.h"
#include "platform/devices/UnitLines.h"

namespace Simulation
{

namespace
{

/** What the chip has of it is among what is set. Nobody is told of the mute of a unit that is off. */
std::string muteHasReason(SimulatedUnit& unit, const Since&)
{
    const bool muted = EngineApi::Provided<Dsp::ChipManager>::get()->getACService().isMute();
    const bool told = unit.remoteTexts->isCovered();
    const auto lines = unit.gpio.lines();
    const auto output = lines.find(Platform::output1Line);
    const bool off = output != lines.end() && output->second.level == 0;
    if (muted && !told && !off)
        return "the unit is on and muted, and nobody was told";
    return told && !muted ? "the unit tells of a mute that has ended" : "";
}

constexpr Promise all[] {
    { "a mute has a reason", muteHasReason, true },
};

} // namespace

std::span<const Promise> mutePromises()
{
    return all;
}

} // namespace Simulation
