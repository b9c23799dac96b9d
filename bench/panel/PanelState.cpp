#include "bench/panel/PanelState.h"

namespace BenchPanel
{

PanelState snapshot(Unit& unit, const PanelState& before)
{
    constexpr std::size_t mostEvents = 600;
    PanelState now;
    now.engineRuns = unit.engine().isRunning();
    for (std::size_t i = 0; i < now.usb.size(); ++i)
        now.usb[i] = unit.isUsbPlugged(static_cast<int>(i) + 1);
    {
        const Loop::Turn turn(unit.loop);
        now.mcu = unit.mcu->state();
        now.panel = unit.panel->state();
        now.supply = unit.supply->state();
        now.weatherAlert = unit.tuner->weatherAlert();
        now.remote = unit.remote->display();
        now.remotePlugged = unit.remote->isPlugged();
        now.cameraSignal = unit.videoDecoder->hasSignal();
        now.dsp = unit.dsp->memory();
        now.network = unit.networkDisplay->state();
        now.programs = unit.programs.running();
        now.faults = activeFaults(unit);
    }
    now.journalEnd = unit.journal.end();
    now.events = now.journalEnd.number == before.journalEnd.number
                     ? before.events
                     : std::make_shared<const std::vector<Event>>(
                           unit.journal.find({}, mostEvents, [](const Event&) { return true; }));
    return now;
}

} // namespace BenchPanel
