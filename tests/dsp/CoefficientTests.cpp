#include "dsp/akm/BiquadDesign.h"
#include "dsp/akm/FilterMap.h"
#include "dsp/akm/FixedPoint.h"

#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <numbers>

using namespace Dsp;

TEST(FixedPoint, RoundsAndLimitsWords)
{
    struct Case
    {
        double value;
        int integerBits;
        std::uint32_t word;
    };
    const double nan = std::nan("");
    for (const auto& [value, integerBits, word] :
         { Case { 1.0, 2, 0x200000 }, Case { 1.0, 1, 0x400000 }, Case { -1.0, 1, 0xC00000 }, Case { 0.0, 2, 0 },
           Case { 100.0, 2, 0x7FFFFF }, Case { -100.0, 2, 0x800001 }, Case { 1e-7, 2, 0 }, Case { 3e-7, 2, 1 },
           Case { nan, 1, 0 }, Case { HUGE_VAL, 1, 0x7FFFFF } })
        EXPECT_EQ(toFixed24(value, integerBits), word) << value << " with " << integerBits << " bits";
}

TEST(FixedPoint, SplitsNumbersIntoTwoWords)
{
    struct Case
    {
        double value;
        std::uint32_t high, low;
    };
    for (const auto& [value, high, low] :
         { Case { 1.0, 0x400000, 0 }, Case { -1.0, 0xC00000, 0 }, Case { 1.0 + std::ldexp(1, -15), 0x400000, 0x400000 },
           Case { -std::ldexp(1, -15), 0xFFFF00, 0x400000 }, Case { 5.0, 0x7FFF00, 0x7FFF80 },
           Case { -5.0, 0x800000, 0 } })
    {
        const auto words = toDoubleWord(value);
        EXPECT_EQ(words.high, high) << value;
        EXPECT_NEAR(words.low, low, value == 5.0 ? 0x80 : 0) << value;
    }
}

namespace
{

double decibelsAt(const Biquad& filter, double frequency)
{
    const std::complex<double> z = std::polar(1.0, -2 * std::numbers::pi * frequency / 48000.0);
    const auto above = filter.b0 + filter.b1 * z + filter.b2 * z * z;
    const auto below = 1.0 - filter.minusA1 * z - filter.minusA2 * z * z;
    return 20 * std::log10(std::abs(above / below));
}

} // namespace

TEST(BiquadDesign, EachTypeDoesWhatItsNameSays)
{
    struct Case
    {
        FilterType type;
        double gain, frequency, expected;
    };
    constexpr double corner = 1000;
    constexpr double q = 0.8;
    const double atCorner = 20 * std::log10(q);
    for (const auto& [type, gain, frequency, expected] :
         { Case { FilterType::bypass, 9, corner, 0 }, Case { FilterType::lowPass, 0, 10, 0 },
           Case { FilterType::lowPass, 0, corner, atCorner }, Case { FilterType::highPass, 0, corner, atCorner },
           Case { FilterType::highPass, 0, 20000, 0 }, Case { FilterType::peaking, 9, corner, 9 },
           Case { FilterType::peaking, -12, corner, -12 }, Case { FilterType::peaking, 0, corner, 0 },
           Case { FilterType::lowShelf, 6, 5, 6 }, Case { FilterType::lowShelf, 6, 22000, 0 },
           Case { FilterType::highShelf, 6, 23000, 6 }, Case { FilterType::highShelf, 6, 5, 0 } })
        EXPECT_NEAR(decibelsAt(designBiquad(type, corner, q, gain), frequency), expected, 0.05)
            << static_cast<int>(type) << " at " << frequency;
}

TEST(BiquadDesign, OrdersItsWordsAsTheDspTakesThem)
{
    const auto flat = designBiquad(FilterType::bypass, Precision::single, 0, 1, 0);
    EXPECT_EQ(std::vector(flat.bytes().begin(), flat.bytes().end()),
              (std::vector<std::uint8_t> { 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x40, 0, 0 }));
    const Biquad steps { 0.25, 0.5, -0.25, -0.5, 1 };
    const FilterWords doubled(steps, Precision::doubled);
    EXPECT_EQ(std::vector(doubled.bytes().begin(), doubled.bytes().end()),
              (std::vector<std::uint8_t> { 0x10, 0, 0, 0,    0, 0, 0x20, 0, 0, 0,    0, 0, 0xF0, 0, 0,
                                           0,    0, 0, 0xE0, 0, 0, 0,    0, 0, 0x40, 0, 0, 0,    0, 0 }));
}
