#include "bench/dsp/DspChip.h"

#include "bench/dsp/DspModel.h"
#include "bench/mcu/McuFrame.h"

#include <algorithm>
#include <boost/crc.hpp>

namespace Bench
{

namespace
{

constexpr std::size_t headerSize = 3;
constexpr std::size_t bytesPerWord = 3;
constexpr std::size_t bytesPerInstruction = 5;
constexpr std::uint8_t wakeBlock[] = { 0xDE, 0xAD, 0xDA, 0x7A };
constexpr std::uint8_t registerCommand = 0xC0;
/** 0x80 writes one word, 0x8F sixteen. */
constexpr std::uint8_t firstWordsCommand = 0x80;
constexpr std::uint8_t lastWordsCommand = 0x8F;
/** 0xA4 puts the words that wait into core 0, 0xA5 into core 1. */
constexpr std::uint8_t commitCommand = 0xA4;
constexpr std::size_t writableBanks = 2;

struct ImageKind
{
    std::uint8_t command;
    const char* name;
    std::size_t unit; ///< bytes that make one entry
    std::size_t bank; ///< of a coefficient image; noAddress for a program, whose content says nothing to the bench
};
constexpr ImageKind imageKinds[] = {
    { 0xB8, "program 1", bytesPerInstruction, noAddress }, { 0xB4, "coefficients 1", bytesPerWord, 0 },
    { 0xB9, "program 2", bytesPerInstruction, noAddress }, { 0xB5, "coefficients 2", bytesPerWord, 1 },
    { 0xBA, "program 3", bytesPerInstruction, noAddress }, { 0xB6, "coefficients 3", bytesPerWord, 2 }
};

std::size_t addressOf(std::span<const std::uint8_t> block)
{
    constexpr int byteBits = 8;
    return static_cast<std::size_t>(block[1] << byteBits | block[2]);
}

std::vector<std::uint32_t> wordsOf(std::span<const std::uint8_t> bytes)
{
    std::vector<std::uint32_t> values;
    for (std::size_t i = 0; i + bytesPerWord <= bytes.size(); i += bytesPerWord)
        values.push_back(static_cast<std::uint32_t>(bytes[i] << 16 | bytes[i + 1] << 8 | bytes[i + 2]));
    return values;
}

/** Muted paths of all. */
std::size_t mutedPaths(const DspMemory& memory)
{
    std::size_t muted = 0;
    for (std::size_t path = 0; path < dspPathCount; ++path)
        muted += isMuted(memory, path) ? 1 : 0;
    return muted;
}

} // namespace

DspChip::DspChip(Sink sinkToTell)
    : tell(std::move(sinkToTell))
{
}

void DspChip::block(std::span<const std::uint8_t> bytes)
{
    ++count.blocks;
    count.bytes += bytes.size();
    boost::crc_xmodem_t crc;
    crc.process_bytes(bytes.data(), bytes.size());
    lastCrc = crc.checksum();
    lastVerified = false;
    if (!awake && !std::ranges::equal(bytes, wakeBlock))
    {
        if (count.asleep++ == 0)
            tell("dsp", "asleep: blocks before the wake block do nothing");
        return;
    }
    if (decode(bytes))
        return;
    ++count.malformed;
    constexpr std::size_t shown = 8;
    tell("dsp", "malformed block of " + std::to_string(bytes.size()) +
                    " bytes: " + hex(bytes.first(std::min(bytes.size(), shown))));
}

std::uint16_t DspChip::readCrc(bool truly)
{
    ++count.crcReads;
    if (truly && !lastVerified)
    {
        lastVerified = true;
        ++count.verified;
    }
    return lastCrc;
}

bool DspChip::decode(std::span<const std::uint8_t> bytes)
{
    if (std::ranges::equal(bytes, wakeBlock))
    {
        wake();
        return true;
    }
    if (bytes.size() < headerSize)
        return false;
    const auto command = bytes[0];
    if (command == registerCommand)
        return writeRegister(bytes);
    if (command >= firstWordsCommand && command <= lastWordsCommand)
        return takeWords(bytes);
    if (command >= commitCommand && command < commitCommand + writableBanks)
        return commit(bytes);
    return loadImage(bytes);
}

void DspChip::wake()
{
    awake = true;
    loaded.clear();
    atWake = count;
    --atWake.blocks; // the wake block belongs to the boot that it begins
    tell("dsp", "awake");
}

bool DspChip::writeRegister(std::span<const std::uint8_t> bytes)
{
    const auto address = addressOf(bytes);
    if (bytes.size() != headerSize + 1 || address >= DspMemory::registerCount)
        return false;
    const auto value = bytes[headerSize];
    const auto text = "register " + hex(bytes.subspan(2, 1)) + "=" + hex(bytes.subspan(headerSize, 1));
    const bool ran = isRunning(words);
    words.registers[address] = value;
    tell("dsp write", text);
    if (!ran && isRunning(words))
        tellBoot();
    else if (ran && !isRunning(words))
        tell("dsp", "stopped");
    else if (ran)
    {
        tell("dsp", text);
        tellSource(address, value);
    }
    return true;
}

void DspChip::tellBoot()
{
    // The block that starts it is checked only after this.
    const auto before = count.blocks - atWake.blocks - 1;
    auto text = "boot: " + std::to_string(count.verified - atWake.verified) + " of " + std::to_string(before) +
                " blocks verified";
    const char* separator = "; ";
    for (const auto& image : loaded)
    {
        text += separator + std::string(image.name) + " " + std::to_string(image.size) + " bytes";
        separator = ", ";
    }
    tell("dsp", loaded.empty() ? text + "; no images" : text);
}

void DspChip::tellSource(std::size_t address, std::uint8_t value)
{
    // The three input registers are written one after the other, and the converter's socket behind them: the last of
    // them makes the source complete.
    const auto last = dspPaths[zonePath].inputRegister;
    const bool complete = (address == last && value != converterInput) ||
                          (address == converterRegister && words.registers[last] == converterInput);
    if (complete)
        tell("dsp", "source " + inputText(words, zonePath));
}

bool DspChip::loadImage(std::span<const std::uint8_t> bytes)
{
    const auto* kind = std::ranges::find(imageKinds, bytes[0], &ImageKind::command);
    const auto data = bytes.subspan(headerSize);
    if (kind == std::end(imageKinds) || data.empty() || data.size() % kind->unit != 0)
        return false;
    if (kind->bank != noAddress)
    {
        const auto values = wordsOf(data);
        if (addressOf(bytes) + values.size() > DspMemory::wordsPerBank)
            return false;
        std::ranges::copy(values, words.banks[kind->bank].begin() + static_cast<std::ptrdiff_t>(addressOf(bytes)));
    }
    // A block whose CRC did not match comes again.
    std::erase_if(loaded, [&](const DspImage& image) { return image.name == kind->name; });
    loaded.push_back({ kind->name, bytes.size() });
    tell("dsp write", std::string("image ") + kind->name + ", " + std::to_string(bytes.size()) + " bytes");
    return true;
}

bool DspChip::takeWords(std::span<const std::uint8_t> bytes)
{
    const auto expected = static_cast<std::size_t>(bytes[0] - firstWordsCommand + 1);
    const auto address = addressOf(bytes);
    if (bytes.size() != headerSize + expected * bytesPerWord || address + expected > DspMemory::wordsPerBank)
        return false;
    pending = { address, wordsOf(bytes.subspan(headerSize)) };
    return true;
}

bool DspChip::commit(std::span<const std::uint8_t> bytes)
{
    if (bytes.size() != headerSize || addressOf(bytes) != 0 || pending.values.empty())
        return false;
    const auto bank = static_cast<std::size_t>(bytes[0] - commitCommand);
    const auto first = pending.address;
    const auto end = first + pending.values.size();
    const auto mutedBefore = mutedPaths(words);
    const auto before = words.words(bank, first, pending.values.size());
    const bool changes = !std::ranges::equal(before, pending.values);
    std::ranges::copy(pending.values, words.banks[bank].begin() + static_cast<std::ptrdiff_t>(first));
    bool named = false;
    for (const auto& parameter : dspParameters())
    {
        if (parameter.bank != bank || parameter.address >= end || parameter.address + parameter.words <= first)
            continue;
        named = true;
        const auto text = parameterText(words, parameter);
        tell("dsp write", text);
        const bool ofInterest = parameter.kind == DspKind::gain || parameter.kind == DspKind::groupSwitch;
        if (changes && isRunning(words) && ofInterest)
            tell("dsp", text);
    }
    if (!named)
        tell("dsp write", "core " + std::to_string(bank) + " address " + std::to_string(first) + ": " +
                              std::to_string(end - first) + " words");
    const auto mutedNow = mutedPaths(words);
    if (mutedNow != mutedBefore && (mutedNow == 0 || mutedNow == dspPathCount))
        tell("dsp", mutedNow == 0 ? "mute off" : "mute on");
    return true;
}

} // namespace Bench
