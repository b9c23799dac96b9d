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

std::filesystem::path lockFile()
{
    return std::filesystem::path(Configuration::get().registryPath.toStdString()) / "engine.lock";
}

/** Null when another engine holds it. */
std::unique_ptr<InstanceLock> lockOpened(Descriptor file)
{
    if (file && ::flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return nullptr;
    return std::make_unique<LockedFile>(std::move(file));
}

// Programs that outlive the engine must not hold its lock: close-on-exec.
constexpr int lockFlags = O_RDWR | O_NOFOLLOW | O_CLOEXEC;

} // namespace

std::unique_ptr<InstanceLock> InstanceLock::take()
{
    const auto name = lockFile();
    std::error_code error;
    std::filesystem::create_directories(name.parent_path(), error);
    constexpr mode_t ownerOnly = 0600;
    Descriptor file(::open(name.c_str(), lockFlags | O_CREAT, ownerOnly));
    if (!file)
        std::fprintf(stderr, "headunit-engine: %s: %s; going on without the lock\n", name.c_str(),
                     std::strerror(errno));
    return lockOpened(std::move(file));
}

std::unique_ptr<InstanceLock> InstanceLock::takeExisting()
{
    Descriptor file(::open(lockFile().c_str(), lockFlags));
    return file || errno == ENOENT ? lockOpened(std::move(file)) : nullptr;
}

} // namespace Platform
