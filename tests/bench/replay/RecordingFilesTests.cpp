#include "bench/replay/RecordingFiles.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Platform;
using Replay::RecordingFiles;
namespace fs = std::filesystem;

namespace
{

class RecordingFilesTest : public testing::Test
{
protected:
    RecordingFilesTest()
    {
        auto pattern = (fs::temp_directory_path() / "recording-XXXXXX").string();
        folder = ::mkdtemp(pattern.data());
        write(0, 5,
              { { Step::thread, 0, 0, Fields(1, "message").bytes() },
                { Step::begin, 0, 0, Fields("1.2.3", 1000).bytes() },
                { Step::begun, 1, 10, Fields(1, 2).bytes() } });
    }
    ~RecordingFilesTest() override { fs::remove_all(folder); }

    std::string path(int number) const
    {
        return (folder / "r").string() + (number > 0 ? "." + std::to_string(number) : "");
    }

    void write(int number, std::uint64_t identity, const std::vector<Record>& records) const
    {
        auto bytes = encodeHeader({ number, identity });
        for (const auto& record : records)
            encodeRecord(bytes, record);
        std::ofstream(path(number), std::ios::binary) << bytes;
    }

    fs::path folder;
    const std::vector<Record> one { { Step::begun, 1, 20, Fields(3, 4).bytes() } };
};

} // namespace

TEST_F(RecordingFilesTest, FilesThatFollowEachOtherAreOneRecording)
{
    write(1, 5, one);
    write(2, 5, { one.front(), { Step::end, 0, 21, {} } });
    RecordingFiles files;
    ASSERT_EQ(files.load(path(0)), "");
    EXPECT_EQ(files.records.size(), 5U);
    EXPECT_EQ(files.gap, 5U);
    EXPECT_THAT(files.notes, testing::IsEmpty());
    EXPECT_EQ(files.engine, "1.2.3");
    EXPECT_EQ(files.threadName(files.records[3]), "message");

    // The engine was killed between two records: that is no gap, but it is said.
    fs::remove(path(2));
    RecordingFiles killed;
    ASSERT_EQ(killed.load(path(0)), "");
    EXPECT_EQ(killed.gap, 3U);
    EXPECT_THAT(killed.notes, testing::ElementsAre(testing::HasSubstr("before the engine has ended")));
}

TEST_F(RecordingFilesTest, WhatIsMissingIsSaidAndNothingBehindItIsFollowed)
{
    const auto load = [&](const char* reason)
    {
        RecordingFiles files;
        EXPECT_EQ(files.load(path(0)), "");
        EXPECT_EQ(files.gap, 2U) << reason;
        EXPECT_THAT(files.notes, testing::Contains(testing::HasSubstr(reason)));
        return files.records.size();
    };
    write(3, 5, one);
    EXPECT_EQ(load("removed to make room"), 3U);
    fs::remove(path(3));
    write(1, 6, one);
    EXPECT_EQ(load("another recording"), 2U);
    write(1, 5, { { Step::lost, 0, 20, Fields(12).bytes() }, one.front() });
    EXPECT_EQ(load("12 steps"), 4U);
    fs::remove(path(1));
    fs::resize_file(path(0), fs::file_size(path(0)) - 1);
    RecordingFiles files;
    EXPECT_EQ(files.load(path(0)), "");
    EXPECT_EQ(files.gap, 1U);
    EXPECT_THAT(files.notes, testing::ElementsAre(testing::HasSubstr("cut or damaged")));
}

TEST_F(RecordingFilesTest, WithoutItsBeginningNothingIsRead)
{
    RecordingFiles files;
    EXPECT_THAT(files.load(path(7)), testing::HasSubstr("No such file"));
    write(7, 5, one);
    EXPECT_THAT(files.load(path(7)), testing::HasSubstr("another place"));
    write(0, 5, one);
    EXPECT_THAT(files.load(path(0)), testing::HasSubstr("its beginning is missing"));
}
