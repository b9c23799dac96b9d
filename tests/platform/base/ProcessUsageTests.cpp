#include "platform/base/ProcessUsage.h"

#include "platform/base/Process.h"
#include "support/Eventually.h"

#include <fstream>
#include <gtest/gtest.h>
#include <juce_core/juce_core.h>
#include <unistd.h>

using namespace Platform;

TEST(ProcessUsageTest, SeesWhatARealProcessNeeds)
{
    // A shell that works, beside 32 MiB of text.
    const auto busy =
        createProcess("/bin/sh", { "-c", "x=$(head -c 33554432 /dev/zero | tr '\\0' x); while :; do :; done" });
    ASSERT_NE(busy, nullptr);
    EXPECT_TRUE(eventually(
        [&]
        {
            const auto usage = ProcessUsage::of(busy->getPid());
            return usage && usage->cpuMs > 50 && usage->memoryBytes > 32 * 1024 * 1024;
        }));
    EXPECT_LT(ProcessUsage::of(busy->getPid())->memoryBytes, 1024LL * 1024 * 1024);
    busy->terminate();
    EXPECT_EQ(busy->getExitCode() == 137 || eventually([&] { return busy->getExitCode() == 137; }), true);
    EXPECT_FALSE(ProcessUsage::of(busy->getPid()));
    EXPECT_FALSE(ProcessUsage::of(0));
}

TEST(ProcessUsageTest, CountsTheControlGroupOfAServiceOfItsOwn)
{
    const juce::TemporaryFile place;
    const std::filesystem::path root = place.getFile().getFullPathName().toStdString();
    const auto write = [&](const std::string& name, const std::string& content)
    {
        std::filesystem::create_directories((root / name).parent_path());
        std::ofstream(root / name) << content;
    };
    const std::string service = "system.slice/headunit-launch@1.service";
    write("proc/self/cgroup", "0::/system.slice/headunit-engine.service\n");
    for (const auto* pid : { "7", "8" })
    {
        // A name that looks like the fields behind it; 250 and 50 ticks.
        write(std::string("proc/") + pid + "/stat", "7 (x) S 1 () S 1 7 7 0 -1 0 1 2 3 4 250 50 9 9 20 0\n");
        write(std::string("proc/") + pid + "/statm", "900 10 5 1 0 100 0\n");
    }
    write("proc/7/cgroup", "1:name=systemd:/other\n0::/" + service + "\n");
    write("proc/8/cgroup", "0::/system.slice/headunit-engine.service\n");
    write("sys/fs/cgroup/" + service + "/cpu.stat", "usage_usec 1234567\nuser_usec 1\nsystem_usec 2\n");
    write("sys/fs/cgroup/" + service + "/memory.max", "268435456\n");

    const auto ticks = sysconf(_SC_CLK_TCK);
    const auto pages = sysconf(_SC_PAGESIZE);
    const auto expect = [&](int pid, std::int64_t memory, std::optional<std::int64_t> limit, std::int64_t cpu)
    {
        const auto usage = ProcessUsage::of(pid, root);
        ASSERT_TRUE(usage);
        EXPECT_EQ(usage->memoryBytes, memory);
        EXPECT_EQ(usage->memoryLimitBytes, limit);
        EXPECT_EQ(usage->cpuMs, cpu);
    };
    expect(7, 10 * pages, {}, 300 * 1000 / ticks); // its memory is not accounted for
    write("sys/fs/cgroup/" + service + "/memory.current", "5242880\n");
    expect(7, 5242880, 268435456, 1234);
    write("sys/fs/cgroup/" + service + "/memory.max", "max\n");
    expect(7, 5242880, {}, 1234);
    expect(8, 10 * pages, {}, 300 * 1000 / ticks); // the group is the engine's, too
    std::filesystem::remove_all(root);
}
