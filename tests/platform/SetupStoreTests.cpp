#include "platform/Configuration.h"
#include "platform/SetupEnvironment.h"
#include "platform/SetupStore.h"
#include "support/ScratchUnit.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <thread>

using namespace Platform;

namespace
{

class SetupStoreTest : public testing::Test
{
protected:
    SetupStoreTest() { ScratchUnit::emptySettings("7 = 1\n279 = 6\n284 = \"Zone 2\"\n"); }
    ~SetupStoreTest() override { ScratchUnit::emptySettings(); }

    static juce::File settings() { return juce::File(AppConfig::getSystemFilePath()).getChildFile("settings"); }
    static juce::File data() { return settings().getChildFile("data.mdb"); }
};

} // namespace

TEST_F(SetupStoreTest, AnEmptyStoreBeginsWithTheFactoryValuesAndKeepsWhatIsWrittenOverARestart)
{
    ASSERT_TRUE(VX_LoadDataFromSystemFile());
    EXPECT_EQ(VX_GetSetupValueInt(279), 6);
    EXPECT_EQ(VX_GetSetupValueString(284), "Zone 2");

    const juce::String german = juce::CharPointer_UTF8("Vorschiff \xc3\xb6");
    ASSERT_TRUE(VX_SetSetupValueInt(279, -2147483647));
    ASSERT_TRUE(VX_SetSetupValueString(284, german));
    VX_ReleaseSetupInfo();

    ASSERT_TRUE(VX_LoadDataFromSystemFile());
    EXPECT_EQ(VX_GetSetupValueInt(279), -2147483647);
    EXPECT_EQ(VX_GetSetupValueString(284), german);
    EXPECT_EQ(VX_GetSetupValueInt(7), 1);
}

TEST_F(SetupStoreTest, ASettingHasOneType)
{
    EXPECT_FALSE(VX_IsSetupValueString(279));
    EXPECT_EQ(VX_GetSetupValueString(279), "");
    EXPECT_TRUE(VX_IsSetupValueString(284));
    EXPECT_EQ(VX_GetSetupValueInt(284), 0);
    VX_SetSetupValueString(279, "");
    EXPECT_TRUE(VX_IsSetupValueString(279));
    EXPECT_EQ(VX_GetSetupValueInt(4000), 0);
    EXPECT_EQ(VX_GetSetupValueString(-1), "");
}

TEST_F(SetupStoreTest, ADamagedValueReadsAsUnknown)
{
    ASSERT_TRUE(VX_LoadDataFromSystemFile());
    for (const std::string damaged : { "", "i", "i12", "i12345", "x1234", "s\xff\xfe", "s\xc3" })
    {
        ASSERT_EQ(SetupEnvironment::get().write(279, damaged), 0);
        EXPECT_EQ(VX_GetSetupValueInt(279), 0) << damaged;
        EXPECT_EQ(VX_GetSetupValueString(279), "") << damaged;
        EXPECT_FALSE(VX_IsSetupValueString(279)) << damaged;
    }
}

/**
    The reset of a running unit: it goes on with the factory values, what it writes until it is switched off is lost,
    and its next start begins with the factory values as they are then.
*/
TEST_F(SetupStoreTest, AFactoryResetHoldsNowAndAfterTheNextStart)
{
    VX_SetSetupValueInt(279, 9);
    VX_SetSetupValueInt(5000, 9);
    ASSERT_TRUE(VX_LoadDataFromFactoryFile());
    EXPECT_FALSE(settings().exists());
    EXPECT_EQ(VX_GetSetupValueInt(279), 6);
    EXPECT_EQ(VX_GetSetupValueInt(5000), 0);
    EXPECT_TRUE(VX_SetSetupValueInt(279, 3));
    EXPECT_EQ(VX_GetSetupValueInt(279), 3);

    VX_ReleaseSetupInfo();
    ASSERT_TRUE(VX_LoadDataFromSystemFile());
    EXPECT_EQ(VX_GetSetupValueInt(279), 6);
    EXPECT_EQ(VX_GetSetupValueInt(5000), 0);
}

TEST_F(SetupStoreTest, AFactoryResetWithoutFactoryValuesChangesNothing)
{
    VX_SetSetupValueInt(279, 9);
    const juce::File factoryFile(AppConfig::getResourcePath() + "factory-settings.toml");
    for (const auto* content : { "279 = \n", "# nothing\n", "x = 1\n279 = 1.5\n-1 = 3\n7 = 2147483648\n" })
    {
        factoryFile.replaceWithText(content);
        EXPECT_FALSE(VX_LoadDataFromFactoryFile()) << content;
    }
    factoryFile.deleteFile();
    EXPECT_FALSE(VX_LoadDataFromFactoryFile());
    VX_ReleaseSetupInfo();
    EXPECT_EQ(VX_GetSetupValueInt(279), 9);
}

/** Power goes while another process writes: what it was told is written must be there. */
TEST_F(SetupStoreTest, AWriteIsThereAfterAKill)
{
    const int child = fork();
    if (child == 0)
    {
        VX_SetSetupValueInt(279, 11);
        kill(getpid(), SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(VX_GetSetupValueInt(279), 11);
    EXPECT_TRUE(VX_SetSetupValueInt(279, 12)); // the lock of the dead does not hold us up
}

TEST_F(SetupStoreTest, ADamagedStoreIsSetAsideAndFactoryValuesReplaceIt)
{
    const auto replaceByNoise = [](const juce::File& file)
    {
        juce::MemoryBlock noise(static_cast<std::size_t>(file.getSize()));
        noise.fillWith(0x5a);
        file.replaceWithData(noise.getData(), noise.getSize());
    };
    const auto cut = [](const juce::File& file)
    {
        // The pages with the values are gone, the two that tell of them are not.
        juce::MemoryBlock whole;
        file.loadFileAsData(whole);
        constexpr std::size_t twoPages = 2 * 4096;
        file.replaceWithData(whole.getData(), twoPages);
    };
    for (const std::function<void(const juce::File&)>& damage : { std::function(replaceByNoise), std::function(cut) })
    {
        ASSERT_TRUE(VX_SetSetupValueInt(279, 9));
        VX_ReleaseSetupInfo();
        damage(data());
        EXPECT_TRUE(VX_LoadDataFromSystemFile());
        EXPECT_EQ(VX_GetSetupValueInt(279), 6);
        EXPECT_TRUE(settings().getSiblingFile("settings.damaged").isDirectory());
    }
}

TEST_F(SetupStoreTest, AStoreThatCannotBeHadAnswersDefaultsAndRefusesWrites)
{
    settings().deleteRecursively();
    settings().replaceWithText("not a folder");
    EXPECT_FALSE(VX_LoadDataFromSystemFile());
    EXPECT_EQ(VX_GetSetupValueInt(279), 0);
    EXPECT_FALSE(VX_SetSetupValueInt(279, 1));
    settings().deleteFile();
    EXPECT_TRUE(VX_LoadDataFromSystemFile());
    EXPECT_TRUE(VX_SetSetupValueInt(279, 1));
}

TEST_F(SetupStoreTest, TheStoreGrowsPastItsFirstMapAndRefusesATextThatIsTooLong)
{
    constexpr int longest = 64 * 1024;
    const auto text = juce::String::repeatedString("x", longest);
    for (int index = 10000; index < 10040; ++index) // some 2.5 MiB, where the map begins with 1
        ASSERT_TRUE(VX_SetSetupValueString(index, text)) << index;
    EXPECT_EQ(VX_GetSetupValueString(10000).length(), longest);
    EXPECT_FALSE(VX_SetSetupValueString(10000, text + "x"));
    VX_ReleaseSetupInfo();
    EXPECT_EQ(VX_GetSetupValueString(10039).length(), longest);
}

/** Every thread of the engine reads settings while others write, and the map grows under them. */
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
