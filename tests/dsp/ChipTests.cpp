#include "DspFixture.h"

#include <algorithm>

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
