#pragma once

#include <array>
#include <cstdint>
#include <span>

/** Second-order filters for the DSP, which runs at 48000 Hz. Pure functions. */
namespace Dsp
{

enum class FilterType : int { bypass = 0, lowPass = 1, highPass = 2, peaking = 5, lowShelf = 6, highShelf = 7 };

/** Double: two words a coefficient. */
enum class Precision : int { doubled = 0, single = 1 };

/** In the order in which the DSP takes them, each divided by a0. */
struct Biquad
{
    double b2, b1, minusA2, minusA1, b0;
};

/**
    Audio EQ Cookbook (R. Bristow-Johnson), with the shelves' slope term sin(w0)·sqrt(A/Q). Frequency in Hz below 24000,
    Q above 0, gain in dB (peaking and shelves).
*/
Biquad designBiquad(FilterType type, double frequency, double q, double gainDb);

/** The words of a filter as bytes: 15 single, 30 doubled. */
class FilterWords
{
public:
    FilterWords(const Biquad& biquad, Precision precision);
    std::span<const std::uint8_t> bytes() const { return { data.data(), length }; }

private:
    std::array<std::uint8_t, 30> data {};
    std::size_t length = 0;
};

/** Both in one. */
FilterWords designBiquad(FilterType type, Precision precision, double frequency, double q, double gainDb);

} // namespace Dsp
