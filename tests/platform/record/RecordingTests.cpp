#include "platform/record/Recording.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

using namespace Platform;

namespace
{

const std::vector<Record> someRecords {
    { Step::portBytes, 2, 0, Fields("/dev/ttyS1", std::string_view("\xFF\x00\x55", 3)).bytes() },
    { Step::post, 17, 1'234'567,
      Fields(-1, 300, std::numeric_limits<std::int32_t>::min(), 0, Bundle::Ptr(), true).bytes() },
    { Step::takenOver, 1, 1'234'567, {} },
    { Step::spiWrite, 300, 3'600'000'000'000, Fields(std::string(5000, 'x'), false).bytes() },
};

std::string fileOf(const std::vector<Record>& records)
{
    std::string bytes;
    for (const auto& record : records)
        encodeRecord(bytes, record);
    return bytes;
}

std::vector<std::string> textsOf(std::string_view bytes)
{
    std::vector<std::string> texts;
    RecordCutter cutter(bytes);
    while (const auto record = cutter.next())
        texts.push_back(std::to_string(record->time) + " " + std::to_string(record->thread) + " " + describe(*record));
    return texts;
}

} // namespace

TEST(RecordingTest, AFileThatIsCutAtAnyByteHasAllRecordsThatAreWholeAndNoOther)
{
    const auto bytes = fileOf(someRecords);
    const auto all = textsOf(bytes);
    ASSERT_EQ(all.size(), someRecords.size());
    EXPECT_EQ(all.front(), "0 2 port bytes port=/dev/ttyS1 bytes=FF 00 55");
    EXPECT_EQ(all[1], "1234567 17 post program=-1 what=300 arg1=-2147483648 arg2=0 bundle= ok=1");
    for (std::size_t size = 0; size <= bytes.size(); ++size)
    {
        std::size_t whole = 0, end = 0;
        for (std::size_t count = 1; count <= someRecords.size(); ++count)
            if (const auto length = fileOf({ someRecords.begin(), someRecords.begin() + count }).size(); length <= size)
                whole = count, end = length;
        RecordCutter cutter(std::string_view(bytes).substr(0, size));
        std::size_t found = 0;
        while (cutter.next())
            ++found;
        ASSERT_EQ(found, whole) << size;
        ASSERT_EQ(cutter.left(), size - end);
    }
}

TEST(RecordingTest, AByteThatHasChangedEndsTheReadingBeforeItsRecord)
{
    const auto bytes = fileOf(someRecords);
    const auto all = textsOf(bytes);
    for (std::size_t at = 0; at < bytes.size(); ++at)
    {
        auto damaged = bytes;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
        const auto read = textsOf(damaged);
        ASSERT_LT(read.size(), all.size()) << at;
        ASSERT_TRUE(std::equal(read.begin(), read.end(), all.begin())) << at;
    }
}

TEST(RecordingTest, AHeaderOfAnotherVersionOrADamagedOneIsRefusedWithTheReason)
{
    const auto header = encodeHeader({ 7, 0x1122334455667788 });
    ASSERT_EQ(header.size(), headerSize);
    std::string error;
    const auto read = decodeHeader(header + "rest", error);
    ASSERT_TRUE(read.has_value()) << error;
    EXPECT_EQ(read->number, 7);
    EXPECT_EQ(read->identity, 0x1122334455667788U);

    const auto reasonOf = [](std::string bytes)
    {
        std::string reason;
        EXPECT_FALSE(decodeHeader(bytes, reason).has_value());
        return reason;
    };
    constexpr std::size_t versionAt = 12, identityAt = 16;
    auto newer = header;
    newer[versionAt] = 9;
    EXPECT_THAT(reasonOf(newer), testing::HasSubstr("version 9"));
    auto damaged = header;
    damaged[identityAt] = 0;
    EXPECT_THAT(reasonOf(damaged), testing::HasSubstr("damaged"));
    EXPECT_EQ(reasonOf(header.substr(0, headerSize - 1)), "no recording");
    EXPECT_EQ(reasonOf(""), "no recording");
}

TEST(RecordingTest, ABundleComesBackWithAllKindsOfValuesAndADamagedOneIsRefused)
{
    const auto inner = Bundle::obtain();
    inner->putString("name", juce::CharPointer_UTF8("Nord \xc3\xb6"
                                                    "stlich"));
    const auto bundle = Bundle::obtain();
    bundle->putInt("number", -5);
    bundle->putBool("truth", true);
    bundle->putByteArray("bytes", "\x00\xFF", 2);
    bundle->putBundle("inner", inner);
    bundle->putBundleList("list", { inner, inner });

    const Fields fields(bundle);
    FieldReader reader(fields.bytes());
    const auto bytes = reader.bytes();
    std::string error;
    const auto back = bundleOf(bytes, error);
    ASSERT_NE(back, nullptr) << error;
    EXPECT_EQ(Fields(back).bytes(), fields.bytes());
    EXPECT_EQ(back->getBundle("inner")->getString("name", {}), inner->getString("name", {}));
    EXPECT_EQ(back->getBundleList("list").size(), 2U);

    EXPECT_EQ(bundleOf("", error), nullptr);
    EXPECT_EQ(error, "");
    EXPECT_EQ(bundleOf(bytes.substr(0, bytes.size() - 1), error), nullptr);
    EXPECT_NE(error, "");
    // Nested without an end.
    auto deep = Bundle::obtain();
    for (int depth = 0; depth < 100; ++depth)
    {
        const auto outer = Bundle::obtain();
        outer->putBundle("in", deep);
        deep = outer;
    }
    error.clear();
    const Fields deepFields(deep);
    FieldReader deepReader(deepFields.bytes());
    EXPECT_EQ(bundleOf(deepReader.bytes(), error), nullptr);
    EXPECT_NE(error, "");
}

TEST(RecordingTest, TheDocumentHasTheNumberAndTheFieldsOfEveryStep)
{
    std::ifstream file(HEADUNIT_SOURCE_DIR "/docs/recording.md");
    const std::string document { std::istreambuf_iterator(file), {} };
    constexpr const char* marks[] { "", "$", "*" };
    for (const auto& info : allSteps())
    {
        std::string fields;
        for (const auto& field : info.fields)
            fields += " " + std::string(field.name) + marks[static_cast<int>(field.kind)];
        const auto row = "| " + std::to_string(static_cast<int>(info.step)) + " | " + info.name + " |" +
                         (fields.empty() ? " " : fields) + " |";
        EXPECT_THAT(document, testing::HasSubstr(row));
    }
}

TEST(RecordingTest, AStepIsOneLineThatHarmsNoTerminal)
{
    const auto text = describe(Step::broadcast, Fields("Z\xC3\xBCrich\n\x1B[2J\xC2\x9B\xFF").bytes());
    EXPECT_EQ(text, "broadcast text=Z\xC3\xBCrich\\x0A\\x1B[2J\\x9B\xEF\xBF\xBD");
    const std::string block(100, '\x01');
    EXPECT_THAT(describe(Step::spiWrite, Fields(block, true).bytes()), testing::EndsWith("01 01 01 ok=1"));
    EXPECT_EQ(describe(Step::spiWrite, Fields(block, true).bytes(), 2), "spi write bytes=01 01 ... (100 bytes) ok=1");
}

TEST(RecordingTest, WhatIsAskedAndWhatIsAnsweredAreToldApart)
{
    const Record write { Step::portWrite, 1, 0, Fields("port", "bytes", 5).bytes() };
    EXPECT_EQ(write.asked(), Fields("port", "bytes").bytes());
    EXPECT_EQ(write.answer(), Fields(5).bytes());
    const Record damaged { Step::portWrite, 1, 0, Fields("port", "bytes").bytes() };
    EXPECT_EQ(damaged.asked(), "");
    EXPECT_EQ(damaged.answer(), "");
    for (const auto& info : allSteps())
        EXPECT_TRUE(info.role != StepRole::deed || !info.fields.empty()) << info.name << " needs an answer";
}
