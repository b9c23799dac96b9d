#include "bench/Bus.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <unistd.h>

namespace Bench
{

namespace
{

constexpr int startLimitMs = 60000;
constexpr std::chrono::milliseconds stopLimit { 2000 };

std::string findDaemon()
{
    for (const auto* path : { "/usr/bin/dbus-daemon", "/usr/local/bin/dbus-daemon", "/bin/dbus-daemon" })
        if (std::filesystem::exists(path))
            return path;
    return {};
}

} // namespace

std::string Bus::start(const std::string& folder)
{
    const auto program = findDaemon();
    if (program.empty())
        return "dbus-daemon is not installed";
    const auto configuration = folder + "/bus.conf";
    std::ofstream(configuration)
        << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
           " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig>\n"
           "  <type>session</type>\n"
           "  <listen>unix:path="
        << folder
        << "/bus</listen>\n"
           "  <auth>EXTERNAL</auth>\n"
           "  <policy context=\"default\">\n"
           "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
           "    <allow eavesdrop=\"true\"/>\n"
           "    <allow own=\"*\"/>\n"
           "  </policy>\n"
           "</busconfig>\n";
    int ready[2];
    if (::pipe2(ready, O_CLOEXEC) != 0)
        return std::string("pipe: ") + std::strerror(errno);
    auto error = daemon.start({ program,
                                { "--config-file=" + configuration, "--nofork", "--nopidfile",
                                  "--print-address=" + std::to_string(ready[1]) },
                                {},
                                folder + "/bus.log",
                                { ready[1] } });
    ::close(ready[1]);
    if (error.empty())
    {
        // The daemon writes its address once it listens.
        pollfd wait { ready[0], POLLIN, 0 };
        std::array<char, 512> text {};
        const auto count = ::poll(&wait, 1, startLimitMs) == 1 ? ::read(ready[0], text.data(), text.size()) : 0;
        if (count > 0)
            busAddress.assign(text.data(), static_cast<std::size_t>(count));
        else
            error = "dbus-daemon did not start, see " + folder + "/bus.log";
        busAddress.erase(busAddress.find_last_not_of('\n') + 1);
    }
    ::close(ready[0]);
    return error;
}

void Bus::stop()
{
    daemon.end(stopLimit);
}

} // namespace Bench
