#include "bench/unit/Bus.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace Bench
{

namespace
{

constexpr std::chrono::seconds startLimit { 60 };
constexpr std::chrono::milliseconds stopLimit { 2000 };

std::string findDaemon()
{
    for (const auto* path : { "/usr/bin/dbus-daemon", "/usr/local/bin/dbus-daemon", "/bin/dbus-daemon" })
        if (std::filesystem::exists(path))
            return path;
    return {};
}

} // namespace

Bus::Bus(Journal& journalToUse)
    : journal(journalToUse)
{
}

std::string Bus::start(const std::string& folder)
{
    if (daemon.isRunning())
        return "the bus runs already";
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
        busAddress = readLine(ready[0], startLimit);
        if (busAddress.empty())
            error = "dbus-daemon did not start, see " + folder + "/bus.log";
    }
    ::close(ready[0]);
    if (error.empty())
        journal.add("bus", "started");
    return error;
}

void Bus::stop()
{
    if (!daemon.isRunning())
        return;
    daemon.end(stopLimit);
    journal.add("bus", "stopped");
}

} // namespace Bench
