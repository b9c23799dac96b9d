#include "bench/unit/Unit.h"

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

namespace
{

/** A text as TOML writes it. */
std::string quoted(const std::string& text)
{
    std::string result = "\"";
    for (const char c : text)
    {
        if (c == '"' || c == '\\')
            result += '\\';
        result += c;
    }
    return result + "\"";
}

} // namespace

Unit::Options Unit::Options::besideThisProgram()
{
    std::error_code ignored;
    const auto folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    const auto around = folder.parent_path();
    return { (folder / "headunit-engine").string(), (folder / "headunit-bench-program").string(),
             (around / "lib" / "libVX_Logcat.so").string(), (around / "resources").string() };
}

Unit::Unit(Options optionsToUse)
    : options(std::move(optionsToUse))
{
}

Unit::~Unit()
{
    stop();
}

std::string Unit::start()
{
    if (auto error = makeFolder(); !error.empty())
        return error;
    for (const auto& error : { linkPrograms(), findDisplay(), startDevices(), programs.start(path + "/control"),
                               log.start(logFile()), updateLog.start(path + "/update.log"), bus.start(path) })
        if (!error.empty())
            return error;
    return {};
}

std::string Unit::startDevices()
{
    const Loop::Turn turn(loop);
    loop.start();
    remoteLine.setLink(remotePath());
    i2c.setPath(path + "/i2c");
    gpioLines.setPath(path + "/gpio");
    spi.setPath(path + "/spi2");
    for (const auto& error : { mcuLine.open(), remote->plug(), i2c.open(), gpioLines.open(), dsp->start() })
        if (!error.empty())
            return error;
    return {};
}

std::string Unit::makeFolder()
{
    std::error_code error;
    auto pattern = (fs::temp_directory_path(error) / "headunit-XXXXXX").string();
    if (error || ::mkdtemp(pattern.data()) == nullptr)
        return pattern + ": " + (error ? error.message() : std::strerror(errno));
    path = pattern;
    for (const auto* folder : { "programs", "media", "system", "registry", "application", "profile" })
        fs::create_directory(path + "/" + folder, error);
    // As on a unit that has been in use: one fresh from the factory is silent.
    std::ofstream volumes(path + "/system/VX_Volume.ini");
    volumes << "[Volume]\nSrc = 20\nZone2 = 20\nNavi = 20\nPhone = 20\n";
    return volumes.flush() ? "" : path + "/system/VX_Volume.ini: cannot be written";
}

std::string Unit::findDisplay()
{
    displayName.clear();
    if (options.display == Display::own)
    {
        auto error = virtualDisplay.start(path);
        displayName = virtualDisplay.name();
        return error;
    }
    const char* given = options.display == Display::ofEnvironment ? std::getenv("DISPLAY") : nullptr;
    if (given != nullptr)
        displayName = given;
    return {};
}

std::string Unit::linkPrograms() const
{
    for (const auto appType : allApps())
        if (auto error = installProgram(appType, {}); !error.empty())
            return error;
    return {};
}

std::string Unit::programFile(int appType) const
{
    return path + "/programs/" + Pubhead::appTypeName(appType);
}

std::string Unit::installProgram(int appType, std::chrono::milliseconds delay) const
{
    removeProgram(appType);
    const auto file = programFile(appType);
    const auto late = path + "/programs/late/" + Pubhead::appTypeName(appType);
    const bool isLate = delay.count() > 0;
    std::error_code error;
    fs::create_directories(fs::path(late).parent_path(), error);
    fs::remove(late, error);
    // The name that a program is started by tells it which one it is.
    if (fs::create_symlink(options.program, isLate ? late : file, error); error)
        return options.program + ": " + error.message();
    if (!isLate)
        return {};
    const auto seconds = std::to_string(std::chrono::duration<double>(delay).count());
    std::ofstream script(file);
    script << "#!/bin/sh\nsleep " << seconds << "\nexec '" << late << "' \"$@\"\n";
    if (!script.flush() || (fs::permissions(file, fs::perms::owner_all, error), error))
        return file + ": cannot be written";
    return {};
}

void Unit::removeProgram(int appType) const
{
    std::error_code isMissing;
    fs::remove(programFile(appType), isMissing);
}

std::string Unit::writeConfiguration() const
{
    const auto name = path + "/engine.toml";
    std::ofstream file(name, std::ios::trunc);
    const auto inside = [&](const char* folder) { return quoted(path + "/" + folder + "/"); };
    file << "[unit]\n"
         << "system_path = " << inside("system") << "\n"
         << "resource_path = " << quoted(options.resources + "/") << "\n"
         << "application_path = " << inside("application") << "\n"
         << "profile_path = " << quoted(options.resources + "/profile/") << "\n"
         << "registry_path = " << inside("registry") << "\n"
         << "system_debug = " << (systemDebug ? "true" : "false") << "\n"
         << "media_root = " << inside("media") << "\n"
         << "display = " << (displayName.empty() ? "\"none\"" : "\"auto\"") << "\n"
         << "camera_hold_file = " << quoted(path + "/camera-hold") << "\n"
         << "log_library = " << quoted(options.logLibrary) << "\n\n"
         << "[mcu]\nport = " << quoted(mcuPort()) << "\n\n"
         << "[wired_remote]\nport = " << quoted(remotePath()) << "\n\n"
         << "[bus]\nspi2 = " << quoted("socket:" + path + "/spi2") << "\n"
         << "i2c1 = " << quoted("socket:" + path + "/i2c") << "\n"
         << "gpio = " << quoted("socket:" + path + "/gpio") << "\n\n"
         << "[ipc]\naddress = " << quoted(bus.address()) << "\n";
    for (const bool background : { false, true })
    {
        file << (background ? "\n[background_programs]\n" : "\n[programs]\n");
        for (const auto& info : allPages())
            if (!background || info.inBackground)
                file << Pubhead::pageName(info.page) << " = "
                     << quoted(path + "/programs/" + Pubhead::appTypeName(info.appType)) << "\n";
    }
    return file.flush() ? "" : name + ": cannot be written";
}

std::string Unit::startEngine()
{
    if (engine.isRunning())
        return "the engine runs already";
    if (auto error = writeConfiguration(); !error.empty())
        return error;
    mcu->unitRestarts();
    panel->unitRestarts();
    std::vector<std::string> arguments { "--config", path + "/engine.toml" };
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
                            { "HEADUNIT_LOG_FILE", logFile() },
                            { "HEADUNIT_LOG_CONSOLE", "off" },
                            { "HEADUNIT_BENCH_CONTROL", path + "/control" } },
                          path + "/engine.out" });
}

std::string Unit::cutPower()
{
    engine.kill();
    engine.endPrograms();
    bus.stop();
    auto error = bus.start(path);
    return error.empty() ? startEngine() : error;
}

void Unit::stop()
{
    engine.stop();
    programs.stop();
    engine.endPrograms();
    bus.stop();
    virtualDisplay.stop();
    log.stop();
    updateLog.stop();
    loop.stop();
    if (path.empty())
        return;
    ::shm_unlink(sysInfoName().c_str());
    std::error_code ignored;
    if (!options.keepFolder)
        fs::remove_all(path, ignored);
    path.clear();
}

std::string Unit::sysInfoName() const
{
    return "/" + fs::path(path).filename().string() + "-sysinfo";
}

std::string Unit::mountPoint(int number) const
{
    return path + "/media/Hard Disk" + (number > 1 ? std::to_string(number) : "");
}

std::string Unit::remotePath() const
{
    return path + "/wired-remote";
}

bool Unit::plugUsb(int number)
{
    std::error_code error;
    if (number < 1 || number > usbCount || (fs::create_directories(mountPoint(number), error), error))
        return false;
    for (const auto* piece : { "01 Harbour Lights.mp3", "02 Following Sea.mp3", "03 Anchor Watch.mp3" })
        if (!std::ofstream(mountPoint(number) + "/" + piece))
            return false;
    journal.add("usb", std::to_string(number) + " plugged");
    return true;
}

bool Unit::unplugUsb(int number)
{
    std::error_code error;
    if (number < 1 || number > usbCount || (fs::remove_all(mountPoint(number), error), error))
        return false;
    journal.add("usb", std::to_string(number) + " unplugged");
    return true;
}

bool Unit::isUsbPlugged(int number) const
{
    std::error_code ignored;
    return fs::is_directory(mountPoint(number), ignored);
}

bool Unit::putUpdate(int number, bool canStart)
{
    const auto folder = fs::path(mountPoint(number)) / "SW_Update/Bin";
    const auto program = folder / "UpdateUtility.exe";
    const auto said = "'" + path + "/update.log'";
    std::error_code error;
    if (!isUsbPlugged(number) || (fs::create_directories(folder, error), error))
        return false;
    std::ofstream script(program);
    script << "#!/bin/sh\n"
              "echo \"started $*\" >> "
           << said
           << "\n"
              "while kill -0 $PPID 2>/dev/null; do sleep 0.05; done\n"
              "echo 'the unit is down' >> "
           << said << "\n";
    script.close();
    fs::permissions(program, canStart ? fs::perms::owner_all : fs::perms::owner_read | fs::perms::owner_write, error);
    return script && !error;
}

} // namespace Bench
