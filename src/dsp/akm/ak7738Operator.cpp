// How commands reach the chip, and its boot. What the equaliser writes is in ak7738Equaliser.cpp.
#include "dsp/akm/ak7738Operator.h"

#include "dsp/akm/SPI.h"
#include "platform/Configuration.h"
#include "platform/Lines.h"
#include "platform/Logger.h"

#include <algorithm>
#include <boost/crc.hpp>
#include <utility>

namespace Dsp
{

namespace
{

constexpr const char* bus = "SPI2:";
constexpr int attempts = 3;
constexpr std::array<std::uint8_t, 3> readChecksum { 0x00, 0x00, 0x72 };

constexpr int startUpLine = 32778;
constexpr int outputFunction = 32;
constexpr int startUpMs = 5;
constexpr int settleMs = 10;
constexpr std::array<std::uint8_t, 4> wakeUp { 0xDE, 0xAD, 0xDA, 0x7A };
constexpr std::array<RegisterValue, 4> haltRegisters {
    { { 0x01, 0x00 }, { 0x83, 0x00 }, { 0x84, 0x00 }, { 0x85, 0x00 } }
};
constexpr RegisterValue runRegister { 0x85, 0x1F };

constexpr std::uint8_t registerWrite = 0xC0;
constexpr std::uint8_t memoryWrite = 0x80;
constexpr std::uint8_t takeOverBank1 = 0xA5;
constexpr std::uint8_t takeOverBank0 = 0xA4;

int checksum(std::span<const std::uint8_t> block)
{
    boost::crc_xmodem_t crc;
    crc.process_bytes(block.data(), block.size());
    return crc.checksum();
}

/** Empty, and said so in the log, when the file is not what the DSP takes. */
juce::MemoryBlock loadImage(const Image& image)
{
    const auto file = juce::File(Platform::AppConfig::getResourcePath()).getChildFile("dsp").getChildFile(image.file);
    const auto refuse = [&](const juce::String& reason)
    {
        Platform::Logger::getInstance()->logError("dsp/akm/ak7738Operator", __LINE__, "ak7738Operator",
                                                  "DSP image " + file.getFullPathName() + " is left out: " + reason);
        return juce::MemoryBlock();
    };
    if (!file.existsAsFile())
        return refuse("there is no such file");
    if (file.getSize() != static_cast<juce::int64>(image.size))
        return refuse("it has " + juce::String(file.getSize()) + " bytes, not " + juce::String(image.size));
    juce::MemoryBlock content;
    if (!file.loadFileAsData(content) || content.getSize() != image.size)
        return refuse("it cannot be read");
    if (static_cast<std::uint8_t>(content[0]) != image.firstByte)
        return refuse("its first byte is not 0x" + juce::String::toHexString(image.firstByte));
    return content;
}

} // namespace

void ak7738Operator::writeBlock(std::span<const std::uint8_t> block)
{
    {
        const juce::ScopedLock guard(lock);
        SPI port;
        if (!port.open(bus))
            return;
        bool verified = false;
        for (int attempt = 0; attempt < attempts && !verified; ++attempt)
        {
            std::array<std::uint8_t, 2> answer {};
            if (!port.write(block) || !port.read(answer, readChecksum))
                return;
            verified = (answer[0] << 8 | answer[1]) == checksum(block);
        }
        if (!verified && !std::exchange(unverified, true))
            Platform::Logger::getInstance()->logError("dsp/akm/ak7738Operator", __LINE__, "ak7738Operator",
                                                      "the DSP does not confirm what is written to it");
        else if (verified)
            unverified = false;
    }
    juce::Thread::yield();
}

void ak7738Operator::writeRegister(std::uint8_t number, std::uint8_t value)
{
    const std::array<std::uint8_t, 4> block { registerWrite, 0x00, number, value };
    writeBlock(block);
}

void ak7738Operator::writeRegisters(std::span<const RegisterValue> registers)
{
    const juce::ScopedLock guard(lock);
    for (const auto& [number, value] : registers)
        writeRegister(number, value);
}

void ak7738Operator::writeCoefficients(std::uint16_t address, std::span<const std::uint8_t> words, Bank bank)
{
    constexpr std::size_t headerLength = 3;
    constexpr std::size_t wordLength = 3;
    // The largest write is one filter.
    std::array<std::uint8_t, headerLength + 30> block {};
    jassert(words.size() + headerLength <= block.size());
    const auto wordsMinusOne = words.size() < wordLength ? 0 : words.size() / wordLength - 1;
    block[0] = static_cast<std::uint8_t>(memoryWrite + wordsMinusOne);
    block[1] = static_cast<std::uint8_t>(address >> 8);
    block[2] = static_cast<std::uint8_t>(address);
    const auto length = std::min(words.size(), block.size() - headerLength);
    std::copy_n(words.begin(), length, block.begin() + headerLength);

    const std::array<std::uint8_t, 3> takeOver { bank == Bank::one ? takeOverBank1 : takeOverBank0, 0x00, 0x00 };
    const juce::ScopedLock guard(lock);
    writeBlock(std::span(block).first(headerLength + length));
    writeBlock(takeOver);
}

void ak7738Operator::writeGain(std::uint16_t address, double decibels, Bank bank)
{
    writeCoefficients(address, gainWord(decibels), bank);
}

void ak7738Operator::boot()
{
    const juce::ScopedLock guard(lock);
    Platform::GpioFunc::setPinFunc(startUpLine, outputFunction);
    Platform::GpioFunc::writePin(startUpLine, 1);
    juce::Thread::sleep(startUpMs);
    writeBlock(wakeUp);
    writeRegisters(haltRegisters);
    juce::Thread::sleep(settleMs);
    writeRegisters(bootRegisters);
    juce::Thread::sleep(settleMs);
    loadImages();
    juce::Thread::sleep(settleMs);
    writeRegister(runRegister.number, runRegister.value);
    juce::Thread::sleep(settleMs);
    flattenEqualiser();
}

void ak7738Operator::loadImages()
{
    for (const auto& image : images)
    {
        const auto content = loadImage(image);
        if (!content.isEmpty())
            writeBlock({ static_cast<const std::uint8_t*>(content.getData()), content.getSize() });
    }
}

} // namespace Dsp
