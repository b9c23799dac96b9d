#pragma once

#include "bench/buses/GpioLines.h"
#include "bench/buses/VideoDecoder.h"
#include "bench/dsp/Dsp.h"
#include "bench/mcu/Panel.h"
#include "bench/mcu/PowerSupply.h"
#include "bench/mcu/TestEquipment.h"
#include "bench/mcu/Tuner.h"
#include "bench/network/NetworkDisplay.h"
#include "bench/remote/WiredRemote.h"
#include "bench/simulation/RemoteTexts.h"
#include "bench/simulation/SimulatedLines.h"
#include "bench/simulation/SimulatedPrograms.h"

namespace Simulation
{

/**
    The engine with everything around it, in one thread and on the scheduler's time. One for a process, as the engine
    is: another run is another process.
*/
class SimulatedUnit
{
public:
    /** `folder` is the unit's, kept from one run to the next; `resources` what the build packs for the engine. */
    SimulatedUnit(Scheduler& schedulerToUse, std::string folder, std::string resources);
    ~SimulatedUnit();

    /** What is around the engine begins. Empty on success, else what is wrong with the configuration. */
    std::string startDevices();
    void startEngine();
    /** Of USB storage 1 to 8, which is there when the folder is. */
    std::string mountPoint(int number) const
    {
        return path + "/media/Hard Disk" + (number > 1 ? std::to_string(number) : "");
    }

    Scheduler& scheduler;
    Bench::Journal journal;
    Lookout lookout;
    Devices devices;

private:
    const std::string path, resourcePath;
    std::uint64_t seenActivity = 0;
    SimulatedSerial mcuLine, remoteLine;
    SimulatedPackets i2c, gpioLines, spi;

public:
    Bench::Mcu mcu { journal, mcuLine };
    Bench::Panel panel { journal, mcu };
    Bench::PowerSupply supply { mcu };
    Bench::Tuner tuner { journal, mcu };
    Bench::TestEquipment testEquipment { journal, mcu };
    Bench::NetworkNode networkNode { mcu };
    Bench::NetworkDisplay networkDisplay { journal, mcu, networkNode };
    Bench::WiredRemote remote { journal, remoteLine };
    Bench::VideoDecoder videoDecoder { journal, i2c };
    Bench::GpioLines gpio { journal, gpioLines };
    Bench::Dsp dsp { journal, spi };
    SimulatedPrograms programs { journal, lookout };
    std::optional<RemoteTexts> remoteTexts; ///< from the engine's start on

    /** Something that a person or the boat does to a device. */
    template <typename Call>
    void act(Call&& call)
    {
        devices.turn(call);
    }

private:
    std::string writeConfiguration() const;
    /** What any thread has posted to the framework's own message loop is the message thread's work. */
    void dispatchFrameworkMessages();
};

} // namespace Simulation
