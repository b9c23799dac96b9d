#pragma once

#include "dsp/akm/BiquadDesign.h"
#include "platform/settings/EqualiserCurves.h"

#include <algorithm>

namespace Dsp
{

/** Which of the DSP's two coefficient memories. */
enum class Bank : int { zero = 0, one = 1 };

/** One filter of each of the three groups: bank and first address. Groups 1 and 3 are in bank 1, group 2 in bank 0. */
struct EqBand
{
    int frequency; ///< Hz
    Precision precision;
    std::uint16_t group1;
    std::uint16_t group2;
    std::uint16_t group3;
};

inline constexpr int numOfEqBands = 15;
inline constexpr std::array<EqBand, numOfEqBands> eqBands { {
    { 20, Precision::doubled, 0x4B, 0x2D, 0x10C },
    { 50, Precision::doubled, 0x55, 0x37, 0x116 },
    { 125, Precision::doubled, 0x5F, 0x41, 0x120 },
    { 180, Precision::doubled, 0x69, 0x4B, 0x12A },
    { 250, Precision::doubled, 0x73, 0x55, 0x134 },
    { 500, Precision::doubled, 0x7D, 0x5F, 0x13E },
    { 630, Precision::doubled, 0x87, 0x69, 0x148 },
    { 1000, Precision::doubled, 0x91, 0x73, 0x152 },
    { 2000, Precision::doubled, 0x9B, 0x7D, 0x15C },
    { 3000, Precision::single, 0xA5, 0x87, 0x166 },
    { 4000, Precision::single, 0xAA, 0x8C, 0x16B },
    { 6300, Precision::single, 0xAF, 0x91, 0x170 },
    { 8000, Precision::single, 0xB4, 0x96, 0x175 },
    { 10000, Precision::single, 0xB9, 0x9B, 0x17A },
    { 16000, Precision::single, 0xBE, 0xA0, 0x17F },
} };

/** The bands that a person sets. */
inline constexpr int numOfUserBands = Platform::userBandCount;
inline constexpr std::array<int, numOfUserBands> bandOfUserBand { 1, 2, 4, 5, 7, 9, 12 };
static_assert(std::ranges::equal(Platform::userBandFrequencies, bandOfUserBand, {}, {},
                                 [](int band) { return eqBands[static_cast<std::size_t>(band)].frequency; }));

/** Corner frequencies in Hz of the filters between the speakers; 0 is no filter. */
inline constexpr std::array<int, 4> crossoverFrequencies { 0, 50, 80, 120 };

} // namespace Dsp
