#include "bench/panel/Sentence.h"

#include "bench/text/Names.h"

namespace BenchPanel
{

namespace
{

std::string playing(const PanelState& state)
{
    std::string titles;
    for (const auto& [appType, program] : state.programs)
        if (program.source != Pubhead::NUM_OF_PAGES)
            titles += (titles.empty() ? "" : ", ") + pageTitle(program.source);
    return titles.empty() ? "nothing plays" : titles + " plays";
}

} // namespace

std::string pageTitle(int page)
{
    const auto* info = pageInfo(page);
    return info != nullptr ? info->title : "nothing";
}

std::string stateSentence(const PanelState& state)
{
    const auto& mcu = state.mcu;
    if (!state.engineRuns)
        return "the unit is off: Power brings it back";
    if (mcu.readyForPowerOff)
        return "ready for power-off: cut the power?";
    if (mcu.silent)
        return "the microcontroller is silent";
    if (!state.panel.powered)
        return "the unit is switched off, and waits for the power key";
    if (mcu.wanted)
        return sourceName(*mcu.wanted) + " is asked for, not yet agreed";
    if (!mcu.source)
        return "the unit starts";
    return playing(state) + (mcu.agreed ? ", agreed with the microcontroller" : ", not agreed");
}

} // namespace BenchPanel
