#include "platform/SysInfo.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Platform;

/** A source program sees what the engine wrote, and the engine what the program wrote, without any message. */
TEST(SysInfo, AValueIsSeenByAnotherProcess)
{
    VX_ReleaseSysInfo();
    VX_SetSysInfo(0, 1);
    VX_SetSysInfo(127, -5);
    const int child = fork();
    if (child == 0)
    {
        VX_ReleaseSysInfo(); // maps it anew, by name
        const bool seen = VX_GetSysInfo(0) == 1 && VX_GetSysInfo(127) == -5;
        VX_SetSysInfo(36, 77);
        _exit(seen ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(VX_GetSysInfo(36), 77);
    VX_ReleaseSysInfo();
    EXPECT_EQ(VX_GetSysInfo(36), 77) << "the table outlives its mapping";
}

TEST(SysInfo, AnIndexOutsideTheTableTouchesNothing)
{
    for (const int index : { -1, sysInfoSize, 1 << 30 })
    {
        VX_SetSysInfo(index, 9);
        EXPECT_EQ(VX_GetSysInfo(index), 0) << index;
    }
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
