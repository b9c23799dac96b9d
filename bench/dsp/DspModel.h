#pragma once

#include "bench/dsp/DspMap.h"
#include "bench/dsp/DspMemory.h"

#include <string>
#include <vector>

namespace Bench
{

/** One second-order section: y = b0 x + b1 x' + b2 x'' - a1 y' - a2 y''. */
struct Biquad
{
    double b0 = 1, b1 = 0, b2 = 0, a1 = 0, a2 = 0;
    bool operator==(const Biquad&) const = default;
};

/** A word with two integer bits: -4 to below 4. */
double gainOfWord(std::uint32_t word);
/**
    A filter in the order b2, b1, -a2, -a1, b0: 5 words with one integer bit each, or 10 words, two for each value v:
    the first holds the integer part of v x 2^14 as 16 bits and 8 more bits that are 0, the second its fraction in 23
    bits.
*/
Biquad biquadOfWords(std::span<const std::uint32_t> words);

/** Gain of the filter at a frequency in Hz, at the DSP's rate of 48000 Hz. */
double magnitude(const Biquad& filter, double hz);
/** "off", "low-pass 100 Hz", "high-pass 80 Hz", "nothing loaded" for zeros, "filter" for any other. */
std::string filterText(const Biquad& filter);
/** Minus infinity for 0. */
double decibels(double gain);
/** "-33.0 dB", "silent". */
std::string gainText(double gain);

/** An equaliser as its words have it. */
struct DspGroup
{
    bool inPath = true;
    std::array<Biquad, dspBandCount> filters;

    double gainDb(double hz) const;
    /** Gain of one filter at its own frequency: what the user set. */
    double bandDb(std::size_t band) const;
    /** The same settings as analogue peaking filters with a quality of 1.5 would make them. */
    double nominalDb(double hz) const;
};
DspGroup groupOf(const DspMemory& memory, std::size_t group);

/** One output: what reaches it from the two input channels, and the filters on its way. */
struct DspOutput
{
    std::string name;
    double fromLeft = 0, fromRight = 0; ///< linear, of everything on its way
    std::vector<Biquad> filters;        ///< without those that do nothing

    /** For the same signal on both input channels. */
    double gainDb(double hz) const;
    bool isSilent() const { return fromLeft == 0 && fromRight == 0; }
};
/** In the order of `dspOutputs`. Silent while the DSP does not run, has no input or is muted. */
std::vector<DspOutput> outputsOf(const DspMemory& memory);

bool isRunning(const DspMemory& memory);
/** "tuner", "aux", "nothing" ... what the path listens to. */
std::string inputText(const DspMemory& memory, std::size_t path);
bool isMuted(const DspMemory& memory, std::size_t path);
/** Any of them. */
bool isMuted(const DspMemory& memory);
/** What a parameter's words mean: "-33.0 dB", "high-pass 80 Hz", "on". */
std::string valueText(const DspMemory& memory, const DspParameter& parameter);
/** With its name: "speaker volume -33.0 dB", "equaliser 1 500 Hz +4.0 dB". */
std::string parameterText(const DspMemory& memory, const DspParameter& parameter);

} // namespace Bench
