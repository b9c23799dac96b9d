#include "DspFixture.h"
#include "dsp/akm/Images.h"
#include "support/ErrorLog.h"

#include <algorithm>
#include <gmock/gmock.h>

using namespace Dsp;

namespace
{

using Spi = Platform::doubles::SpiDouble;
using Step = Spi::Step;

class ChipTest : public DspFixture
{
protected:
    static ak7738Operator& chip() { return *ak7738Operator::getInstance(); }
    static std::size_t count(const std::vector<Spi::Operation>& operations, Step step)
    {
        return static_cast<std::size_t>(std::count_if(operations.begin(), operations.end(),
                                                      [&](const auto& operation) { return operation.step == step; }));
    }
};

} // namespace

TEST_F(ChipTest, WritesABlockInChunksUnderOneSelectAndReadsItsChecksum)
{
    const std::vector<std::uint8_t> block(124, 0x55);
    chip().writeBlock(block);
    std::vector<Step> steps;
    std::vector<std::size_t> lengths;
    for (const auto& operation : takeOperations())
    {
        steps.push_back(operation.step);
        if (operation.step == Step::write)
            lengths.push_back(operation.bytes.size());
        if (operation.step == Step::read)
        {
            EXPECT_EQ(operation.bytes, (Spi::Bytes { 0x00, 0x00, 0x72 }));
        }
    }
    EXPECT_EQ(lengths, (std::vector<std::size_t> { 123, 1 }));
    const std::vector<Step> expected { Step::open,  Step::configure, Step::release, Step::select,
                                       Step::write, Step::write,     Step::release, Step::select,
                                       Step::read,  Step::release,   Step::close };
    EXPECT_EQ(steps, expected);
    EXPECT_EQ(Spi::takeRecords(), (std::vector<Spi::Record> { { 1'000'000, 8, 10, 100, 0, 0, 1, 1, 1, 0 } }));
}

TEST_F(ChipTest, EveryFailureLosesItsBlockAndNoOther)
{
    const std::vector<std::uint8_t> block { 0xC0, 0, 1, 2 };
    struct Case
    {
        const char* name;
        void (*inject)();
        std::size_t writes;
    };
    for (const auto& [name, inject, writes] : { Case { "checksum wrong once", [] { Spi::spoilCrcs(1); }, 2 },
                                                Case { "checksum wrong always", [] { Spi::spoilCrcs(3); }, 3 },
                                                Case { "no open", [] { Spi::failOpen(true); }, 0 },
                                                Case { "no configuration", [] { Spi::failConfigure(true); }, 1 },
                                                Case { "write fails", [] { Spi::failWriteAfter(0); }, 1 },
                                                Case { "checksum cannot be read", [] { Spi::failReadAfter(0); }, 1 } })
    {
        SCOPED_TRACE(name);
        Spi::reset();
        inject();
        chip().writeBlock(block);
        EXPECT_EQ(count(takeOperations(), Step::write), writes);
        EXPECT_EQ(Spi::getOpenDevices(), 0);
        Spi::reset();
        chip().writeBlock(block);
        EXPECT_EQ(takeBlocks(), (std::vector<Spi::Bytes> { block }));
    }
}

TEST_F(ChipTest, BootsThroughToItsEndWithoutADriver)
{
    Spi::failOpen(true);
    chip().boot();
    const auto everyFilter = 15u * 3u * 2u;
    EXPECT_EQ(count(takeOperations(), Step::open), 1 + 4 + bootRegisters.size() + images.size() + 1 + everyFilter);
}

TEST_F(ChipTest, LeavesOutImagesThatAreNotWhole)
{
    imageFile(images[0]).deleteFile();
    writeImage(images[1], images[1].size - 1, images[1].firstByte);
    writeImage(images[2], images[2].size, 0x00);
    chip().boot();
    std::vector<std::pair<int, std::size_t>> loaded;
    for (const auto& block : takeBlocks())
        if (block.size() > 100)
            loaded.emplace_back(block[0], block.size());
    EXPECT_EQ(loaded, (std::vector<std::pair<int, std::size_t>> { { 0xB5, 1353 }, { 0xBA, 5123 }, { 0xB6, 1479 } }));
}

/**
    One image of the build among the maker's: a chip of this machine gets nothing, not even its start line, and says why.
    A simulated chip takes stand-ins as any other.
*/
TEST_F(ChipTest, AChipOfThisMachineIsLeftAloneWhileAnImageIsAStandIn)
{
    const juce::File built(HEADUNIT_BUILD_DIR "/resources/dsp");
    ASSERT_TRUE(built.getChildFile(images[2].file).copyFileTo(imageFile(images[2])));
    ErrorLog log;
    chip().boot();
    chip().writeRegisters(std::array { RegisterValue { 1, 2 } });
    EXPECT_TRUE(takeOperations().empty());
    EXPECT_TRUE(Platform::doubles::LinesDouble::takePinCalls().empty());
    EXPECT_THAT(log.take(), testing::ElementsAre(
                                testing::HasSubstr("pram2.bin in " + imageFolder().getFullPathName().toStdString())));
    DspStatus status;
    chip().addTo(status);
    EXPECT_FALSE(status.isBooted);
    EXPECT_THAT(status.leftAlone, testing::EndsWith("is a stand-in of the build: the maker's images belong there"));

    juce::DeletedAtShutdown::deleteAll();
    auto& configuration = Platform::Configuration::get();
    const auto before = std::exchange(configuration.spi2, juce::String("socket:/nowhere"));
    chip().boot();
    EXPECT_GT(takeBlocks().size(), bootRegisters.size());
    configuration.spi2 = before;
}

TEST_F(ChipTest, EveryImageOfTheBuildIsAStandIn)
{
    const auto before =
        std::exchange(Platform::Configuration::get().resourcePath, juce::String(HEADUNIT_BUILD_DIR "/resources/"));
    for (const auto& image : images)
    {
        juce::String problem;
        EXPECT_TRUE(isStandIn(readImage(image, problem))) << image.file << ": " << problem;
    }
    Platform::Configuration::get().resourcePath = before;
}
