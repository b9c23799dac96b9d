#pragma once

#include "bench/buses/GpioLines.h"
#include "bench/buses/VideoDecoder.h"
#include "bench/dsp/Dsp.h"
#include "bench/mcu/Panel.h"
#include "bench/mcu/PowerSupply.h"
#include "bench/mcu/TestEquipment.h"
#include "bench/mcu/Tuner.h"
#include "bench/network/NetworkDisplay.h"
#include "bench/network/NetworkLog.h"
#include "bench/remote/WiredRemote.h"
#include "bench/unit/EngineHost.h"
#include "bench/unit/LogFollower.h"
#include "bench/unit/PacketServer.h"
#include "bench/unit/ProgramFiles.h"
#include "bench/unit/ProgramWatch.h"
#include "bench/unit/Programs.h"
#include "bench/unit/PseudoTerminal.h"

#include <set>

namespace Bench
{

/**
    The whole simulated unit: every device and the programs, around an engine that the bench runs, in one new folder that
    is removed with it, or that somebody else runs. Used from one thread; what is on the loop, from any.
*/
class Unit
{
public:
    using Options = UnitOptions;

    explicit Unit(Options optionsToUse);
    ~Unit(); ///< ends everything

    /** Starts the devices and all else that the engine needs. Empty on success, else what failed. */
    std::string start();
    /** Starts the engine as after switching the unit on. */
    std::string startEngine() { return engine().controlEngine("start"); }
    /** Engine, programs and bus end at once and start again; what they have stored is there. Empty on success. */
    std::string cutPower();
    /** After its end, as after a power-off. Empty on success. */
    std::string powerOn();
    void stop();

    /** The engine's process, its bus and its display. */
    EngineHost& engine() const { return *host; }
    const std::string& folder() const { return places.folder; }
    /** "" when nobody says where the engine writes it. */
    const std::string& logFile() const { return places.log; }
    /** Where a plot of the DSP goes to, if nobody says. */
    std::string plotFile() const { return places.plot(); }
    const std::string& resources() const { return places.resources; }
    /** The serial port of the link with the microcontroller. */
    const std::string& mcuPort() const { return places.mcuPort; }
    /** Why nothing of this can ever come into the journal; "" when it can. */
    std::string whyUnseen(const std::string& stream, const std::string& text = {}) const;

    /** USB storage 1 to 8: the mount point is there or not. False outside, and for one that the bench has not made. */
    bool plugUsb(int number);
    bool unplugUsb(int number);
    bool isUsbPlugged(int number) const;
    /**
        Puts an update program on a plugged storage, or one that cannot be started. What it says is in the journal's
        stream "update": "started ARGUMENTS", and "the unit is down" when the engine has ended. Then its power is cut.
    */
    bool putUpdate(int number, bool canStart);

    static constexpr int usbCount = 8;

private:
    const Options options;
    Places places;
    std::set<int> plugged; ///< USB storages

public:
    Journal journal;
    Loop loop; // before what is on it, which goes away in a turn of its own or when the loop has stopped

private:
    PseudoTerminal mcuLine { loop }, remoteLine { loop };
    PacketServer i2c { loop }, gpioLines { loop }, spi { loop };

public:
    Live<Mcu> mcu { loop, journal, mcuLine };
    Live<Panel> panel { loop, journal, mcu };
    Live<PowerSupply> supply { loop, mcu };
    Live<Tuner> tuner { loop, journal, mcu };
    Live<TestEquipment> testEquipment { loop, journal, mcu };
    Live<NetworkNode> networkNode { loop, mcu };
    Live<NetworkDisplay> networkDisplay { loop, journal, mcu, networkNode };
    Live<NetworkLog> networkLog { loop, journal, mcu, networkNode, loop };
    Live<WiredRemote> remote { loop, journal, remoteLine };
    Live<VideoDecoder> videoDecoder { loop, journal, i2c };
    Live<GpioLines> gpio { loop, journal, gpioLines };
    Live<Dsp> dsp { loop, journal, spi };
    Programs programs { loop, journal };
    ProgramFiles programFiles;
    ProgramWatch programWatch { programs, journal };
    LogFollower log { loop, journal };
    LogFollower updateLog { loop, journal, "update" };

private:
    std::unique_ptr<EngineHost> host; // goes before the devices

    std::string startDevices();
    /** Engine and bus, when nothing is left of what ran before. */
    std::string startAll();
    void followUpdate(const std::string& line);
    std::string mountPoint(int number) const;
};

} // namespace Bench
