#include "platform/base/Descriptor.h"
#include "platform/base/System.h"
#include "platform/config/Configuration.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>

namespace Platform
{

namespace
{

class LockedFile : public InstanceLock
{
public:
    explicit LockedFile(Descriptor locked)
        : file(std::move(locked))
    {
    }

private:
    const Descriptor file;
};

} // namespace

std::unique_ptr<InstanceLock> InstanceLock::take()
{
    const std::filesystem::path folder(Configuration::get().registryPath.toStdString());
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    const auto name = folder / "engine.lock";
    constexpr mode_t ownerOnly = 0600;
    // Programs that outlive the engine must not hold its lock: close-on-exec.
    Descriptor file(::open(name.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, ownerOnly));
    if (!file)
        std::fprintf(stderr, "headunit-engine: %s: %s; going on without the lock\n", name.c_str(),
                     std::strerror(errno));
    else if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return nullptr;
    return std::make_unique<LockedFile>(std::move(file));
}

} // namespace Platform
