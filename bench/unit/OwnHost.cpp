#include "bench/unit/OwnHost.h"

#include "bench/unit/ProgramFiles.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sys/mman.h>
#include <unistd.h>

namespace Bench
{

namespace fs = std::filesystem;

OwnHost::OwnHost(Journal& journalToUse, UnitOptions optionsToUse, std::function<void()> unitRestartsCall)
    : EngineHost(journalToUse)
    , options(std::move(optionsToUse))
    , unitRestarts(std::move(unitRestartsCall))
{
}

OwnHost::~OwnHost()
{
    goOn(); // before its process is killed
}

std::string OwnHost::findPlaces(Places& places)
{
    auto error = makeFolder();
    places = unit;
    return error;
}

std::string OwnHost::makeFolder()
{
    std::error_code error;
    auto pattern = (fs::temp_directory_path(error) / "headunit-XXXXXX").string();
    if (error || ::mkdtemp(pattern.data()) == nullptr)
        return pattern + ": " + (error ? error.message() : std::strerror(errno));
    unit = Places::in(pattern, options.resources);
    for (const auto* folder : { "media", "system", "registry", "application", "profile" })
        fs::create_directory(pattern + "/" + folder, error);
    // As on a unit that has been in use: one fresh from the factory is silent.
    std::ofstream volumes(pattern + "/system/VX_Volume.ini");
    volumes << "[Volume]\nSrc = 20\nZone2 = 20\nNavi = 20\nPhone = 20\n";
    if (!volumes.flush())
        return pattern + "/system/VX_Volume.ini: cannot be written";
    return linkPrograms(options.standIn, pattern + "/programs");
}

std::string OwnHost::start()
{
    auto error = findDisplay();
    return error.empty() ? bus.start(unit.folder) : error;
}

std::string OwnHost::findDisplay()
{
    if (options.display != Display::own)
    {
        displayName = displayOfEnvironment(options.display);
        return {};
    }
    auto error = virtualDisplay.start(unit.folder);
    displayName = virtualDisplay.name();
    return error;
}

std::string OwnHost::setSystemDebug(bool on)
{
    systemDebug = on;
    return {};
}

std::string OwnHost::controlEngine(const std::string& what)
{
    if (what == "kill")
        engine.kill();
    else if (what != "start")
        engine.stop();
    return what == "start" || what == "restart" ? startEngine() : "";
}

bool OwnHost::cutPower(bool down)
{
    journal.add("power", "cut");
    if (!down)
        engine.cut();
    return true;
}

std::string OwnHost::controlBus(const std::string& what)
{
    if (what != "start")
        bus.stop();
    return what != "stop" ? bus.start(unit.folder) : "";
}

std::string OwnHost::writeConfiguration() const
{
    std::ofstream file(configurationFile(), std::ios::trunc);
    const auto inside = [&](const char* folder) { return quoted(unit.folder + "/" + folder + "/"); };
    file << "[unit]\n"
         << "system_path = " << inside("system") << "\n"
         << "resource_path = " << quoted(unit.resources + "/") << "\n"
         << "application_path = " << inside("application") << "\n"
         << "profile_path = " << quoted(unit.resources + "/profile/") << "\n"
         << "registry_path = " << inside("registry") << "\n"
         << "system_debug = " << (systemDebug ? "true" : "false") << "\n"
         << "media_root = " << quoted(unit.media + "/") << "\n"
         << "display = " << (displayName.empty() ? "\"none\"" : "\"auto\"") << "\n"
         << "camera_hold_file = " << quoted(unit.folder + "/camera-hold") << "\n"
         << "log_library = " << quoted(options.logLibrary) << "\n\n"
         << "[mcu]\nport = " << quoted(unit.mcuPort) << "\n\n"
         << "[wired_remote]\nport = " << quoted(unit.remotePort) << "\n\n"
         << "[bus]\nspi2 = " << quoted("socket:" + unit.spi2) << "\n"
         << "i2c1 = " << quoted("socket:" + unit.i2c1) << "\n"
         << "gpio = " << quoted("socket:" + unit.gpio) << "\n\n"
         << "[ipc]\naddress = " << quoted(bus.address()) << "\n\n"
         << programTables(unit.folder + "/programs");
    return file.flush() ? "" : configurationFile() + ": cannot be written";
}

std::string OwnHost::startEngine()
{
    if (engine.isRunning())
        return "the engine runs already";
    if (auto error = writeConfiguration(); !error.empty())
        return error;
    unitRestarts();
    std::vector<std::string> arguments { "--config", configurationFile() };
    ++runs;
    if (!options.recording.empty())
        arguments.insert(arguments.end(),
                         { "--record", options.recording + (runs > 1 ? "-" + std::to_string(runs) : "") });
    return engine.start({ options.engine,
                          arguments,
                          { { "DBUS_SESSION_BUS_ADDRESS", bus.address() },
                            // Without a name the toolkit would try the machine's first display.
                            { "DISPLAY", displayName.empty() ? "none" : displayName },
                            { "HEADUNIT_SYSINFO", sysInfoName() },
                            { "HEADUNIT_LOG_FILE", unit.log },
                            { "HEADUNIT_LOG_CONSOLE", "off" },
                            { "HEADUNIT_BENCH_CONTROL", unit.control } },
                          unit.folder + "/engine.out" });
}

void OwnHost::stop()
{
    engine.endPrograms();
    bus.stop();
    virtualDisplay.stop();
}

void OwnHost::cleanUp()
{
    if (unit.folder.empty())
        return;
    ::shm_unlink(sysInfoName().c_str());
    std::error_code ignored;
    if (!options.keepFolder)
        fs::remove_all(unit.folder, ignored);
    unit = {};
}

std::string OwnHost::sysInfoName() const
{
    return "/" + fs::path(unit.folder).filename().string() + "-sysinfo";
}

} // namespace Bench
