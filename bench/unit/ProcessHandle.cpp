#include "bench/unit/ProcessHandle.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Bench
{

int processOf(sd_bus* bus, const std::string& name)
{
    sd_bus_creds* raw = nullptr;
    pid_t found = -1;
    const bool isThere =
        sd_bus_get_name_creds(bus, name.c_str(), SD_BUS_CREDS_PID, &raw) >= 0 && sd_bus_creds_get_pid(raw, &found) >= 0;
    sd_bus_creds_unref(raw);
    return isThere ? found : -1;
}

Platform::Descriptor openProcess(int pid)
{
    return Platform::Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
}

bool isReadable(int descriptor, std::chrono::milliseconds wait)
{
    pollfd each { descriptor, POLLIN, 0 };
    return ::poll(&each, 1, static_cast<int>(wait.count())) > 0;
}

} // namespace Bench
