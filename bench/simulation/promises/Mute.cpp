#include "EngineApi/Provided.h"
#include "EngineLayer/keys/KeyManager.h"
#include "bench/simulation/Promises.h"
#include "dsp/AudioServices.h"

namespace Simulation
{

namespace
{

/** What the chip has of it is among what is set. Nobody is told of the mute of a unit that is off. */
std::string muteHasReason(SimulatedUnit& unit, const Since&)
{
    const bool muted = EngineApi::Provided<Dsp::ChipManager>::get()->getACService().isMute();
    const bool told = unit.remoteTexts->isCovered();
    if (muted && !told && EngineLayer::KeyManager::getInstance()->isPoweredOn())
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
