#include "platform/config/Configuration.h"
#include "platform/record/RecordWriter.h"
#include "support/LogCapture.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <thread>

using namespace Platform;
namespace fs = std::filesystem;

namespace
{

class RecordWriterTest : public testing::Test
{
protected:
    RecordWriterTest()
        : before(Configuration::get())
    {
        auto pattern = (fs::temp_directory_path() / "recording-XXXXXX").string();
        folder = ::mkdtemp(pattern.data());
        fs::create_directories(folder / "system/settings");
        std::ofstream(folder / "system/VX_Volume.ini") << "[Volume]\nSrc = 20\n";
        std::ofstream(folder / "system/settings/lock.mdb") << "not for others";
        std::ofstream(folder / "engine.toml") << "[unit]\n";
        Configuration::get().systemPath = (folder / "system/").string();
        options = { file(0), (folder / "engine.toml").string(), "1.2.3", RecordWriter::leastLimit };
    }
    ~RecordWriterTest() override
    {
        Recorder::setActive(nullptr);
        Configuration::get() = before;
        fs::remove_all(folder);
    }

    std::string file(int number) const
    {
        return (folder / "recording").string() + (number > 0 ? "." + std::to_string(number) : "");
    }

    std::unique_ptr<RecordWriter> open()
    {
        std::string error;
        auto writer = RecordWriter::open(options, error);
        EXPECT_EQ(writer == nullptr, !error.empty());
        lastError = error;
        return writer;
    }

    static std::string bytesOf(const std::string& path)
    {
        std::ifstream stream(path, std::ios::binary);
        return { std::istreambuf_iterator(stream), {} };
    }

    static std::vector<Record> recordsOf(const std::string& path)
    {
        const auto bytes = bytesOf(path);
        std::string error;
        EXPECT_TRUE(decodeHeader(bytes, error).has_value()) << path << ": " << error;
        std::vector<Record> records;
        RecordCutter cutter(std::string_view(bytes).substr(std::min(bytes.size(), headerSize)));
        while (auto record = cutter.next())
            records.push_back(std::move(*record));
        EXPECT_EQ(cutter.left(), 0U);
        return records;
    }

    static std::vector<std::string> textsOf(const std::string& path)
    {
        std::vector<std::string> texts;
        for (const auto& record : recordsOf(path))
            texts.push_back(describe(record));
        return texts;
    }

    fs::path folder;
    RecordWriter::Options options;
    std::string lastError;

private:
    const Configuration before;
};

} // namespace

TEST_F(RecordWriterTest, ARecordingBeginsWithWhatTheStartDependsOnAndHasTheStepsOfAllThreadsInTheirOrder)
{
    auto writer = open();
    ASSERT_NE(writer, nullptr) << lastError;
    Recorder::setActive(writer.get());
    std::thread other(
        []
        {
            ::pthread_setname_np(::pthread_self(), "other");
            recordStep(Step::portBytes, "port", "abc");
        });
    other.join();
    EXPECT_TRUE(recorded(
        Step::isPresent, [] { return true; }, 7));
    EXPECT_EQ(recorded(
                  Step::setting, [] { return std::string("s1"); }, 24),
              "s1");
    Mutex mutex;
    {
        // Taken twice by the same thread: it had its turn already.
        const std::lock_guard outer(mutex);
        const std::lock_guard inner(mutex);
    }
    writer->finish();
    recordStep(Step::begun, 1, 2);
    Recorder::setActive(nullptr);
    writer.reset();

    const auto texts = textsOf(file(0));
    const std::vector<std::string> last(texts.end() - 6, texts.end());
    EXPECT_THAT(last,
                testing::ElementsAre("thread number=2 name=other", "port bytes port=port bytes=61 62 63",
                                     "is present program=7 yes=1", "setting index=24 value=73 31", "locked", "end"));
    EXPECT_THAT(texts, testing::Contains(testing::StartsWith("begin engine=1.2.3")));
    EXPECT_THAT(texts, testing::Contains(testing::HasSubstr("text=[unit]")));
    EXPECT_THAT(texts, testing::Contains(testing::StartsWith("file folder=system name=VX_Volume.ini offset=0")));
    EXPECT_THAT(texts, testing::Not(testing::Contains(testing::HasSubstr("lock.mdb"))));
    EXPECT_EQ(recordsOf(file(0)).end()[-5].thread, 2);
    EXPECT_EQ(recordsOf(file(0)).end()[-3].thread, 1);
}

TEST_F(RecordWriterTest, TheFirstFileAndTheNewestAreKeptWithinTheLimit)
{
    auto writer = open();
    ASSERT_NE(writer, nullptr) << lastError;
    Recorder::setActive(writer.get());
    // Three times what it may keep, slowly enough for the disk.
    const std::string piece(10'000, 'x');
    for (std::uint64_t written = 0; written < 3 * RecordWriter::leastLimit; written += piece.size())
    {
        recordStep(Step::spiWrite, piece, true);
        writer->flush();
    }
    Recorder::setActive(nullptr);
    writer.reset();

    std::uint64_t together = 0;
    std::vector<int> numbers;
    for (int number = 0; number < 100; ++number)
        if (fs::exists(file(number)))
        {
            together += fs::file_size(file(number));
            numbers.push_back(number);
            EXPECT_THAT(textsOf(file(number)), testing::Contains("thread number=1 name=message"));
        }
    EXPECT_LE(together, RecordWriter::leastLimit);
    EXPECT_GT(together, RecordWriter::leastLimit / 2);
    ASSERT_EQ(numbers.size(), 8U);
    EXPECT_EQ(numbers.front(), 0);
    EXPECT_GT(numbers[1], 8) << "the older ones are gone";
    EXPECT_EQ(numbers.back() - numbers[1], 6);
}

TEST_F(RecordWriterTest, WhatTheDiskDoesNotTakeInTimeIsCountedAndSaidWhereItIsMissing)
{
    auto writer = open();
    ASSERT_NE(writer, nullptr) << lastError;
    Recorder::setActive(writer.get());
    // Far more at once than is kept for the disk.
    const std::string piece(30'000, 'x');
    for (int i = 0; i < 100; ++i)
        recordStep(Step::spiWrite, piece, true);
    writer->flush();
    recordStep(Step::begun, 1, 2);
    Recorder::setActive(nullptr);
    writer.reset();

    std::int64_t kept = 0, lost = 0;
    for (int number = 0; fs::exists(file(number)); ++number)
        for (const auto& record : recordsOf(file(number)))
        {
            kept += record.step == Step::spiWrite ? 1 : 0;
            lost += record.step == Step::lost ? FieldReader(record.fields).number() : 0;
        }
    EXPECT_EQ(kept + lost, 100);
    EXPECT_GT(lost, 0);
}

TEST_F(RecordWriterTest, AnEarlierRecordingIsKeptOnceAndAForeignFileIsNotTouched)
{
    ASSERT_NE(open(), nullptr) << lastError;
    const auto first = bytesOf(file(0));
    std::ofstream(file(3)) << "one of its files";
    ASSERT_NE(open(), nullptr) << lastError;
    EXPECT_EQ(bytesOf(file(0) + ".old"), first);
    EXPECT_EQ(bytesOf(file(0) + ".old.3"), "one of its files");
    EXPECT_FALSE(fs::exists(file(3)));
    ASSERT_NE(open(), nullptr) << lastError;
    EXPECT_NE(bytesOf(file(0) + ".old"), first);
    EXPECT_FALSE(fs::exists(file(0) + ".old.3"));

    std::ofstream(file(0)) << "a letter to somebody";
    EXPECT_EQ(open(), nullptr);
    EXPECT_THAT(lastError, testing::HasSubstr("no recording"));
    EXPECT_EQ(bytesOf(file(0)), "a letter to somebody");
    options.file = (folder / "nowhere/recording").string();
    EXPECT_EQ(open(), nullptr);
    EXPECT_THAT(lastError, testing::HasSubstr("No such file"));
}

TEST_F(RecordWriterTest, ADiskThatTakesNoMoreEndsTheRecordingAndIsLoggedOnce)
{
    auto writer = open();
    ASSERT_NE(writer, nullptr) << lastError;
    Recorder::setActive(writer.get());
    const LogCapture log;
    // A full disk, as far as this process can have one.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit sizes {};
    ::getrlimit(RLIMIT_FSIZE, &sizes);
    const rlimit small { 4096, sizes.rlim_max };
    ::setrlimit(RLIMIT_FSIZE, &small);
    for (int i = 0; i < 10; ++i)
    {
        recordStep(Step::spiWrite, std::string(5000, 'x'), true);
        writer->flush();
    }
    ::setrlimit(RLIMIT_FSIZE, &sizes);
    const auto lines = LogCapture::take();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines.front().text, testing::HasSubstr("the recording ends"));
    Recorder::setActive(nullptr);
}
