#include "dsp/akm/BiquadDesign.h"

#include "dsp/akm/FixedPoint.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Dsp
{

namespace
{

constexpr double sampleRate = 48000.0;
constexpr int filterIntegerBits = 1;

} // namespace

Biquad designBiquad(FilterType type, double frequency, double q, double gainDb)
{
    const double w0 = 2.0 * std::numbers::pi * frequency / sampleRate;
    const double s = std::sin(w0);
    const double c = std::cos(w0);
    const double alpha = s / (2.0 * q);
    const double a = std::pow(10.0, gainDb / 40.0);
    double a0 = 1, a1 = 0, a2 = 0, b0 = 1, b1 = 0, b2 = 0;
    switch (type)
    {
    case FilterType::bypass:
        break;
    case FilterType::lowPass:
        a0 = 1 + alpha;
        b0 = b2 = (1 - c) / 2;
        b1 = 1 - c;
        a1 = -2 * c;
        a2 = 1 - alpha;
        break;
    case FilterType::highPass:
        a0 = 1 + alpha;
        b0 = b2 = (1 + c) / 2;
        b1 = -(1 + c);
        a1 = -2 * c;
        a2 = 1 - alpha;
        break;
    case FilterType::peaking:
        a0 = 1 + alpha / a;
        b0 = 1 + alpha * a;
        b1 = a1 = -2 * c;
        b2 = 1 - alpha * a;
        a2 = 1 - alpha / a;
        break;
    case FilterType::lowShelf:
    {
        const double k = s * std::sqrt(a / q);
        a0 = (a + 1) + (a - 1) * c + k;
        b0 = a * ((a + 1) - (a - 1) * c + k);
        b1 = 2 * a * ((a - 1) - (a + 1) * c);
        b2 = a * ((a + 1) - (a - 1) * c - k);
        a1 = -2 * ((a - 1) + (a + 1) * c);
        a2 = (a + 1) + (a - 1) * c - k;
        break;
    }
    case FilterType::highShelf:
    {
        const double k = s * std::sqrt(a / q);
        a0 = (a + 1) - (a - 1) * c + k;
        b0 = a * ((a + 1) + (a - 1) * c + k);
        b1 = -2 * a * ((a - 1) + (a + 1) * c);
        b2 = a * ((a + 1) + (a - 1) * c - k);
        a1 = 2 * ((a - 1) - (a + 1) * c);
        a2 = (a + 1) - (a - 1) * c - k;
        break;
    }
    }
    return { b2 / a0, b1 / a0, -a2 / a0, -a1 / a0, b0 / a0 };
}

FilterWords::FilterWords(const Biquad& biquad, Precision precision)
{
    const auto append = [this](std::uint32_t word)
    {
        const auto bytes = toBytes(word);
        std::copy(bytes.begin(), bytes.end(), data.begin() + static_cast<std::ptrdiff_t>(length));
        length += bytes.size();
    };
    for (const double value : { biquad.b2, biquad.b1, biquad.minusA2, biquad.minusA1, biquad.b0 })
    {
        if (precision == Precision::single)
        {
            append(toFixed24(value, filterIntegerBits));
            continue;
        }
        const auto words = toDoubleWord(value);
        append(words.high);
        append(words.low);
    }
}

FilterWords designBiquad(FilterType type, Precision precision, double frequency, double q, double gainDb)
{
    return { designBiquad(type, frequency, q, gainDb), precision };
}

} // namespace Dsp
