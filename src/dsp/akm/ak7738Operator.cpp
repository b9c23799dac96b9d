// How commands reach the chip, and its boot. What the equaliser writes is in ak7738Equaliser.cpp.
#include "dsp/akm/ak7738Operator.h"

#include "dsp/akm/Images.h"
#include "dsp/akm/SPI.h"
#include "kernel/Trace.h"
#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/base/Time.h"
#include "platform/config/Configuration.h"
#include "platform/devices/UnitLines.h"

#include <algorithm>
#include <boost/crc.hpp>
#include <utility>

namespace Dsp
{

namespace
{

constexpr Platform::Log logger { "dsp/akm/ak7738Operator", "ak7738Operator" };

constexpr const char* bus = "SPI2:";
constexpr int attempts = 3;
constexpr std::array<std::uint8_t, 3> readChecksum { 0x00, 0x00, 0x72 };

constexpr std::chrono::milliseconds startUpTime { 5 };
constexpr std::chrono::milliseconds settleTime { 10 };
constexpr std::array<std::uint8_t, 4> wakeUp { 0xDE, 0xAD, 0xDA, 0x7A };
constexpr std::array<RegisterValue, 4> haltRegisters {
    { { 0x01, 0x00 }, { 0x83, 0x00 }, { 0x84, 0x00 }, { 0x85, 0x00 } }
};
constexpr RegisterValue runRegister { 0x85, 0x1F };

constexpr std::uint8_t registerWrite = 0xC0;
constexpr std::uint8_t memoryWrite = 0x80;
constexpr std::uint8_t takeOverBank1 = 0xA5;
constexpr std::uint8_t takeOverBank0 = 0xA4;

/** Keys of the worker's jobs: what is written to the same place. */
constexpr int bootKey = 0;
constexpr int bank0Keys = 0x10000;
constexpr int bank1Keys = 0x20000;
constexpr int registerKeys = 0x30000;

Platform::Counter lostBlocks { "dsp.blocks-lost", "blocks that the DSP did not get or did not confirm" };

/** Its first three bytes: what it is and where it goes. */
std::int32_t headOf(std::span<const std::uint8_t> block)
{
    std::int32_t head = 0;
    for (std::size_t i = 0; i < 3; ++i)
        head = head << 8 | (i < block.size() ? block[i] : 0);
    return head;
}

int checksum(std::span<const std::uint8_t> block)
{
    boost::crc_xmodem_t crc;
    crc.process_bytes(block.data(), block.size());
    return crc.checksum();
}

/** Whether the chip has answered the block's checksum; none when a transfer has failed. */
std::optional<bool> writeOnce(SPI& port, std::span<const std::uint8_t> block)
{
    std::array<std::uint8_t, 2> answer {};
    if (!port.write(block) || !port.read(answer, readChecksum))
        return std::nullopt;
    return (answer[0] << 8 | answer[1]) == checksum(block);
}

} // namespace

ak7738Operator::Probe ak7738Operator::probe()
{
    SPI port;
    if (!port.open(bus))
        return Probe::noBus;
    const auto confirmed = writeOnce(port, std::array<std::uint8_t, 3> { takeOverBank0, 0, 0 });
    return !confirmed ? Probe::noTransfer : *confirmed ? Probe::confirms : Probe::silent;
}

// What the thread does.

void ak7738Operator::writeBlock(std::span<const std::uint8_t> block)
{
    SPI port;
    if (worker.isStopping() || isLeftAlone())
        return;
    if (!port.open(bus))
        return noteFailure("its bus cannot be opened");
    Kernel::TraceScope scope(Kernel::Trace::Kind::block, headOf(block), block.size());
    bool verified = false;
    for (int attempt = 0; attempt < attempts && !verified; ++attempt)
    {
        scope.set(2, attempt + 1);
        const auto confirmed = writeOnce(port, block);
        if (!confirmed)
            return noteFailure("a transfer on its bus has failed");
        verified = *confirmed;
        scope.set(3, verified);
    }
    if (!verified && !std::exchange(unverified, true))
        logger().error("the DSP does not confirm what is written to it");
    else if (verified)
        unverified = false;
    if (!verified)
        return noteFailure("it does not confirm what is written to it");
    const std::lock_guard guard(healthLock);
    ++health.blocks;
}

/** Decided once: the images and the bus are those of the start. */
bool ak7738Operator::isLeftAlone()
{
    const std::lock_guard guard(healthLock);
    if (!health.leftAlone)
    {
        const bool isSimulated = Platform::Configuration::isSimulated(Platform::Configuration::get().spi2);
        health.leftAlone = isSimulated ? juce::String() : standInProblem();
        if (health.leftAlone->isNotEmpty())
            logger().error("the DSP is left alone: " + *health.leftAlone);
    }
    return health.leftAlone->isNotEmpty();
}

void ak7738Operator::noteFailure(const char* what)
{
    ++lostBlocks;
    const std::lock_guard guard(healthLock);
    ++health.failures;
    health.lastFailure = what;
    health.lastFailureAt = Platform::Clock::now();
}

void ak7738Operator::addTo(DspStatus& status) const
{
    const std::lock_guard guard(healthLock);
    status.isBooted = health.isBooted;
    status.blocks = health.blocks;
    status.failures = health.failures;
    status.lastFailure = health.lastFailure;
    status.lastFailureAt = health.lastFailureAt;
    status.leftAlone = health.leftAlone.value_or("").toStdString();
}

void ak7738Operator::setRegisters(std::span<const RegisterValue> registers)
{
    for (const auto& [number, value] : registers)
        writeBlock(std::array<std::uint8_t, 4> { registerWrite, 0x00, number, value });
}

void ak7738Operator::loadImages()
{
    for (const auto& image : images)
    {
        juce::String problem;
        const auto content = readImage(image, problem);
        if (problem.isNotEmpty())
            logger().error("DSP image " + imageFolder().getChildFile(image.file).getFullPathName() +
                           " is left out: " + problem);
        else
            writeBlock({ static_cast<const std::uint8_t*>(content.getData()), content.getSize() });
    }
}

// What callers ask for.

void ak7738Operator::writeRegisters(std::span<const RegisterValue> registers)
{
    jassert(!registers.empty());
    worker.post(registerKeys + registers.front().number,
                [this, kept = std::vector(registers.begin(), registers.end())] { setRegisters(kept); });
}

void ak7738Operator::writeCoefficients(std::uint16_t address, std::span<const std::uint8_t> words, Bank bank)
{
    constexpr std::size_t wordLength = 3;
    const auto wordsMinusOne = words.size() < wordLength ? 0 : words.size() / wordLength - 1;
    Block block { static_cast<std::uint8_t>(memoryWrite + wordsMinusOne), static_cast<std::uint8_t>(address >> 8),
                  static_cast<std::uint8_t>(address) };
    block.insert(block.end(), words.begin(), words.end());
    worker.post((bank == Bank::one ? bank1Keys : bank0Keys) + address,
                [this, bank, kept = std::move(block)]
                {
                    writeBlock(kept);
                    writeBlock(std::array<std::uint8_t, 3> { bank == Bank::one ? takeOverBank1 : takeOverBank0, 0, 0 });
                    Kernel::Cause::current().reached(Kernel::Cause::sound);
                });
}

void ak7738Operator::writeGain(std::uint16_t address, double decibels, Bank bank)
{
    writeCoefficients(address, gainWord(decibels), bank);
}

void ak7738Operator::boot()
{
    const std::lock_guard guard(lock);
    worker.post(bootKey,
                [this]
                {
                    if (isLeftAlone())
                        return;
                    Platform::drive(Platform::dspStartLine, true);
                    Platform::sleepFor(startUpTime);
                    writeBlock(wakeUp);
                    setRegisters(haltRegisters);
                    Platform::sleepFor(settleTime);
                    setRegisters(bootRegisters);
                    Platform::sleepFor(settleTime);
                    loadImages();
                    Platform::sleepFor(settleTime);
                    setRegisters(std::array { runRegister });
                    Platform::sleepFor(settleTime);
                    const std::lock_guard healthGuard(healthLock);
                    health.isBooted = true;
                });
    flattenEqualiser();
}

} // namespace Dsp
