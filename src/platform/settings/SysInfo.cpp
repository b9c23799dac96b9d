#include "platform/settings/SysInfo.h"

#include "platform/base/Descriptor.h"
#include "platform/base/Logger.h"
#include "platform/record/Recorder.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/SysInfo", "SysInfo" };

using Values = std::array<std::atomic<juce::int32>, sysInfoSize>;
static_assert(std::atomic<juce::int32>::is_always_lock_free, "other processes read the same words");
static_assert(sizeof(Values) == sysInfoSize * sizeof(juce::int32));

constexpr const char* defaultName = "/headunit-sysinfo";
constexpr const char* nameVariable = "HEADUNIT_SYSINFO";
constexpr mode_t accessMode = 0644;

std::string objectName()
{
    const auto* given = std::getenv(nameVariable);
    const std::string name = given == nullptr || *given == '\0' ? defaultName : given;
    return name.front() == '/' ? name : "/" + name;
}

/** Where the table is mapped, for the handler of the fault. */
std::atomic<void*> mappedAt { nullptr };
/** The table's pages went away under us; those of the handler stand in their place. */
std::atomic<bool> pagesLost { false };
struct sigaction previousAction;

/** A use of a page that somebody cut off: a page of our own takes its place, and the use is repeated. */
void onBusError(int signal, siginfo_t* info, void* context)
{
    auto* table = static_cast<char*>(mappedAt.load());
    const auto* address = static_cast<char*>(info->si_addr);
    constexpr int kind = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED;
    if (table != nullptr && address >= table && address < table + sizeof(Values) &&
        mmap(table, sizeof(Values), PROT_READ | PROT_WRITE, kind, -1, 0) != MAP_FAILED)
        pagesLost = true;
    else if ((previousAction.sa_flags & SA_SIGINFO) != 0)
        previousAction.sa_sigaction(signal, info, context);
    else
        sigaction(signal, &previousAction, nullptr); // the fault comes again and finds what was there before us
}

void catchBusErrors()
{
    static std::once_flag once;
    std::call_once(once,
                   []
                   {
                       struct sigaction action = {};
                       action.sa_sigaction = onBusError;
                       action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
                       sigaction(SIGBUS, &action, &previousAction);
                   });
}

/** Of another user, or open to others for writing, it is not the unit's own. */
bool isOurs(const Descriptor& object)
{
    struct stat status
    {
    };
    constexpr mode_t permissions = 07777;
    return fstat(object.get(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & permissions & ~accessMode) == 0;
}

/** None when the object cannot be had; errno says why. */
Descriptor openObject(const std::string& name)
{
    Descriptor object { shm_open(name.c_str(), O_RDWR | O_CLOEXEC, 0) };
    if (object && isOurs(object))
        return object;
    if (object || errno != ENOENT)
    {
        if (shm_unlink(name.c_str()) != 0)
            return {};
        logger().error("%s was not the unit's own and is replaced", name.c_str());
    }
    return Descriptor { shm_open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, accessMode) };
}

/** Null when the object cannot be had; errno says why. */
Values* mapObject(const std::string& name)
{
    const auto object = openObject(name);
    if (!object || ftruncate(object.get(), sizeof(Values)) != 0)
        return nullptr;
    // Without a page behind it its first use would be a fault.
    errno = posix_fallocate(object.get(), 0, sizeof(Values));
    if (errno != 0)
        return nullptr;
    void* memory = mmap(nullptr, sizeof(Values), PROT_READ | PROT_WRITE, MAP_SHARED, object.get(), 0);
    return memory == MAP_FAILED ? nullptr : static_cast<Values*>(memory);
}

class Table
{
public:
    void set(int index, juce::int32 value)
    {
        ownValues[static_cast<std::size_t>(index)] = value;
        access(index, [value](std::atomic<juce::int32>& entry) { return entry.exchange(value); });
    }

    juce::int32 get(int index)
    {
        return access(index, [](const std::atomic<juce::int32>& entry) { return entry.load(); });
    }

    void release()
    {
        const std::unique_lock lock(mutex);
        unmap();
        lossMentioned = false;
    }

private:
    template <typename Operation>
    juce::int32 access(int index, Operation operation)
    {
        juce::int32 result = 0;
        // Once more when the table was lost meanwhile; who cuts it short all the time gets no more.
        constexpr int attempts = 2;
        for (int attempt = 0; attempt < attempts; ++attempt)
        {
            ensureMapped();
            const std::shared_lock lock(mutex);
            if (mapped == nullptr)
                continue; // released by another thread
            result = operation((*mapped)[static_cast<std::size_t>(index)]);
            if (!pagesLost)
                break;
        }
        return result;
    }

    void ensureMapped()
    {
        {
            const std::shared_lock lock(mutex);
            if (mapped != nullptr && !pagesLost)
                return;
        }
        const std::unique_lock lock(mutex);
        if (pagesLost.exchange(false))
            replaceLost();
        else if (mapped == nullptr)
            map();
    }

    void map()
    {
        const auto name = objectName();
        catchBusErrors();
        mapped = mapObject(name);
        mappedAt = mapped;
        if (mapped != nullptr)
            return;
        logger().error("%s: %s; other processes see no values", name.c_str(), std::strerror(errno));
        mapped = &ownValues;
    }

    void replaceLost()
    {
        if (!std::exchange(lossMentioned, true))
            logger().error("%s was cut short by another process; the values of this one are put back",
                           objectName().c_str());
        unmap();
        map();
        for (std::size_t index = 0; index < ownValues.size(); ++index)
            if (const auto value = ownValues[index].load(); value != 0)
                (*mapped)[index] = value;
    }

    void unmap()
    {
        mappedAt = nullptr;
        if (mapped != nullptr && mapped != &ownValues)
            munmap(mapped, sizeof(Values));
        mapped = nullptr;
    }

    std::shared_mutex mutex;
    Values* mapped = nullptr;
    Values ownValues {}; ///< what this process set last; the table itself where there is no shared one
    bool lossMentioned = false;
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
    if (!isValid(index))
    {
        logger().error("there is no index %d", index);
        return;
    }
    table().set(index, value);
    recordStep(Step::setSystemValue, index, value, true);
}

juce::int32 VX_GetSysInfo(int index)
{
    return isValid(index) ? recorded(
                                Step::systemValue, [=] { return table().get(index); }, index)
                          : 0;
}

void VX_ReleaseSysInfo()
{
    table().release();
}

} // namespace Platform
