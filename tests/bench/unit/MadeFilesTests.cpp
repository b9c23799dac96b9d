#include "bench/unit/ProgramFiles.h"
#include "bench/unit/Sharing.h"
#include "platform/base/Pubhead.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace
{

using namespace Bench;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

/** The folder of a unit that is somebody else's. */
class FilesOfOthers : public testing::Test
{
protected:
    FilesOfOthers()
    {
        auto pattern = (fs::temp_directory_path() / "made-XXXXXX").string();
        folder = ::mkdtemp(pattern.data());
    }
    ~FilesOfOthers() override { fs::remove_all(folder); }

    static std::string contentOf(const fs::path& file)
    {
        std::ifstream stream(file);
        return { std::istreambuf_iterator(stream), {} };
    }
    static mode_t modeOf(const fs::path& file)
    {
        struct stat found
        {
        };
        return ::lstat(file.c_str(), &found) == 0 ? found.st_mode & ACCESSPERMS : 0;
    }

    fs::path folder;
};

/** What somebody has put into a folder of the bench, and what was there before, stays; a link is renewed, a file is not. */
TEST_F(FilesOfOthers, OnlyWhatWasMadeIsRemoved)
{
    std::ofstream(folder / "real.toml") << "theirs";
    std::ofstream(folder / "file.toml") << "theirs";
    fs::create_symlink("/nowhere", folder / "link.toml");
    {
        MadeFiles made;
        EXPECT_EQ(made.folder(folder / "run/devices"), "");
        EXPECT_EQ(made.folder(folder / "run/other"), "");
        EXPECT_EQ(made.file(folder / "run/devices/log"), "");
        EXPECT_EQ(made.link(folder / "real.toml", folder / "link.toml"), "");
        EXPECT_NE(made.link(folder / "real.toml", folder / "file.toml"), "");
        EXPECT_NE(made.folder(folder / "real.toml/below"), "");
        made.note(folder / "later");
        EXPECT_EQ(contentOf(folder / "link.toml"), "theirs");
        // Of another user in its group: comes in, reads and writes. Nobody else does.
        EXPECT_EQ(modeOf(folder / "run/devices"), mode_t { 0750 });
        EXPECT_EQ(modeOf(folder / "run/devices/log"), mode_t { 0660 });
        std::ofstream(folder / "run/other/theirs") << "x";
        std::ofstream(folder / "later") << "x";
    }
    EXPECT_EQ(contentOf(folder / "file.toml"), "theirs");
    EXPECT_TRUE(fs::exists(folder / "run/other/theirs"));
    for (const auto* gone : { "run/devices", "later", "link.toml" })
        EXPECT_FALSE(fs::exists(fs::symlink_status(folder / gone))) << gone;
}

/** A program is made missing and late, and is what it was in the end; a real program is left alone. */
TEST_F(FilesOfOthers, ProgramsAreAsBeforeInTheEnd)
{
    const auto radio = folder / "AppRadio", real = folder / "AppEQ";
    ASSERT_EQ(linkPrograms("/bin/echo", folder), "");
    fs::remove(real);
    std::ofstream(real) << "real";
    ProgramFiles files;
    files.take("/bin/false", { { Pubhead::AppRadio, radio }, { Pubhead::AppEQ, real } });
    EXPECT_NE(files.remove(Pubhead::AppEQ), "");
    EXPECT_NE(files.install(Pubhead::AppEQ, 1s), "");
    EXPECT_NE(files.remove(Pubhead::AppUSB), ""); // nobody has said where it is
    EXPECT_EQ(contentOf(real), "real");

    EXPECT_EQ(files.remove(Pubhead::AppRadio), "");
    EXPECT_FALSE(fs::exists(radio));
    EXPECT_EQ(files.install(Pubhead::AppRadio, 10ms), "");
    // It passes on what it is given, and anybody may start it.
    EXPECT_EQ(std::system((radio.string() + " late > " + (folder / "said").string()).c_str()), 0);
    EXPECT_EQ(contentOf(folder / "said"), "late\n");
    EXPECT_EQ(modeOf(radio), mode_t { 0755 });
    files.restore();
    EXPECT_EQ(fs::read_symlink(radio), "/bin/echo");
    EXPECT_FALSE(fs::exists(folder / "late"));
}

/** Another program stays the one that is started when its start is made worse and mended, until the unit is as before. */
TEST_F(FilesOfOthers, AnotherProgramTakesThePlaceOfTheStandIn)
{
    const auto radio = folder / "AppRadio", real = folder / "AppEQ";
    ASSERT_EQ(linkPrograms("/bin/echo", folder), "");
    fs::remove(real);
    std::ofstream(real) << "real";
    ProgramFiles files;
    files.take("/usr/local/bin/echo", { { Pubhead::AppRadio, radio }, { Pubhead::AppEQ, real } });
    EXPECT_EQ(files.foreign(), std::set<int> { Pubhead::AppEQ }) << "the stand-in may be installed elsewhere";
    EXPECT_NE(files.replace(Pubhead::AppEQ, "/bin/true"), "") << "a file that is no link stays";
    EXPECT_EQ(files.replace(Pubhead::AppRadio, "/bin/true"), "");
    EXPECT_EQ(files.foreign().count(Pubhead::AppRadio), 1);

    EXPECT_EQ(files.remove(Pubhead::AppRadio), "");
    EXPECT_FALSE(files.canStart(Pubhead::AppRadio));
    EXPECT_EQ(files.install(Pubhead::AppRadio, {}), "");
    EXPECT_TRUE(files.canStart(Pubhead::AppRadio));
    EXPECT_EQ(fs::read_symlink(radio), "/bin/true");
    files.restore();
    EXPECT_EQ(fs::read_symlink(radio), "/bin/echo");
    EXPECT_EQ(contentOf(real), "real");
}

} // namespace
