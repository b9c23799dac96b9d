#include "bench/unit/Unit.h"

#include "bench/unit/AttachedHost.h"
#include "bench/unit/OwnHost.h"

#include <filesystem>
#include <fstream>

namespace Bench
{

namespace fs = std::filesystem;

namespace
{

/** The last words of an update program. */
constexpr const char* unitIsDown = "the unit is down";

/** `unitRestarts` is called between one engine and the next, on any thread. */
std::unique_ptr<EngineHost> makeHost(Journal& journal, const UnitOptions& options, std::function<void()> unitRestarts)
{
    if (options.attached)
        return std::make_unique<AttachedHost>(journal, options, std::move(unitRestarts));
    return std::make_unique<OwnHost>(journal, options, std::move(unitRestarts));
}

} // namespace

UnitOptions UnitOptions::besideThisProgram()
{
    std::error_code ignored;
    const auto folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    const auto around = folder.parent_path();
    return { (folder / "headunit-engine").string(), (folder / "headunit-bench-program").string(),
             (around / "lib" / "libVX_Logcat.so").string(), (around / "resources").string() };
}

Unit::Unit(Options optionsToUse)
    : options(std::move(optionsToUse))
    , host(makeHost(journal, options,
                    [this]
                    {
                        mcu->unitRestarts();
                        panel->unitRestarts();
                    }))
{
    mcu->setPowerCut(
        [this]
        {
            if (host->cutPower())
                programs.kill();
        });
    updateLog.heard = [this](const std::string& line) { followUpdate(line); };
}

Unit::~Unit()
{
    stop();
}

std::string Unit::start()
{
    if (auto error = host->findPlaces(places); !error.empty())
        return error;
    programFiles.take(options.standIn, places.programs);
    for (const auto& [appType, file] : options.programs)
        if (auto error = programFiles.replace(appType, file); !error.empty())
            return "--program " + file + ": " + error;
    if (auto error = startDevices(); !error.empty())
        return error;
    if (auto error = programs.start(places.control); !error.empty())
        return error;
    if (!places.log.empty())
        if (auto error = log.start(places.log, options.attached.has_value()); !error.empty())
            return error;
    if (auto error = updateLog.start(places.updateLog()); !error.empty())
        return error;
    if (auto error = host->start(); !error.empty())
        return error;
    programWatch.start(host->busAddress(), programFiles.foreign());
    return {};
}

std::string Unit::startDevices()
{
    const Loop::Turn turn(loop);
    loop.start();
    mcuLine.setLink(places.mcuPort);
    remoteLine.setLink(places.remotePort);
    i2c.setPath(places.i2c1);
    gpioLines.setPath(places.gpio);
    spi.setPath(places.spi2);
    for (const auto& error : { mcuLine.open(), remote->plug(), i2c.open(), gpioLines.open(), dsp->start() })
        if (!error.empty())
            return error;
    return {};
}

std::string Unit::cutPower()
{
    if (auto error = host->controlEngine("kill"); !error.empty())
        return error;
    return startAll();
}

std::string Unit::powerOn()
{
    return host->isRunning() ? "the unit is on already" : startAll();
}

std::string Unit::startAll()
{
    programs.kill();
    host->endOrphans();
    auto error = host->controlBus("restart");
    return error.empty() ? startEngine() : error;
}

void Unit::stop()
{
    host->endEngine();
    programs.stop();
    programWatch.stop();
    host->stop();
    log.stop();
    updateLog.stop();
    loop.stop();
    for (const auto number : std::set(plugged))
        unplugUsb(number);
    programFiles.restore();
    {
        const Loop::Turn turn(loop);
        for (auto* line : { &mcuLine, &remoteLine })
            line->close();
        for (auto* server : { &i2c, &gpioLines, &spi })
            server->close();
    }
    host->cleanUp();
    places = {};
}

std::string Unit::whyUnseen(const std::string& stream, const std::string& text) const
{
    if (places.log.empty() && (stream == "log" || stream == "settled"))
        return "nobody says where the engine's log is: --engine-log does";
    if (!host->tellsExitStatus() && stream == "engine" && (text.starts_with("exit") || text.starts_with("signal")))
        return "somebody else runs the engine: of its end only 'engine ended' is seen";
    return {};
}

std::string Unit::mountPoint(int number) const
{
    return places.media + "/Hard Disk" + (number > 1 ? std::to_string(number) : "");
}

bool Unit::plugUsb(int number)
{
    std::error_code error;
    if (number < 1 || number > usbCount || (!plugged.contains(number) && isUsbPlugged(number)) ||
        (fs::create_directories(mountPoint(number), error), error))
        return false;
    const bool isNew = plugged.insert(number).second;
    for (const auto* piece : { "01 Harbour Lights.mp3", "02 Following Sea.mp3", "03 Anchor Watch.mp3" })
        if (!std::ofstream(mountPoint(number) + "/" + piece))
            return false;
    if (isNew)
        journal.add("usb", std::to_string(number) + " plugged");
    return true;
}

bool Unit::unplugUsb(int number)
{
    std::error_code error;
    if (number < 1 || number > usbCount || (isUsbPlugged(number) && !plugged.contains(number)) ||
        (fs::remove_all(mountPoint(number), error), error))
        return false;
    if (plugged.erase(number) > 0)
        journal.add("usb", std::to_string(number) + " unplugged");
    return true;
}

bool Unit::isUsbPlugged(int number) const
{
    std::error_code ignored;
    return fs::is_directory(mountPoint(number), ignored);
}

/** When the software has been replaced, the unit is to start anew: nothing is left of what ran. */
void Unit::followUpdate(const std::string& line)
{
    if (line.starts_with("started"))
        host->expectEnd();
    else if (line == unitIsDown && host->cutPower(true))
        programs.kill();
}

bool Unit::putUpdate(int number, bool canStart)
{
    constexpr auto readable = fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read;
    constexpr auto executable = readable | fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
    const auto bin = fs::path(mountPoint(number)) / "SW_Update/Bin";
    const auto program = bin / "UpdateUtility.exe";
    std::error_code error;
    if (!plugged.contains(number) || (fs::create_directories(bin, error), error))
        return false;
    std::ofstream script(program);
    script << "#!/bin/sh\n"
              "exec >> '"
           << places.updateLog()
           << "'\n"
              "echo \"started $*\"\n"
              "flock '"
           << places.engineLock << "' true && echo '" << unitIsDown << "'\n";
    script.close();
    fs::permissions(program, (canStart ? executable : readable) | fs::perms::owner_write, error);
    if (!script || error)
        return false;
    journal.add("usb", std::to_string(number) + (canStart ? " has an update" : " has an update that does not start"));
    return true;
}

} // namespace Bench
