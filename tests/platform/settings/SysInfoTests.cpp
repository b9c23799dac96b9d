#include "platform/settings/SysInfo.h"

#include "platform/settings/SysInfoItems.h"
#include "support/LogCapture.h"

#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Platform;

/** A source program sees what the engine wrote, and the engine what the program wrote, without any message. */
TEST(SysInfo, AValueIsSeenByAnotherProcess)
{
    VX_ReleaseSysInfo();
    VX_SetSysInfo(sysInfoBluetooth, 1);
    VX_SetSysInfo(127, -5);
    const int child = fork();
    if (child == 0)
    {
        VX_ReleaseSysInfo(); // maps it anew, by name
        const bool seen = VX_GetSysInfo(sysInfoBluetooth) == 1 && VX_GetSysInfo(127) == -5;
        VX_SetSysInfo(sysInfoVoltageShown, 77);
        _exit(seen ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(VX_GetSysInfo(sysInfoVoltageShown), 77);
    VX_ReleaseSysInfo();
    EXPECT_EQ(VX_GetSysInfo(sysInfoVoltageShown), 77) << "the table outlives its mapping";
}

TEST(SysInfo, AnIndexOutsideTheTableTouchesNothing)
{
    for (const int index : { -1, sysInfoSize, 1 << 30 })
    {
        VX_SetSysInfo(index, 9);
        EXPECT_EQ(VX_GetSysInfo(index), 0) << index;
    }
}

/** Another process made the object first, or cuts it short while the unit runs: neither ends it or stays. */
TEST(SysInfo, ATableThatIsNotOursOrIsCutShortIsPutRight)
{
    const std::string name = getenv("HEADUNIT_SYSINFO");
    const auto open = [&] { return shm_open(name.c_str(), O_RDWR | O_CREAT, 0666); };
    const auto change = [&](auto how)
    {
        VX_ReleaseSysInfo();
        const int object = open();
        how(object);
        close(object);
    };
    struct stat status = {};
    const auto mode = [&]
    {
        const int object = open();
        fstat(object, &status);
        close(object);
        return status.st_mode & 07777;
    };
    LogCapture log;
    const std::string replaced = name + " was not the unit's own and is replaced";

    VX_SetSysInfo(3, 8);
    change([](int object) { EXPECT_EQ(fchmod(object, 0666), 0); });
    EXPECT_EQ(VX_GetSysInfo(3), 0) << "what anybody may have written is not taken over";
    EXPECT_EQ(mode(), 0644u);
    if (geteuid() == 0)
    {
        change([](int object) { EXPECT_EQ(fchown(object, 65534, 65534), 0); });
        VX_SetSysInfo(3, 8);
        mode();
        EXPECT_EQ(status.st_uid, 0u);
        EXPECT_EQ(log.count(replaced), 2);
    }
    for (const off_t size : { 0, 100, 8192 })
    {
        change([=](int object) { EXPECT_EQ(ftruncate(object, size), 0); });
        VX_SetSysInfo(127, 5);
        EXPECT_EQ(VX_GetSysInfo(127), 5);
        mode();
        EXPECT_EQ(status.st_size, 512) << size;
    }

    VX_SetSysInfo(3, 8);
    LogCapture::take();
    for (int round = 0; round < 2; ++round)
    {
        const int object = open();
        EXPECT_EQ(ftruncate(object, 0), 0);
        EXPECT_EQ(VX_GetSysInfo(3), 8);
        VX_SetSysInfo(4, 9);
        std::array<juce::int32, sysInfoSize> seen {};
        EXPECT_EQ(pread(object, seen.data(), sizeof seen, 0), static_cast<ssize_t>(sizeof seen));
        EXPECT_EQ(seen[3], 8);
        EXPECT_EQ(seen[4], 9);
        close(object);
    }
    EXPECT_EQ(LogCapture::take().size(), 1u);
}

TEST(SysInfo, WithoutSharedMemoryTheValuesStayInTheProcess)
{
    const std::string name = getenv("HEADUNIT_SYSINFO");
    VX_ReleaseSysInfo();
    setenv("HEADUNIT_SYSINFO", "/no/such/object", 1);
    VX_SetSysInfo(3, 8);
    EXPECT_EQ(VX_GetSysInfo(3), 8);
    VX_ReleaseSysInfo();
    setenv("HEADUNIT_SYSINFO", name.c_str(), 1);
}
