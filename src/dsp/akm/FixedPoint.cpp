#include "dsp/akm/FixedPoint.h"

#include <algorithm>
#include <cmath>

namespace Dsp
{

namespace
{

constexpr double twoTo24 = 16'777'216.0;
constexpr double highestWord = 16'777'215.0;
constexpr double highestSigned = 8'388'607.0;

} // namespace

std::uint32_t toFixed24(double value, int integerBits)
{
    double scaled = std::clamp(std::ldexp(value, 23 - integerBits), -highestSigned, highestSigned);
    if (scaled < 0.0)
        scaled += twoTo24;
    scaled = std::trunc(scaled + 0.5);
    // Written so that what is no number reads as 0.
    return scaled > 0.0 ? static_cast<std::uint32_t>(std::min(scaled, highestWord)) : 0;
}

DoubleWord toDoubleWord(double value)
{
    constexpr double lowest = -32768.0;
    constexpr double highest = 32767.99998474;
    constexpr double twoTo16 = 65536.0;
    constexpr double highestHigh = 65535.0;
    constexpr int unsignedShift = 8;
    double scaled = std::isnan(value) ? 0.0 : std::clamp(std::ldexp(value, 14), lowest, highest);
    if (scaled < 0.0)
        scaled += twoTo16;
    const double whole = std::min(std::floor(scaled), highestHigh);
    const double rest = std::clamp(std::trunc(std::ldexp(scaled - whole, 23) + 0.5), 0.0, highestSigned);
    return { static_cast<std::uint32_t>(whole) << unsignedShift, static_cast<std::uint32_t>(rest) };
}

Word gainWord(double decibels)
{
    constexpr int gainIntegerBits = 2;
    return toBytes(toFixed24(std::pow(10.0, decibels / 20.0), gainIntegerBits));
}

} // namespace Dsp
