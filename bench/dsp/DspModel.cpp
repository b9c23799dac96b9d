#include "bench/dsp/DspModel.h"

#include <cmath>
#include <complex>
#include <cstdio>
#include <limits>
#include <numbers>

namespace Bench
{

namespace
{

constexpr std::size_t valuesPerFilter = 5;
constexpr std::uint32_t muteOn = 0x010000;

/** What the three input registers may name, and the sockets of the analogue converter. */
struct InputName
{
    std::uint8_t value;
    const char* name;
};
constexpr InputName inputs[] = { { 0x01, "system audio" }, { 0x06, "hdmi" }, { 0x0E, "digital input" } };
constexpr InputName sockets[] = { { 0x11, "tuner" }, { 0x12, "aux" }, { 0x13, "disc" } };

double signed24(std::uint32_t word)
{
    constexpr int unused = 8;
    return static_cast<std::int32_t>(word << unused) >> unused;
}

double doublePrecisionValue(std::uint32_t high, std::uint32_t low)
{
    constexpr int padding = 8;
    const auto integer = static_cast<std::int16_t>(high >> padding & 0xFFFF);
    const auto fraction = std::ldexp(signed24(low), -23);
    return std::ldexp(integer + fraction, -14);
}

const char* nameOf(std::span<const InputName> names, std::uint8_t value)
{
    for (const auto& each : names)
        if (each.value == value)
            return each.name;
    return nullptr;
}

const char* inputName(const DspMemory& memory, std::size_t path)
{
    const auto value = memory.registers[dspPaths[path].inputRegister];
    return value == converterInput ? nameOf(sockets, memory.registers[converterRegister]) : nameOf(inputs, value);
}

Biquad filterAt(const DspMemory& memory, std::size_t bank, std::size_t address, std::size_t words)
{
    return biquadOfWords(memory.words(bank, address, words));
}

/** Size of a filter that is not part of an equaliser. */
constexpr std::size_t crossoverWords = 10;

double analoguePeakDb(double hz, double centre, double gainDb)
{
    // Audio EQ Cookbook, peakingEQ: H(s) = (s^2 + s A/Q + 1) / (s^2 + s/(A Q) + 1) with the centre at 1.
    const auto a = std::pow(10.0, gainDb / 40.0);
    const std::complex<double> s(0, hz / centre);
    const auto h = (s * s + s * (a / dspBandQuality) + 1.0) / (s * s + s / (a * dspBandQuality) + 1.0);
    return decibels(std::abs(h));
}

std::string formatted(const char* format, double value)
{
    char text[48];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

} // namespace

double gainOfWord(std::uint32_t word)
{
    return std::ldexp(signed24(word), -21);
}

Biquad biquadOfWords(std::span<const std::uint32_t> words)
{
    std::array<double, valuesPerFilter> values {};
    for (std::size_t i = 0; i < valuesPerFilter; ++i)
        values[i] = words.size() == valuesPerFilter ? std::ldexp(signed24(words[i]), -22)
                                                    : doublePrecisionValue(words[2 * i], words[2 * i + 1]);
    const auto [b2, b1, minusA2, minusA1, b0] = values;
    return { b0, b1, b2, -minusA1, -minusA2 };
}

double magnitude(const Biquad& filter, double hz)
{
    const auto z = std::polar(1.0, -2.0 * std::numbers::pi * hz / dspSampleRate);
    return std::abs((filter.b0 + (filter.b1 + filter.b2 * z) * z) / (1.0 + (filter.a1 + filter.a2 * z) * z));
}

std::string filterText(const Biquad& filter)
{
    if (filter == Biquad {})
        return "off";
    if (filter == Biquad { 0, 0, 0, 0, 0 })
        return "nothing loaded";
    // A low-pass has its zeros at half the rate, a high-pass at 0 Hz; the poles tell the frequency.
    constexpr double closeEnough = 1e-6;
    const auto side = filter.b0 == 0 ? 0 : filter.b1 / filter.b0 / 2;
    if (std::abs(std::abs(side) - 1) > closeEnough * 1000 || std::abs(filter.b2 - filter.b0) > closeEnough)
        return "filter";
    const auto alpha = (1 - filter.a2) / (1 + filter.a2);
    const auto hz = std::acos(-filter.a1 * (1 + alpha) / 2) * dspSampleRate / (2 * std::numbers::pi);
    return (side > 0 ? "low-pass " : "high-pass ") + formatted("%.0f Hz", hz);
}

double decibels(double gain)
{
    return gain > 0 ? 20 * std::log10(gain) : -std::numeric_limits<double>::infinity();
}

std::string gainText(double gain)
{
    if (gain == 0)
        return "silent";
    return (gain < 0 ? "inverted " : "") + formatted("%.1f dB", decibels(std::abs(gain)));
}

double DspGroup::gainDb(double hz) const
{
    double sum = 0;
    for (const auto& filter : filters)
        sum += decibels(magnitude(filter, hz));
    return sum;
}

double DspGroup::bandDb(std::size_t band) const
{
    return decibels(magnitude(filters.at(band), dspBands[band].hz));
}

double DspGroup::nominalDb(double hz) const
{
    double sum = 0;
    for (std::size_t band = 0; band < dspBandCount; ++band)
        if (const auto gain = bandDb(band); std::isfinite(gain))
            sum += analoguePeakDb(hz, dspBands[band].hz, gain);
    return sum;
}

DspGroup groupOf(const DspMemory& memory, std::size_t group)
{
    DspGroup result;
    const auto& place = dspGroups[group];
    result.inPath = memory.word(place.bank, place.switchAddress) == 0;
    for (std::size_t band = 0; band < dspBandCount; ++band)
        result.filters[band] = filterAt(memory, place.bank, bandAddress(group, band), dspBands[band].words);
    return result;
}

double DspOutput::gainDb(double hz) const
{
    auto sum = decibels(std::abs(fromLeft + fromRight));
    for (const auto& filter : filters)
        sum += decibels(magnitude(filter, hz));
    return sum;
}

std::vector<DspOutput> outputsOf(const DspMemory& memory)
{
    std::vector<DspOutput> outputs;
    for (const auto& place : dspOutputs)
    {
        const auto& path = dspPaths[place.path];
        DspOutput output;
        output.name = place.name;
        const auto add = [&](const Biquad& filter)
        {
            if (filter != Biquad {})
                output.filters.push_back(filter);
        };
        if (place.group != noAddress)
            if (const auto group = groupOf(memory, place.group); group.inPath)
                for (const auto& filter : group.filters)
                    add(filter);
        for (const auto address : { place.highPass, place.lowPass })
            if (address != noAddress)
                add(filterAt(memory, path.bank, address, crossoverWords));
        double gain = isRunning(memory) && inputName(memory, place.path) != nullptr && !isMuted(memory, place.path);
        for (const auto address : place.gains)
            if (address != noAddress)
                gain *= gainOfWord(memory.word(path.bank, address));
        const auto share = place.side == DspSide::both ? gain / 2 : gain;
        if (place.side != DspSide::right)
            output.fromLeft = share * gainOfWord(memory.word(path.bank, path.sourceLeft));
        if (place.side != DspSide::left)
            output.fromRight = share * gainOfWord(memory.word(path.bank, path.sourceRight));
        outputs.push_back(std::move(output));
    }
    return outputs;
}

bool isRunning(const DspMemory& memory)
{
    return memory.registers[runRegister] == runValue;
}

std::string inputText(const DspMemory& memory, std::size_t path)
{
    const auto* name = inputName(memory, path);
    return name != nullptr ? name : "nothing";
}

bool isMuted(const DspMemory& memory, std::size_t path)
{
    return memory.word(dspPaths[path].bank, dspPaths[path].mute) == muteOn;
}

bool isMuted(const DspMemory& memory)
{
    for (std::size_t path = 0; path < dspPathCount; ++path)
        if (isMuted(memory, path))
            return true;
    return false;
}

std::string parameterText(const DspMemory& memory, const DspParameter& parameter)
{
    return parameter.name + " " + valueText(memory, parameter);
}

std::string valueText(const DspMemory& memory, const DspParameter& parameter)
{
    const auto words = memory.words(parameter.bank, parameter.address, parameter.words);
    switch (parameter.kind)
    {
    case DspKind::gain:
        return gainText(gainOfWord(words[0]));
    case DspKind::mute:
        return words[0] == muteOn ? "on" : "off";
    case DspKind::groupSwitch:
        return words[0] == 0 ? "in the path" : "out of the path";
    case DspKind::filter:
        return filterText(biquadOfWords(words));
    case DspKind::band:
        return formatted("%+.1f dB", decibels(magnitude(biquadOfWords(words), parameter.hz)));
    }
    return {};
}

} // namespace Bench
