#pragma once

#include "bench/console/ActiveFaults.h"
#include "bench/panel/EngineAsker.h"
#include "bench/panel/LineRunner.h"
#include "bench/unit/Unit.h"

namespace BenchPanel
{

using namespace Bench;

/** Everything that the panel shows, at one moment. */
struct PanelState
{
    bool engineRuns = false;
    Mcu::State mcu;
    Bench::Panel::State panel;
    PowerSupply::State supply;
    bool weatherAlert = false;
    RemoteDisplay remote;
    bool remotePlugged = false;
    bool cameraSignal = false;
    std::array<bool, 2> usb {}; ///< storages 1 and 2
    DspMemory dsp;
    std::map<int, Programs::Program> programs;
    NetworkDisplay::State network;
    std::vector<ActiveFault> faults;

    Place journalEnd;
    /** The newest of all streams, oldest first. Never null. */
    std::shared_ptr<const std::vector<Event>> events = std::make_shared<std::vector<Event>>();
    std::shared_ptr<const EngineTold> engine = std::make_shared<EngineTold>(); ///< never null
    LineRunner::Said said;                                                     ///< the newest line
    std::vector<LineRunner::Said> ended;                                       ///< lines, since the state before

    /** What the unit shows is lit. */
    bool isOn() const { return panel.powered && (engineRuns || !programs.empty()); }
};

/** The devices in one turn, and the newest events, those of `before` when none has come. Any thread. */
PanelState snapshot(Unit& unit, const PanelState& before);

} // namespace BenchPanel
