#include "platform/config/CVXIniReadWrite.h"

#include "support/ErrorLog.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Platform;

namespace
{

class IniTest : public testing::Test
{
protected:
    IniTest() { folder.createDirectory(); }
    ~IniTest() override { folder.deleteRecursively(); }

    /** What "Src" reads after the file has this content, -1 for the default. */
    int read(const std::string& content)
    {
        file.replaceWithData(content.data(), content.size());
        return reread();
    }

    int reread()
    {
        ini.setFileName(file);
        return ini.getInt("Volume", "Src", -1);
    }

    int countFiles() const { return folder.getNumberOfChildFiles(juce::File::findFilesAndDirectories); }

    const juce::File folder = juce::File::createTempFile("ini");
    const juce::File file = folder.getChildFile("VX_Volume.ini");
    CVXIniReadWrite ini;
    ErrorLog log;
};

} // namespace

TEST_F(IniTest, ReadsWholeNumbersAndNothingElse)
{
    const std::pair<std::string, int> cases[] {
        { "[Volume]\nSrc = 20\n", 20 },
        { "[Volume]\r\nSrc=20\r\n", 20 },
        { "[ volume ]\n \t src\t =  -7 \t", -7 },
        { "\xEF\xBB\xBF; volumes\n[Other]\nSrc=1\n[Volume]\nSrc=2147483647", 2147483647 },
        { "[Volume]\nSrc=5\nSrc=6\n", 5 },
        { "[Volume\n[Volume]\nnonsense\n=3\nSrc=8\n[", 8 },
        { "", -1 },
        { "[Volume]\nSrc=\n", -1 },
        { "[Volume]\nSrc = 20abc\n", -1 },
        { "[Volume]\nSrc = 0x14\n", -1 },
        { "[Volume]\nSrc = 1.5\n", -1 },
        { "[Volume]\nSrc = 99999999999\n", -1 },
        { "[Volume]\nSr", -1 },
        { "Src = 20\n", -1 },
        { "[Volume]\nSrc = <<<END\n20\nEND\n", -1 },
        { std::string("[Volume]\n\0Src = 20\n", 19), -1 },
        { "[Volume]\nSrc = 20\n" + std::string(10 << 20, '\xA5'), -1 },
    };
    for (const auto& [content, expected] : cases)
        EXPECT_EQ(read(content), expected) << content.substr(0, 80);
    EXPECT_EQ(log.take().size(), 1u) << "only the 10 MiB are worth a line";
}

/** A volume is changed; whatever else is in the file stays, and so does its order, also the second time. */
TEST_F(IniTest, UpdateKeepsWhatIsForeign)
{
    const auto contentWith = [](const std::string& src)
    {
        return "; by hand\n\n\n[Zone]\nname = \xE4 <<<x\nname = b\nempty = \n\n\n[Volume]\n\n; the radio\nSrc = " +
               src + "\nNavi = 3\n\n\n; the end\n[Alpha]\nx = 1\n";
    };
    read(contentWith("20"));
    for (const int value : { -5, 50 })
    {
        ini.setInt("Volume", "Src", value);
        EXPECT_TRUE(ini.update());
        juce::MemoryBlock bytes;
        file.loadFileAsData(bytes);
        EXPECT_EQ(std::string(static_cast<const char*>(bytes.getData()), bytes.getSize()),
                  contentWith(std::to_string(value)));
        EXPECT_EQ(reread(), value);
    }
    EXPECT_EQ(countFiles(), 1);

    ini.setInt("Volume", "Phone", 9);
    EXPECT_TRUE(ini.update());
    file.deleteFile();
    EXPECT_EQ(reread(), -1);
    ini.setInt("Volume", "Src", 4);
    EXPECT_TRUE(ini.update());
    EXPECT_EQ(file.loadFileAsString(), "[Volume]\nSrc = 4\n") << "nothing of the file that was bound before";
    EXPECT_TRUE(log.take().empty());
}

TEST_F(IniTest, AFailedUpdateLeavesTheFile)
{
    const std::string content = "[Volume]\nSrc = 20\n";
    read(content);
    ini.setInt("Volume", "Src", 21);

    const auto temporary = folder.getChildFile("VX_Volume.ini.new");
    temporary.createDirectory();
    EXPECT_FALSE(ini.update());
    EXPECT_EQ(log.take().size(), 1u);
    EXPECT_EQ(file.loadFileAsString(), juce::String(content));
    temporary.deleteFile();
    EXPECT_TRUE(ini.update());
    EXPECT_EQ(reread(), 21);

    // Neither a folder nor a pipe in its place is waited for or taken for a file.
    file.deleteFile();
    mkfifo(file.getFullPathName().toRawUTF8(), 0600);
    EXPECT_EQ(reread(), -1);
    EXPECT_EQ(log.take().size(), 1u);
    file.deleteFile();
    file.getChildFile("x").create();
    EXPECT_EQ(reread(), -1);
    EXPECT_FALSE(ini.update());
    EXPECT_EQ(log.take().size(), 2u);
    EXPECT_EQ(countFiles(), 1) << "no second file stays behind";

    folder.deleteRecursively();
    EXPECT_FALSE(ini.update());
    EXPECT_FALSE(CVXIniReadWrite().update());
    EXPECT_EQ(log.take().size(), 2u);
}
