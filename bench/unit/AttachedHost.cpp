#include "bench/unit/AttachedHost.h"

#include "bench/text/Names.h"
#include "bench/unit/Child.h"
#include "platform/base/Descriptor.h"
#include "platform/config/Configuration.h"

#include <filesystem>
#include <fstream>
#include <future>
#include <sys/socket.h>
#include <sys/un.h>

namespace Bench
{

namespace fs = std::filesystem;

namespace
{

/** Whether somebody answers there, another bench for example. */
bool isServed(const std::string& path)
{
    sockaddr_un name {};
    name.sun_family = AF_UNIX;
    path.copy(name.sun_path, sizeof name.sun_path - 1);
    const Platform::Descriptor probe(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    return ::connect(probe.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0;
}

/** The path in "socket:PATH" into `path`. Empty when it is one, and nothing but a socket left over is there. */
std::string findSocket(const char* key, const juce::String& value, std::string& path)
{
    const std::string prefix = "socket:";
    std::error_code none;
    path = value.toStdString();
    if (!path.starts_with(prefix))
        return std::string(key) + " is a real device, " + path + ": the bench serves \"socket:PATH\" alone";
    path.erase(0, prefix.size());
    if (!fs::exists(path, none) || (fs::is_socket(path, none) && !isServed(path)))
        return {};
    return std::string(key) + ": somebody else is at " + path;
}

/** Empty when a link to a pseudo-terminal can be made there, or is left there from a former run. */
std::string findLine(const char* key, const juce::String& value, std::string& path)
{
    std::error_code none;
    path = value.toStdString();
    const auto there = fs::symlink_status(path, none);
    const bool isOurs = fs::is_symlink(there) && fs::read_symlink(path, none).string().starts_with("/dev/pts/");
    if (path.starts_with("/dev/") || (fs::exists(there) && !isOurs))
        return std::string(key) + " is a real device, " + path +
               ": the bench serves a path outside of /dev where nothing is, or a link of its own";
    return {};
}

std::map<int, std::string> programsOf(const Platform::Configuration& configuration)
{
    std::map<int, std::string> programs;
    for (const auto* pages : { &configuration.backgroundPrograms, &configuration.programs })
        for (const auto& [page, path] : *pages)
            if (const auto* info = pageInfo(page); info != nullptr)
                programs[info->appType] = path.toStdString();
    return programs;
}

/** The last line of what a command has said; "" for nothing. */
std::string lastLine(const std::string& file)
{
    std::ifstream said(file);
    std::string last;
    for (std::string line; std::getline(said, line);)
        if (!line.empty())
            last = line;
    return last;
}

} // namespace

AttachedHost::AttachedHost(Journal& journalToUse, const UnitOptions& unitOptions, std::function<void()> unitRestarts)
    : EngineHost(journalToUse)
    , options(*unitOptions.attached)
    , displayName(displayOfEnvironment(unitOptions.display))
    , watch(journalToUse, std::move(unitRestarts))
{
}

AttachedHost::~AttachedHost()
{
    goOn();
}

std::string AttachedHost::findPlaces(Places& places)
{
    if (auto error = Platform::Configuration::load(options.configuration); !error.empty())
        return error;
    const auto& configuration = Platform::Configuration::get();
    for (const auto& error : { findSocket("bus.spi2", configuration.spi2, places.spi2),
                               findSocket("bus.i2c1", configuration.i2c1, places.i2c1),
                               findSocket("bus.gpio", configuration.gpio, places.gpio),
                               findLine("mcu.port", configuration.mcuPort, places.mcuPort),
                               findLine("wired_remote.port", configuration.wiredRemotePort, places.remotePort) })
        if (!error.empty())
            return options.configuration + ": " + error;
    address = configuration.ipcAddress.toStdString();
    if (address.empty())
        return options.configuration + ": ipc.address is wanted: the session bus of the engine is not known here";
    folder = fs::path(places.spi2).parent_path().string();
    places.folder = folder;
    places.control = options.control.empty() ? folder + "/control" : fs::absolute(options.control).string();
    places.media = fs::path(configuration.mediaRoot.toStdString()).parent_path().string();
    places.resources = fs::path(configuration.resourcePath.toStdString()).parent_path().string();
    places.engineLock = configuration.registryPath.toStdString() + "engine.lock";
    places.log = options.log.empty() ? "" : fs::absolute(options.log).string();
    places.programs = programsOf(configuration);
    return makeFolders(places);
}

std::string AttachedHost::makeFolders(const Places& places)
{
    // The engine removes that file, so the folder is one of its own, and its group is the engine's.
    const auto ofEngine = fs::path(Platform::Configuration::get().cameraHoldFile.toStdString()).parent_path();
    if (auto error = made.folder(ofEngine); !error.empty())
        return error;
    for (const auto& each :
         { places.spi2, places.i2c1, places.gpio, places.mcuPort, places.remotePort, places.control })
        if (auto error = made.folder(fs::path(each).parent_path(), ofEngine); !error.empty())
            return error;
    if (auto error = made.folder(places.media, ofEngine); !error.empty())
        return error;
    made.note(places.plot());
    made.note(commandOutput());
    // The programs find the configuration of their unit beside the socket.
    const auto beside = fs::path(places.control).parent_path() / "engine.toml";
    if (auto error = made.link(fs::absolute(options.configuration), beside); !error.empty())
        return error;
    return made.file(places.updateLog());
}

std::string AttachedHost::start()
{
    watch.start(address);
    return {};
}

std::string AttachedHost::controlEngine(const std::string& what)
{
    return what == "kill" ? watch.kill() : run("--engine-command", options.engineCommand, what);
}

std::string AttachedHost::controlBus(const std::string& what)
{
    return run("--bus-command", options.busCommand, what);
}

std::string AttachedHost::setSystemDebug(bool)
{
    return "that is for the engine's configuration to say: " + options.configuration;
}

std::string AttachedHost::run(const std::string& option, const std::string& command, const std::string& what)
{
    constexpr std::chrono::minutes limit { 3 };
    if (command.empty())
        return "somebody else runs it; " + option + " would say how";
    auto line = command;
    for (std::size_t at = 0; (at = line.find("{}", at)) != std::string::npos; at += what.size())
        line.replace(at, 2, what);
    const auto said = commandOutput();
    std::error_code none;
    fs::remove(said, none);
    std::promise<int> ended;
    auto status = ended.get_future();
    Child shell;
    if (auto error = shell.start({ "/bin/sh", { "-c", line }, {}, said, {}, false },
                                 [&ended](int how) { ended.set_value(how); });
        !error.empty())
        return error;
    const bool hasEnded = status.wait_for(limit) == std::future_status::ready;
    shell.end({});
    const auto how = hasEnded ? describeStatus(status.get()) : "does not end";
    const auto last = lastLine(said);
    return how == "exit 0" ? "" : line + ": " + how + (last.empty() ? "" : ": " + last);
}

} // namespace Bench
