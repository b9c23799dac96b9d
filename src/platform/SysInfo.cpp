#include "platform/SysInfo.h"

#include "platform/Logger.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Platform
{

namespace
{

using Values = std::array<std::atomic<juce::int32>, sysInfoSize>;
static_assert(std::atomic<juce::int32>::is_always_lock_free, "other processes read the same words");
static_assert(sizeof(Values) == sysInfoSize * sizeof(juce::int32));

constexpr const char* defaultName = "/headunit-sysinfo";
constexpr const char* nameVariable = "HEADUNIT_SYSINFO";
constexpr mode_t accessMode = 0666; // narrowed by the umask

std::string objectName()
{
    const auto* given = std::getenv(nameVariable);
    const std::string name = given == nullptr || *given == '\0' ? defaultName : given;
    return name.front() == '/' ? name : "/" + name;
}

/** Null when the object cannot be had; errno says why. */
Values* mapObject(const std::string& name)
{
    const int descriptor = shm_open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, accessMode);
    if (descriptor < 0)
        return nullptr;
    struct stat status
    {
    };
    const bool sized = fstat(descriptor, &status) == 0 && (status.st_size >= static_cast<off_t>(sizeof(Values)) ||
                                                           ftruncate(descriptor, sizeof(Values)) == 0);
    void* memory =
        sized ? mmap(nullptr, sizeof(Values), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0) : MAP_FAILED;
    const int reason = errno;
    close(descriptor);
    errno = reason;
    return memory == MAP_FAILED ? nullptr : static_cast<Values*>(memory);
}

class Table
{
public:
    void set(int index, juce::int32 value)
    {
        access(index, [value](std::atomic<juce::int32>& entry) { return entry.exchange(value); });
    }

    juce::int32 get(int index)
    {
        return access(index, [](const std::atomic<juce::int32>& entry) { return entry.load(); });
    }

    void release()
    {
        const std::unique_lock lock(mutex);
        if (mapped != nullptr && mapped != &ownValues)
            munmap(mapped, sizeof(Values));
        mapped = nullptr;
    }

private:
    template <typename Operation>
    juce::int32 access(int index, Operation operation)
    {
        {
            const std::shared_lock lock(mutex);
            if (mapped != nullptr)
                return operation((*mapped)[static_cast<std::size_t>(index)]);
        }
        const std::unique_lock lock(mutex);
        if (mapped == nullptr)
            map();
        return operation((*mapped)[static_cast<std::size_t>(index)]);
    }

    void map()
    {
        const auto name = objectName();
        mapped = mapObject(name);
        if (mapped != nullptr)
            return;
        Logger::getInstance()->logError("platform/SysInfo", __LINE__, "SysInfo",
                                        "%s: %s; other processes see no values", name.c_str(), std::strerror(errno));
        mapped = &ownValues;
    }

    std::shared_mutex mutex;
    Values* mapped = nullptr;
    Values ownValues {};
};

Table& table()
{
    static Table instance;
    return instance;
}

bool isValid(int index)
{
    return index >= 0 && index < sysInfoSize;
}

} // namespace

void VX_SetSysInfo(int index, juce::int32 value)
{
    if (isValid(index))
        table().set(index, value);
    else
        Logger::getInstance()->logError("platform/SysInfo", __LINE__, "SysInfo", "there is no index %d", index);
}

juce::int32 VX_GetSysInfo(int index)
{
    return isValid(index) ? table().get(index) : 0;
}

void VX_ReleaseSysInfo()
{
    table().release();
}

} // namespace Platform
