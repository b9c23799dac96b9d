#include "diagnostics/ServiceManager.h"

#include <cstdint>
#include <systemd/sd-daemon.h>

namespace Diagnostics::ServiceManager
{

void reportAlive(const char* status)
{
    sd_notifyf(0, "READY=1\nWATCHDOG=1\nSTATUS=%s", status);
}

void reportStopping()
{
    sd_notify(0, "STOPPING=1");
}

std::optional<std::chrono::milliseconds> watchdogLimit()
{
    std::uint64_t microseconds = 0;
    if (sd_watchdog_enabled(0, &microseconds) <= 0)
        return {};
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::microseconds(microseconds));
}

void feedWatchdog()
{
    sd_notify(0, "WATCHDOG=1");
}

} // namespace Diagnostics::ServiceManager
