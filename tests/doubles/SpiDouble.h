#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Platform::doubles
{

/**
    The SPI bus of a test and the chip on it: what was done with it, and what it answers. The chip confirms every block:
    a read with the prefix 00 00 72 answers the block's CRC-16/XMODEM, high byte first, any other zeros. Any thread.
*/
struct SpiDouble
{
    using Bytes = std::vector<std::uint8_t>;
    using Record = std::array<std::uint32_t, 10>;

    enum class Step { open, configure, select, release, write, read, close };

    struct Operation
    {
        Step step;
        Bytes bytes {};    ///< of a write its data, of a read its prefix
        size_t length = 0; ///< of a read
        bool operator==(const Operation&) const = default;
    };

    static void reset();

    /** Every call that reached the bus since the last take, in order, with those that failed. */
    static std::vector<Operation> takeOperations();
    /**
        What was written between a select and its release, each as one block; one with a failed write is not among them.
    */
    static std::vector<Bytes> takeBlocks();
    static std::vector<Record> takeRecords();

    /** Devices that are open now. */
    static int getOpenDevices();

    /** The next so many CRCs that are read are wrong in every bit. */
    static void spoilCrcs(int count);

    static void failOpen(bool fails);
    static void failConfigure(bool fails);
    /** The write or read that follows so many others fails: 0 is the next one. */
    static void failWriteAfter(int others);
    static void failReadAfter(int others);
};

} // namespace Platform::doubles
