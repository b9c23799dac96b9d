#include "platform/base/System.h"
#include "platform/config/Configuration.h"

#include <csignal>
#include <ctime>
#include <gtest/gtest.h>
#include <iostream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace Platform;

TEST(System, ADriverSettingIsADecimalLineBelowItsKey)
{
    const juce::File root(Configuration::get().registryPath);
    const auto file = root.getChildFile("Drivers/AppleAccessory/HardwareType");
    for (const auto value : { 1u, 0xFFFFFFFFu })
    {
        ASSERT_TRUE(writeRegistryValue("\\Drivers\\AppleAccessory\\", "HardwareType", value).wasOk());
        EXPECT_EQ(file.loadFileAsString(), juce::String(value) + "\n");
    }
    EXPECT_EQ(file.getParentDirectory().getNumberOfChildFiles(juce::File::findFiles), 1);

    // A file where a folder should be, and a folder where the file should be: the two steps that can fail.
    EXPECT_EQ(writeRegistryValue("\\Drivers\\AppleAccessory\\HardwareType\\", "x", 1).getErrorMessage(),
              "RegOpenKeyEx  failure " + juce::String(ENOTDIR));
    root.getChildFile("Drivers/Taken/x").createDirectory();
    EXPECT_EQ(writeRegistryValue("\\Drivers\\Taken\\", "x", 1).getErrorMessage(),
              "111  RegOpenKeyEx  failure " + juce::String(EISDIR));
}

TEST(System, TheStandardOffsetHoldsInSummerAndWinter)
{
    struct Zone
    {
        const char* name;
        long offset;
    };
    // Both halves of the earth, half hours, no daylight saving, and a zone that calls its summer time the standard.
    constexpr Zone zones[] = { { "Europe/Berlin", 3600 },      { "America/New_York", -18000 },
                               { "Australia/Sydney", 36000 },  { "Australia/Lord_Howe", 37800 },
                               { "America/St_Johns", -12600 }, { "Asia/Tokyo", 32400 },
                               { "Europe/Dublin", 0 },         { "UTC", 0 } };
    const juce::String before = getenv("TZ");
    for (const auto& zone : zones)
    {
        setenv("TZ", zone.name, 1);
        disableDaylightSaving();
        for (const std::time_t time : { 1704067200, 1719792000 }) // 2024-01-01 and 2024-07-01
        {
            std::tm local {};
            localtime_r(&time, &local);
            EXPECT_EQ(local.tm_gmtoff, zone.offset) << zone.name;
            EXPECT_EQ(local.tm_isdst, 0) << zone.name;
        }
    }
    if (before.isEmpty())
        unsetenv("TZ");
    else
        setenv("TZ", before.toRawUTF8(), 1);
    tzset();
}

#ifndef HEADUNIT_SANITIZED

namespace
{

void prepareToFault()
{
    installExceptionHook();
    std::atexit([] { std::cerr << "exit handlers ran" << std::endl; });
}

int readFrom(const volatile int* address)
{
    return *address;
}

/** Recurses until the stack is used up; the depth is more than any stack holds. */
int overflowStack(const volatile int* previous, long depth)
{
    const volatile int page[1024] = { *previous + 1 };
    return depth == 0 ? 0 : overflowStack(page, depth - 1) + page[0];
}

void waitForever()
{
    for (;;)
        pause();
}

void throwInAThread()
{
    std::thread([] { throw std::runtime_error("no such device"); }).join();
}

void faultInAThread()
{
    std::thread([] { raise(SIGFPE); }).join();
}

} // namespace

TEST(SystemFaultsDeathTest, EveryFaultTakesTheNormalExitWithStatusZero)
{
    const auto zero = testing::ExitedWithCode(0);
    EXPECT_EXIT((prepareToFault(), readFrom(nullptr)), zero, "SIGSEGV.*\n.*exit handlers ran");
    EXPECT_EXIT((prepareToFault(), std::abort()), zero, "SIGABRT.*\n.*exit handlers ran");
    EXPECT_EXIT((prepareToFault(), faultInAThread()), zero, "SIGFPE.*\n.*exit handlers ran");
    EXPECT_EXIT((prepareToFault(), throwInAThread()), zero, "unhandled exception: no such device\n.*exit handlers ran");
    EXPECT_EXIT(
        {
            prepareToFault();
            const volatile int first = 0;
            overflowStack(&first, 1'000'000'000);
        },
        zero, "SIGSEGV.*\n.*exit handlers ran");
}

TEST(SystemFaultsDeathTest, AnExitThatFaultsOrHangsIsCutShort)
{
    const auto zero = testing::ExitedWithCode(0);
    EXPECT_EXIT((prepareToFault(), std::atexit([] { raise(SIGBUS); }), raise(SIGILL)), zero, "SIGILL");
    EXPECT_EXIT((prepareToFault(), std::atexit(waitForever), raise(SIGILL)), zero, "SIGILL");
}

#endif
