#include "check/Surroundings.h"

#include "check/Errors.h"
#include "platform/base/Logger.h"
#include "platform/base/System.h"
#include "platform/channel/Ipc.h"
#include "platform/channel/linux/IpcSdBus.h"
#include "platform/config/Configuration.h"
#include "platform/screen/linux/XDisplay.h"
#include "platform/sound/Sound.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <pwd.h>
#include <system_error>
#include <unistd.h>

namespace Check
{

namespace
{

using Platform::Configuration;

std::string textOf(int error)
{
    return std::generic_category().message(-error);
}

/** Connected, or the negative error. */
int connect(Platform::SdBus& bus, const std::string& address)
{
    constexpr std::uint64_t limitUs = 2'000'000;
    int result = Platform::prepareBus(bus, address);
    if (result >= 0)
        result = sd_bus_set_method_call_timeout(bus.get(), limitUs);
    if (result >= 0)
        result = sd_bus_start(bus.get());
    const char* ownName = nullptr;
    return result >= 0 ? sd_bus_get_unique_name(bus.get(), &ownName) : result;
}

/** "headunit-engine (process 812)" */
std::string holderOf(sd_bus* bus, const std::string& name)
{
    sd_bus_creds* raw = nullptr;
    constexpr std::uint64_t wanted = SD_BUS_CREDS_PID | SD_BUS_CREDS_COMM | SD_BUS_CREDS_AUGMENT;
    if (sd_bus_get_name_creds(bus, name.c_str(), wanted, &raw) < 0)
        return {};
    const std::unique_ptr<sd_bus_creds, decltype(&sd_bus_creds_unref)> holder(raw, sd_bus_creds_unref);
    pid_t process = 0;
    const char* command = nullptr;
    sd_bus_creds_get_pid(raw, &process);
    sd_bus_creds_get_comm(raw, &command);
    return std::string(command != nullptr ? command : "somebody") + " (process " + std::to_string(process) + ")";
}

/** Owned for a moment where it is free: nothing else tells whether it may be. */
Row engineName(sd_bus* bus)
{
    const auto name =
        std::string(Platform::busNamePrefix) + Platform::IPCMsg::MessageHelper::getDestName(Pubhead::AppMain);
    if (const auto holder = holderOf(bus, name); !holder.empty())
        return { "name of the engine", holder.starts_with("headunit-engine") ? State::ok : State::missing,
                 name + " is held by " + holder, holder.starts_with("headunit-engine") ? "" : "end that program" };
    const int result = sd_bus_request_name(bus, name.c_str(), 0);
    if (result < 0)
        return { "name of the engine", State::missing, name + ": " + textOf(result),
                 "let the bus's policy allow this user to own it; the engine runs as headunit" };
    sd_bus_release_name(bus, name.c_str());
    return { "name of the engine", State::ok, name + " is free", {} };
}

/** Whether somebody listens; to connect would start what it starts. */
bool hasListener(const std::string& path)
{
    // Num RefCount Protocol Flags Type St Inode Path; a listener has this flag.
    constexpr unsigned long acceptsConnections = 0x10000;
    std::ifstream table("/proc/net/unix");
    for (std::string line; std::getline(table, line);)
    {
        std::istringstream fields(line);
        std::string number, count, protocol, flags, type, state, inode, place;
        fields >> number >> count >> protocol >> flags >> type >> state >> inode >> place;
        if (place == path && (std::strtoul(flags.c_str(), nullptr, 16) & acceptsConnections) != 0)
            return true;
    }
    return false;
}

Row serviceSocket(const std::string& what, const std::string& unit, const std::string& path)
{
    if (!std::filesystem::is_socket(path) || !hasListener(path))
        return { what, State::missing, path + ": nobody listens there", "systemctl enable --now " + unit };
    if (::access(path.c_str(), W_OK) != 0)
        return { what, State::missing, path + ": this user may not connect",
                 unit + " lets the user of the engine connect, headunit (SocketUser)" };
    return { what, State::ok, path, {} };
}

} // namespace

Rows bus()
{
    const auto address = Platform::IPCMsg::MessageHelper::busAddress();
    if (address.empty())
        return { { "message bus", State::missing, "no address: there is no session bus here",
                   "set ipc.address, on a board unix:path=/run/headunit/bus" } };
    Platform::SdBus connection;
    if (const int result = connect(connection, address); result < 0)
        return { { "message bus", State::missing, address + ": " + textOf(result),
                   "systemctl enable --now headunit-bus.socket (ipc.address)" } };
    return { { "message bus", State::ok, address, {} }, engineName(connection.get()) };
}

Rows sockets()
{
    const auto& configuration = Configuration::get();
    Rows rows;
    if (configuration.launchSocket.isNotEmpty())
        rows.push_back(
            serviceSocket("launch socket", "headunit-launch.socket", configuration.launchSocket.toStdString()));
    if (const auto user = configuration.launchUser.toStdString(); !user.empty() && ::getpwnam(user.c_str()) == nullptr)
        rows.push_back({ "user of the programs", State::missing, user + ": there is no such user",
                         "adduser --system --ingroup headunit " + user });
    if (configuration.updateSocket.isNotEmpty())
        rows.push_back(
            serviceSocket("update socket", "headunit-update.socket", configuration.updateSocket.toStdString()));
    return rows;
}

Rows display()
{
    const auto& configuration = Configuration::get();
    if (configuration.display != "auto")
        return { { "display", State::ok, "none is to be used (unit.display)", {} } };
    const char* name = std::getenv("DISPLAY");
    if (name == nullptr || *name == '\0')
        return { { "display", State::note, "DISPLAY is not set here: nothing is drawn",
                   "set it in /etc/default/headunit, or unit.display = \"none\"" } };
    const auto connection = Platform::XDisplay::connection();
    if (connection == nullptr)
        return { { "display", State::missing, Errors::take(std::string("no X display \"") + name + "\""),
                   "systemctl enable --now headunit-display.service, and let the user headunit draw there" } };
    const auto& screen = connection->getScreen();
    const auto size = std::to_string(screen.width_in_pixels) + "x" + std::to_string(screen.height_in_pixels);
    if (screen.width_in_pixels != configuration.screenWidth || screen.height_in_pixels != configuration.screenHeight)
        return { { "display", State::note, std::string(name) + " has " + size + " pixels",
                   "unit.screen says " + std::to_string(configuration.screenWidth) + "x" +
                       std::to_string(configuration.screenHeight) + ": make both the same" } };
    return { { "display", State::ok, std::string(name) + ", " + size + " pixels", {} } };
}

Rows logLibrary()
{
    const auto name = Configuration::get().logLibrary.toStdString();
    const auto problem = Platform::Logger::getInstance()->getLoadError().toStdString();
    if (problem.empty())
        return { { "log library", State::ok, name, {} } };
    return { { "log library", State::note, problem,
               "install it (unit.log_library), or the log goes to standard error alone" } };
}

Rows soundCard()
{
    juce::String name;
    const auto result = Platform::checkSoundCard(name);
    if (result.wasOk())
        return { { "sound card", State::ok, name.toStdString(), {} } };
    return { { "sound card", State::note, result.getErrorMessage().toStdString(),
               "make the user headunit a member of audio, and name the card in /etc/asound.conf: alerts are silent" } };
}

Rows priority()
{
    if (Platform::requestRealtimePriority())
        return { { "real-time priority", State::ok, "allowed", {} } };
    return { { "real-time priority", State::note, "not allowed: a busy board delays the link",
               "LimitRTPRIO=1 in the service, as headunit-engine.service has it" } };
}

} // namespace Check
