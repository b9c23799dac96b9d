#pragma once

#include "bench/dsp/DspMap.h"
#include "bench/dsp/DspMemory.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace Bench
{

/** What the chip has seen since it was made. */
struct DspCounters
{
    unsigned blocks = 0;
    std::uint64_t bytes = 0; ///< of those blocks
    unsigned crcReads = 0;
    unsigned verified = 0;  ///< blocks whose CRC was read, and told truly
    unsigned malformed = 0; ///< blocks without a meaning
    unsigned asleep = 0;    ///< blocks before the wake block, which do nothing
};

/** An image that was loaded since the last wake block. */
struct DspImage
{
    const char* name;
    std::size_t size; ///< bytes, with the header of 3
};

/**
    The chip behind the bus: takes whole blocks, the bytes between select and release, and keeps the memory that
    results. It sleeps until the block DE AD DA 7A. Words that are written while it runs wait for the block that says
    into which core they go. One thread at a time; it tells what happened through the sink.

    Stream "dsp": "awake", "boot: ...", and once it runs "register 66=12", "source tuner", "mute on", "front left -10.0
    dB". Stream "dsp write": each register, image, filter and gain that is written, changed or not.
*/
class DspChip
{
public:
    using Sink = std::function<void(const char* stream, const std::string& text)>;

    explicit DspChip(Sink sinkToTell);

    void block(std::span<const std::uint8_t> bytes);
    /** CRC-16/XMODEM of the last block; 0 before the first. A block counts as verified when it is told `truly`. */
    std::uint16_t readCrc(bool truly);

    const DspMemory& memory() const { return words; }
    const DspCounters& counters() const { return count; }
    const std::vector<DspImage>& images() const { return loaded; }
    bool isAwake() const { return awake; }

private:
    Sink tell;
    DspMemory words;
    DspCounters count;
    std::vector<DspImage> loaded;
    bool awake = false;
    std::uint16_t lastCrc = 0;
    bool lastVerified = true;
    DspCounters atWake;

    /** Words on their way into a core; they stay for a commit that is repeated. */
    struct Pending
    {
        std::size_t address = 0;
        std::vector<std::uint32_t> values;
    } pending;

    bool decode(std::span<const std::uint8_t> bytes);
    void wake();
    bool writeRegister(std::span<const std::uint8_t> bytes);
    bool loadImage(std::span<const std::uint8_t> bytes);
    bool takeWords(std::span<const std::uint8_t> bytes);
    bool commit(std::span<const std::uint8_t> bytes);
    void tellBoot();
    void tellSource(std::size_t address, std::uint8_t value);
};

} // namespace Bench
