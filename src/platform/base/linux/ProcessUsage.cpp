#include "platform/base/ProcessUsage.h"

#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace Platform
{

namespace
{

namespace fs = std::filesystem;

constexpr std::int64_t microsecondsPerMillisecond = 1000, millisecondsPerSecond = 1000;

std::optional<std::int64_t> numberIn(const fs::path& file)
{
    std::int64_t number = 0;
    return std::ifstream(file) >> number ? std::optional(number) : std::nullopt;
}

/** Its place in the tree of control groups, "" when it has none but the root. */
std::string groupOf(const fs::path& process)
{
    std::ifstream file(process / "cgroup");
    constexpr std::string_view versionTwo = "0::/";
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(versionTwo))
            return line.substr(versionTwo.size());
    return {};
}

std::optional<ProcessUsage> ofGroup(const fs::path& group)
{
    const auto memory = numberIn(group / "memory.current");
    if (!memory)
        return {}; // Nobody accounts for it here.
    ProcessUsage usage { .memoryBytes = *memory, .memoryLimitBytes = numberIn(group / "memory.max") };
    std::ifstream file(group / "cpu.stat");
    std::string name;
    for (std::int64_t value = 0; file >> name >> value;)
        if (name == "usage_usec")
            usage.cpuMs = value / microsecondsPerMillisecond;
    return usage;
}

std::optional<ProcessUsage> ofProcess(const fs::path& process)
{
    std::int64_t all = 0, resident = 0;
    std::string line;
    std::getline(std::ifstream(process / "stat"), line);
    const auto nameEnd = line.rfind(") "); // "PID (NAME) STATE ...", where NAME may hold anything.
    if (!(std::ifstream(process / "statm") >> all >> resident) || nameEnd == std::string::npos)
        return {};
    std::istringstream fields(line.substr(nameEnd + 2));
    std::string skipped;
    constexpr int beforeUserTime = 11; // STATE to the page faults
    for (int i = 0; i < beforeUserTime; ++i)
        fields >> skipped;
    std::int64_t user = 0, system = 0;
    fields >> user >> system;
    return ProcessUsage { .memoryBytes = resident * sysconf(_SC_PAGESIZE),
                          .cpuMs = (user + system) * millisecondsPerSecond / sysconf(_SC_CLK_TCK) };
}

} // namespace

std::optional<ProcessUsage> ProcessUsage::of(int pid, const fs::path& root)
{
    const auto process = root / "proc" / std::to_string(pid);
    const auto group = groupOf(process);
    if (!group.empty() && group != groupOf(root / "proc/self"))
        if (const auto usage = ofGroup(root / "sys/fs/cgroup" / group))
            return usage;
    return ofProcess(process);
}

} // namespace Platform
