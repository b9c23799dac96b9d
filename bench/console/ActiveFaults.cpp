#include "bench/console/ActiveFaults.h"

namespace Bench
{

namespace
{

class Collector
{
public:
    void add(bool holds, const std::string& what, const std::string& cure)
    {
        if (holds)
            found.push_back({ what, cure });
    }
    void slow(const std::string& who, std::chrono::milliseconds delay, const std::string& cure)
    {
        add(delay.count() > 0, who + " is " + std::to_string(delay.count()) + " ms slow", cure);
    }

    std::vector<ActiveFault> found;
};

void addLink(Collector& faults, Mcu& mcu)
{
    const auto& active = mcu.activeFaults();
    const auto frames = [&](const char* does, const Mcu::FaultyFrames& next, auto nameOf, const char* cure)
    {
        faults.add(next.left > 0,
                   std::string("mcu ") + does + " " + std::to_string(next.left) + " " +
                       (next.command     ? nameOf(*next.command)
                        : next.left == 1 ? "frame"
                                         : "frames"),
                   cure);
    };
    faults.add(active.silentUntil.has_value(), "mcu silent", "mcu silent 0");
    faults.slow("mcu", active.delay, "mcu delay 0");
    frames("loses", active.drop, mcuCommandName, "mcu drop 0");
    faults.add(active.dropEvery > 0, "mcu loses 1 of " + std::to_string(active.dropEvery) + " frames",
               "mcu drop every 0");
    frames("damages", active.corrupt, mcuCommandName, "mcu corrupt 0");
    frames("repeats", active.repeat, mcuCommandName, "mcu repeat 0");
    frames("ignores", active.withheldAcks, unitCommandName, "mcu no-ack 0");
}

void addPrograms(Collector& faults, Unit& unit)
{
    for (const auto& [appType, program] : unit.programs.running())
    {
        const std::string name = Pubhead::appTypeName(appType), order = "program " + name;
        faults.add(program.silent, name + " silent", order + " silent off");
        faults.slow(name, program.slow, order + " slow off");
        faults.add(program.hung, name + " hangs", order + " wake");
    }
    for (const auto& [appType, what] : unit.programFiles.faults())
    {
        const std::string name = Pubhead::appTypeName(appType);
        faults.add(true, name + " " + what, "program " + name + " start well");
    }
}

} // namespace

std::vector<ActiveFault> activeFaults(Unit& unit)
{
    Collector faults;
    const auto& engine = unit.engine();
    addLink(faults, *unit.mcu.use());
    faults.add(unit.videoDecoder->isFailing(), "camera bus refuses", "i2c well");
    faults.slow("camera bus", unit.videoDecoder->slowedBy(), "i2c well");
    faults.slow("gpio", unit.gpio->slowedBy(), "gpio well");
    for (const auto& fault : unit.dsp->state().faults)
        faults.add(true, "dsp: " + fault, "dsp fail well");
    faults.add(!unit.remote->isPlugged(), "remote unplugged", "remote plug");
    faults.add(unit.remote->isStalled(), "remote stalls", "remote stall off");
    const auto equipment = unit.testEquipment->state();
    faults.add(equipment.held, "test equipment acknowledges nothing", "autotest go");
    faults.add(equipment.toDamage > 0,
               "test equipment damages " + std::to_string(equipment.toDamage) +
                   (equipment.toDamage == 1 ? " frame" : " frames"),
               "autotest damage 0");
    addPrograms(faults, unit);
    const auto group = engine.stalledGroup();
    faults.add(!group.empty(), group + " stands still", "engine go");
    faults.add(!engine.isBusRunning(), "bus off", "bus start");
    return faults.found;
}

} // namespace Bench
