#include "bench/unit/VirtualDisplay.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace Bench
{

namespace
{

constexpr const char* serverProgram = "/usr/bin/Xvfb";

} // namespace

bool VirtualDisplay::isInstalled()
{
    return std::filesystem::exists(serverProgram);
}

std::string VirtualDisplay::start(const std::string& folder)
{
    constexpr std::chrono::seconds startLimit { 60 };
    int ready[2];
    if (::pipe2(ready, O_CLOEXEC) != 0)
        return std::string("pipe: ") + std::strerror(errno);
    // The server looks for a free number itself and writes it once it takes connections, so that servers that start at
    // the same time do not meet. It does not begin anew whenever the last program has left.
    auto error = server.start(
        { serverProgram,
          { "-displayfd", std::to_string(ready[1]), "-screen", "0", "800x480x24", "-nolisten", "tcp", "-noreset" },
          {},
          folder + "/display.log",
          { ready[1] } });
    ::close(ready[1]);
    if (error.empty())
    {
        const auto number = readLine(ready[0], startLimit);
        if (number.empty())
            error = "Xvfb did not start, see " + folder + "/display.log";
        else
            displayName = ":" + number;
    }
    ::close(ready[0]);
    return error;
}

void VirtualDisplay::stop()
{
    constexpr std::chrono::seconds stopLimit { 2 };
    displayName.clear();
    server.end(stopLimit);
}

} // namespace Bench
