#include "platform/config/Configuration.h"
#include "platform/settings/SetupEnvironment.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"
#include "support/Eventually.h"
#include "support/LogCapture.h"
#include "support/ScratchUnit.h"
#include "support/StoreLock.h"

#include <csignal>
#include <gtest/gtest.h>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>

using namespace Platform;
using namespace std::chrono_literals;

namespace
{

class SetupStoreTest : public testing::Test
{
protected:
    SetupStoreTest() { ScratchUnit::emptySettings("7 = 1\n279 = 6\n284 = \"Zone 2\"\n"); }
    ~SetupStoreTest() override { ScratchUnit::emptySettings(); }

    static juce::File settings() { return juce::File(AppConfig::getSystemFilePath()).getChildFile("settings"); }
    static juce::File data() { return settings().getChildFile("data.mdb"); }
    static bool isStored() { return eventually(VX_WaitForSetupInfo); }

    /** What a process of its own finds, which ends by no signal. The store is closed. */
    template <typename Finding>
    static bool inChild(Finding finding)
    {
        const int child = fork();
        if (child == 0)
            _exit(finding() ? 0 : 1);
        int status = -1;
        waitpid(child, &status, 0);
        return status == 0;
    }
};

} // namespace

TEST_F(SetupStoreTest, AnEmptyStoreBeginsWithTheFactoryValuesAndKeepsWhatIsWrittenOverARestart)
{
    ASSERT_TRUE(VX_LoadDataFromSystemFile());
    EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 6);
    EXPECT_EQ(VX_GetSetupValueString(zone2NameSetting), "Zone 2");

    const juce::String german = juce::CharPointer_UTF8("Vorschiff \xc3\xb6");
    ASSERT_TRUE(VX_SetSetupValueInt(faderSetting, -2147483647));
    ASSERT_TRUE(VX_SetSetupValueString(zone2NameSetting, german));
    VX_ReleaseSetupInfo();

    ASSERT_TRUE(VX_LoadDataFromSystemFile());
    EXPECT_EQ(VX_GetSetupValueInt(faderSetting), -2147483647);
    EXPECT_EQ(VX_GetSetupValueString(zone2NameSetting), german);
    EXPECT_EQ(VX_GetSetupValueInt(bluetoothSetting), 1);
}

TEST_F(SetupStoreTest, ASettingHasOneType)
{
    EXPECT_FALSE(VX_IsSetupValueString(faderSetting));
    EXPECT_EQ(VX_GetSetupValueString(faderSetting), "");
    EXPECT_TRUE(VX_IsSetupValueString(zone2NameSetting));
    EXPECT_EQ(VX_GetSetupValueInt(zone2NameSetting), 0);
    VX_SetSetupValueString(faderSetting, "");
    EXPECT_TRUE(VX_IsSetupValueString(faderSetting));
    for (const int unknown : { 4000, -1 })
    {
        EXPECT_EQ(VX_GetSetupValueInt(unknown), 0);
        EXPECT_EQ(VX_GetSetupValueString(unknown), "");
        EXPECT_FALSE(VX_IsSetupValueKnown(unknown));
    }
    EXPECT_TRUE(VX_IsSetupValueKnown(faderSetting) && VX_IsSetupValueKnown(zone2NameSetting));
}

TEST_F(SetupStoreTest, ADamagedValueReadsAsUnknown)
{
    ASSERT_TRUE(VX_LoadDataFromSystemFile());
    for (const std::string damaged : { "", "i", "i12", "i12345", "x1234", "s\xff\xfe", "s\xc3" })
    {
        VX_WaitForSetupInfo(); // the store's own thread writes no more
        ASSERT_EQ(SetupEnvironment::get().write({ { faderSetting, damaged } }, false), 0);
        EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 0) << damaged;
        EXPECT_EQ(VX_GetSetupValueString(faderSetting), "") << damaged;
        EXPECT_FALSE(VX_IsSetupValueString(faderSetting)) << damaged;
    }
}

/**
    The reset of a running unit: it goes on with the factory values, what it writes until it is switched off is lost,
    and its next start begins with the factory values as they are then.
*/
TEST_F(SetupStoreTest, AFactoryResetHoldsNowAndAfterTheNextStart)
{
    VX_SetSetupValueInt(faderSetting, 9);
    VX_SetSetupValueInt(5000, 9);
    ASSERT_TRUE(VX_LoadDataFromFactoryFile());
    EXPECT_FALSE(settings().exists());
    EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 6);
    EXPECT_EQ(VX_GetSetupValueInt(5000), 0);
    EXPECT_TRUE(VX_SetSetupValueInt(faderSetting, 3));
    EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 3);

    VX_ReleaseSetupInfo();
    ASSERT_TRUE(VX_LoadDataFromSystemFile());
    EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 6);
    EXPECT_EQ(VX_GetSetupValueInt(5000), 0);
}

TEST_F(SetupStoreTest, AFactoryResetWithoutFactoryValuesChangesNothing)
{
    VX_SetSetupValueInt(faderSetting, 9);
    const juce::File factoryFile(AppConfig::getResourcePath() + "factory-settings.toml");
    for (const auto* content : { "279 = \n", "# nothing\n", "x = 1\n279 = 1.5\n-1 = 3\n7 = 2147483648\n" })
    {
        factoryFile.replaceWithText(content);
        EXPECT_FALSE(VX_LoadDataFromFactoryFile()) << content;
    }
    factoryFile.deleteFile();
    EXPECT_FALSE(VX_LoadDataFromFactoryFile());
    VX_ReleaseSetupInfo();
    EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 9);
}

/** Power goes while another process writes: what it was told is stored must be there. */
TEST_F(SetupStoreTest, AStoredValueIsThereAfterAKill)
{
    const int child = fork();
    if (child == 0)
    {
        VX_SetSetupValueInt(faderSetting, 11);
        while (!VX_WaitForSetupInfo())
        {
        }
        kill(getpid(), SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 11);
    VX_SetSetupValueInt(faderSetting, 12);
    EXPECT_TRUE(isStored()) << "the lock of the dead does not hold us up";
}

/**
    A process stands still inside a write to the store, from before the start to after the end: nobody waits for it, and
    whoever asks reads what was set last. When it lets go everything is stored.
*/
TEST_F(SetupStoreTest, AProcessThatHoldsTheStoresLockHoldsUpNobody)
{
    for (const auto* store : { "new", "old" })
    {
        SCOPED_TRACE(store);
        LogCapture log;
        auto holder = std::make_unique<StoreLock>(settings());
        ASSERT_TRUE(VX_LoadDataFromSystemFile());
        EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 6);
        const auto begin = std::chrono::steady_clock::now();
        for (int value = 0; value <= 1000; ++value)
            EXPECT_TRUE(VX_SetSetupValueInt(faderSetting, value));
        EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 1000);
        for (int again = 0; again < 10; ++again)
            EXPECT_FALSE(VX_WaitForSetupInfo());
        VX_ReleaseSetupInfo();
        VX_SetSetupValueInt(bluetoothSetting, 0);
        VX_SetSetupValueInt(bluetoothSetting, 5);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 60s) << "the other process holds the store for good";
        EXPECT_EQ(log.count("settings wait to be stored: another process holds the store, or the disk is slow"), 1);

        holder.reset();
        EXPECT_TRUE(isStored());
        VX_ReleaseSetupInfo();
        EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 1000);
        EXPECT_EQ(VX_GetSetupValueInt(bluetoothSetting), 5);
        VX_SetSetupValueInt(faderSetting, 6);
        VX_ReleaseSetupInfo();
    }
}

/** Programs and tools read while somebody holds the lock, and without a right to write. */
TEST_F(SetupStoreTest, WhoOnlyReadsNeedsNoLockAndWritesNothing)
{
    VX_SetSetupValueInt(faderSetting, 9);
    VX_ReleaseSetupInfo();
    const auto readsInChild = [](int expected)
    {
        return inChild(
            [=]
            {
                VX_ReadSetupInfoOnly();
                return VX_GetSetupValueInt(faderSetting) == expected &&
                       VX_GetSetupValueString(zone2NameSetting) == "Zone 2" && !VX_SetSetupValueInt(faderSetting, 1) &&
                       VX_GetSetupValueInt(faderSetting) == expected;
            });
    };
    {
        const StoreLock holder(settings());
        EXPECT_TRUE(readsInChild(9));
    }
    settings().getChildFile("lock.mdb").deleteFile();
    EXPECT_TRUE(readsInChild(9));
    EXPECT_FALSE(settings().getChildFile("lock.mdb").exists());
    settings().deleteRecursively();
    EXPECT_TRUE(readsInChild(6)) << "the unit begins with the factory values";
    EXPECT_FALSE(settings().exists());
}

/**
    The disk takes not one byte more, and the lock file is gone: its user reads the settings, and changes them for now.
*/
TEST_F(SetupStoreTest, OnAFullDiskTheSettingsAreReadAndKeptInMemory)
{
    VX_SetSetupValueInt(faderSetting, 9);
    VX_ReleaseSetupInfo();
    settings().getChildFile("lock.mdb").deleteFile();
    EXPECT_TRUE(inChild(
        []
        {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit nothing { 0, 0 };
            setrlimit(RLIMIT_FSIZE, &nothing);
            const bool read = VX_LoadDataFromSystemFile() && VX_GetSetupValueInt(faderSetting) == 9;
            VX_SetSetupValueInt(faderSetting, 5);
            const bool kept = VX_GetSetupValueInt(faderSetting) == 5 && !VX_WaitForSetupInfo();
            VX_ReleaseSetupInfo();
            return read && kept;
        }));
    EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 9);
}

/**
    Whatever a failing disk makes of the file: the unit starts, and has either its settings or the factory's. Other
    damages than usual: --gtest_random_seed.
*/
TEST_F(SetupStoreTest, NoDamageOfTheStoreEndsTheProcess)
{
    constexpr std::size_t page = 4096;
    constexpr int rounds = 30;
    std::mt19937 random(static_cast<unsigned>(testing::GTEST_FLAG(random_seed)));
    const auto below = [&](std::size_t limit)
    { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random); };
    int setAside = 0;
    for (int round = 0; round < rounds; ++round)
    {
        ScratchUnit::emptySettings("7 = 1\n279 = 6\n284 = \"Zone 2\"\n");
        for (int index = 500; index < 560; ++index)
            VX_SetSetupValueString(index, juce::String::repeatedString("x", index % 20 == 0 ? 9000 : 60));
        ASSERT_TRUE(isStored());
        for (int change = 0; change < 3; ++change) // so that there are free pages
        {
            VX_SetSetupValueInt(faderSetting, change);
            ASSERT_TRUE(isStored());
        }
        VX_ReleaseSetupInfo();

        juce::MemoryBlock bytes;
        ASSERT_TRUE(data().loadFileAsData(bytes));
        auto* target = static_cast<char*>(bytes.getData());
        const auto at = below(bytes.getSize() / page) * page + below(round % 2 == 0 ? 64 : page - 16);
        switch (round % 5)
        {
        case 0:
            std::memset(target + at / page * page, 0, page);
            break;
        case 1:
            std::memcpy(target + at / page * page, target + below(bytes.getSize() / page) * page, page);
            break;
        case 2:
            bytes.setSize(at);
            break;
        default:
            std::generate_n(target + at, 1 + below(16), [&] { return static_cast<char>(below(256)); });
            break;
        }
        data().replaceWithData(bytes.getData(), bytes.getSize());
        const auto aside = settings().getSiblingFile("settings.damaged");
        aside.deleteRecursively();

        EXPECT_TRUE(VX_LoadDataFromSystemFile()) << round;
        setAside += aside.exists() ? 1 : 0;
        EXPECT_TRUE(!aside.exists() || VX_GetSetupValueInt(faderSetting) == 6) << round;
        for (int index = 0; index < 600; ++index)
            VX_GetSetupValueString(index);
        VX_SetSetupValueInt(faderSetting, 4);
        ASSERT_TRUE(isStored()) << round;
    }
    EXPECT_GT(setAside, rounds / 10);
    EXPECT_LT(setAside, rounds);
}

TEST_F(SetupStoreTest, AStoreThatCannotBeHadIsKeptInMemoryUntilItCan)
{
    settings().deleteRecursively();
    settings().replaceWithText("not a folder");
    EXPECT_FALSE(VX_LoadDataFromSystemFile());
    EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 6);
    EXPECT_TRUE(VX_SetSetupValueInt(faderSetting, 1));
    EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 1);
    settings().deleteFile();
    EXPECT_TRUE(isStored());
    VX_ReleaseSetupInfo();
    EXPECT_TRUE(VX_LoadDataFromSystemFile());
    EXPECT_EQ(VX_GetSetupValueInt(faderSetting), 1);
    EXPECT_EQ(VX_GetSetupValueInt(bluetoothSetting), 1);
}

TEST_F(SetupStoreTest, ATextMayHave64KiBAndNoMore)
{
    constexpr int longest = 64 * 1024;
    const auto text = juce::String::repeatedString("x", longest);
    for (int index = 10000; index < 10040; ++index)
        ASSERT_TRUE(VX_SetSetupValueString(index, text)) << index;
    EXPECT_FALSE(VX_SetSetupValueString(10000, text + "x"));
    VX_ReleaseSetupInfo();
    EXPECT_EQ(VX_GetSetupValueString(10039).length(), longest);
}

/** Every thread of the engine reads settings while others write, and the store is closed under them. */
TEST_F(SetupStoreTest, ReadersSeeWholeValuesWhileWritersWriteAndTheStoreIsReopened)
{
    std::atomic<bool> done { false };
    std::atomic<int> wrong { 0 };
    VX_SetSetupValueString(300, juce::String::repeatedString("a", 2000));
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 3; ++reader)
        readers.emplace_back(
            [&]
            {
                while (!done)
                {
                    const auto text = VX_GetSetupValueString(300);
                    if (text.length() != 2000 || !text.containsOnly(text.substring(0, 1)))
                        ++wrong;
                }
            });
    for (int round = 0; round < 60; ++round)
    {
        ASSERT_TRUE(VX_SetSetupValueString(300, juce::String::repeatedString(round % 2 == 0 ? "b" : "c", 2000)));
        ASSERT_TRUE(VX_SetSetupValueString(10000 + round, juce::String::repeatedString("x", 40000)));
        if (round % 20 == 19)
            VX_ReleaseSetupInfo();
    }
    done = true;
    for (auto& reader : readers)
        reader.join();
    EXPECT_EQ(wrong, 0);
}
