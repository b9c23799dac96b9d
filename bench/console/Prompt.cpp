#include "bench/console/Prompt.h"

#include "bench/console/ActiveFaults.h"

namespace Bench
{

namespace
{

std::string sourceText(const Mcu::State& mcu, const Ctl::Style& style)
{
    if (!mcu.source)
        return style.warning("no source yet");
    const auto source = sourceName(*mcu.source);
    if (mcu.agreed)
        return style.good(source + " plays");
    if (mcu.wanted == mcu.source)
        return style.warning(source + ", asked for again");
    return style.warning(mcu.wanted ? source + ", but " + sourceName(*mcu.wanted) + " was asked for"
                                    : source + ", not agreed");
}

} // namespace

std::string promptText(Unit& unit, const Ctl::Style& style)
{
    const auto between = style.dim(" · ");
    const auto front = unit.programs.pageInFront();
    const auto running = unit.programs.running().size();
    const auto mcu = unit.mcu->state();
    std::string text;
    if (!unit.engine().isRunning())
        text = style.bad("off") + style.dim("; mcu power-on brings it back");
    else
    {
        text = sourceText(mcu, style) + between;
        text += front == Pubhead::NUM_OF_PAGES ? style.dim("no page")
                                               : style.bold(pageInfo(front)->title) + style.dim(" in front");
        text += between + style.dim(std::to_string(running) + (running == 1 ? " program" : " programs"));
        if (!unit.panel->state().powered)
            text += between + style.warning("panel off");
        if (mcu.readyForPowerOff)
            text += between + style.warning("ready for power-off");
    }
    for (const auto& fault : activeFaults(unit))
        text += between + style.warning(fault.what);
    return text;
}

} // namespace Bench
