#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace Bench
{

/**
    What the audio DSP keeps: registers, and the 24-bit coefficient words of its three cores. Core 0 is written with the
    commands B4 and A4, core 1 with B5 and A5; the third gets an image (B6) and is never written while it runs.
*/
struct DspMemory
{
    static constexpr std::size_t registerCount = 256;
    static constexpr std::size_t bankCount = 3;
    static constexpr std::size_t wordsPerBank = 2048;

    std::array<std::uint8_t, registerCount> registers {};
    std::array<std::array<std::uint32_t, wordsPerBank>, bankCount> banks {};

    std::uint32_t word(std::size_t bank, std::size_t address) const { return banks.at(bank).at(address); }
    /** All of them must lie inside. */
    std::span<const std::uint32_t> words(std::size_t bank, std::size_t address, std::size_t count) const
    {
        return std::span(banks.at(bank)).subspan(address, count);
    }
    bool operator==(const DspMemory&) const = default;
};

} // namespace Bench
