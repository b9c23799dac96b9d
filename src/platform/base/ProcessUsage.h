#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace Platform
{

/** What a program's process needs. */
struct ProcessUsage
{
    std::int64_t memoryBytes = 0;
    std::optional<std::int64_t> memoryLimitBytes {}; ///< at which the system ends it; none without one
    std::int64_t cpuMs = 0;                          ///< processor time since its start

    /**
        Of all processes of its control group (version 2) when it is in another one than this process is, else of itself
        alone. None when there is no such process. `root` is where /proc and /sys are. Any thread; not recorded, as nothing
        is decided by it.
    */
    static std::optional<ProcessUsage> of(int pid, const std::filesystem::path& root = "/");
};

} // namespace Platform
