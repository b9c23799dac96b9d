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
#include "bench/unit/Bus.h"
#include "bench/unit/Engine.h"
#include "bench/unit/LogFollower.h"
#include "bench/unit/Programs.h"
#include "bench/unit/PseudoTerminal.h"
#include "bench/unit/VirtualDisplay.h"

namespace Bench
{

/**
    The whole simulated unit: every device, the bus, the engine and its programs, in one new folder that is removed with
    it. Used from one thread; what is on the loop, from any.
*/
class Unit
{
public:
    /** Where programs and bars draw. */
    enum class Display {
        ofEnvironment, ///< where DISPLAY says, else nowhere
        own,           ///< on one that nobody looks at
        none
    };
    struct Options
    {
        std::string engine;  ///< the engine's program
        std::string program; ///< the program that stands for every source program
        std::string logLibrary;
        std::string resources;
        std::string recording {}; ///< of the engine; its second run is recorded as "...-2", and so on; "" for none
        bool keepFolder = false;
        Display display = Display::ofEnvironment;
        /** Everything beside the running program: its folder, ../lib and ../resources. */
        static Options besideThisProgram();
    };

    explicit Unit(Options optionsToUse);
    ~Unit(); ///< ends everything

    /** Makes the folder and starts the devices and the bus. Empty on success, else what failed. */
    std::string start();
    /** Starts the engine as after switching the unit on. */
    std::string startEngine();
    /** Engine, programs and bus end at once and start again; what they have stored is there. Empty on success. */
    std::string cutPower();
    void stop();

    const std::string& folder() const { return path; }
    std::string logFile() const { return path + "/engine.log"; }
    const std::string& resources() const { return options.resources; }

    /** The character device of the link with the microcontroller. */
    const std::string& mcuPort() const { return mcuLine.path(); }

    /** USB storage 1 to 8: the mount point is there or not. False outside. */
    bool plugUsb(int number);
    bool unplugUsb(int number);
    bool isUsbPlugged(int number) const;
    /**
        Puts an update program on a plugged storage, or one that cannot be started. What it says is in the journal's
        stream "update": "started ARGUMENTS", and "the unit is down" when the engine that started it has ended.
    */
    bool putUpdate(int number, bool canStart);
    /** A program takes so long to start from now on. Empty on success. */
    std::string installProgram(int appType, std::chrono::milliseconds delay) const;
    /** Its file is missing from now on; one that runs goes on. */
    void removeProgram(int appType) const;
    /** The engine's traffic dumps; holds from its next start on. */
    void setSystemDebug(bool on) { systemDebug = on; }
    bool isSystemDebug() const { return systemDebug; }
    /** Where programs and bars draw, as DISPLAY says it; "" when they do not. */
    const std::string& display() const { return displayName; }

    static constexpr int usbCount = 8;

private:
    Options options;
    std::string path;
    std::string displayName;
    bool systemDebug = false;
    int runs = 0; ///< of the engine

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
    Live<NetworkDisplay> networkDisplay { loop, journal, mcu };
    Live<NetworkLog> networkLog { loop, journal, mcu, loop };
    Live<WiredRemote> remote { loop, journal, remoteLine };
    Live<VideoDecoder> videoDecoder { loop, journal, i2c };
    Live<GpioLines> gpio { loop, journal, gpioLines };
    Live<Dsp> dsp { loop, journal, spi };
    VirtualDisplay virtualDisplay; // programs and engine end with it
    Bus bus { journal };
    Programs programs { loop, journal };
    LogFollower log { loop, journal };
    LogFollower updateLog { loop, journal, "update" };
    Engine engine { journal };

private:
    std::string makeFolder();
    std::string startDevices();
    std::string findDisplay();
    std::string linkPrograms() const;
    std::string programFile(int appType) const;
    std::string writeConfiguration() const;
    std::string mountPoint(int number) const;
    std::string sysInfoName() const;
    std::string remotePath() const;
};

} // namespace Bench
