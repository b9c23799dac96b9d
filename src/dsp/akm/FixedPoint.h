#pragma once

#include <array>
#include <cstdint>

/** How the DSP's memory holds numbers: 24-bit words, three bytes, high byte first. Pure functions. */
namespace Dsp
{

using Word = std::array<std::uint8_t, 3>;

/** The signed 24-bit word of a number with this many bits before the point, rounded, limited to what fits. */
std::uint32_t toFixed24(double value, int integerBits);

/** Two words of one number, -2 to 2: the high one in steps of 2^-14, the low one the rest in steps of 2^-37. */
struct DoubleWord
{
    std::uint32_t high;
    std::uint32_t low;
};
DoubleWord toDoubleWord(double value);

constexpr Word toBytes(std::uint32_t word)
{
    return { static_cast<std::uint8_t>(word >> 16), static_cast<std::uint8_t>(word >> 8),
             static_cast<std::uint8_t>(word) };
}

/** The linear gain of a level in dB as a word with two bits before the point; -144 dB and less is silence. */
Word gainWord(double decibels);

inline constexpr int silence = -144; ///< dB

} // namespace Dsp
