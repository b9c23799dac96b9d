#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace Bench
{

// Where the words of the DSP lie and which way the sound takes through them. The addresses, and what is written to
// them, are the system's. Which output each drives is fixed by the maker's program images; the bench stands for them
// with this chain, in which every word takes part once:
//
//     input 37 > source level > mute > speaker volume +> equaliser 1 > high-pass C3 > front, rear (four gains)   core 1
//                                                     +> mono > low-pass 11 > level 0B > subwoofer               core 1
//     input 38 > source level > mute > line volume > equaliser 2 > high-pass A5 > line front, rear (four gains)  core 0
//     input 39 > source level > mute > equaliser 3 > high-pass 184 +> output B > left, right                     core 1
//                                                                  +> low-pass 1A6 > level 1A0 > output A
//                                                                                             > left, right      core 1
//
// Of the settings balance 12 is right and fader 12 is front. The words that balance 0 silences are therefore right
// ones, those that fader 0 silences are front ones.

/** What a word, or a row of words, stands for. */
enum class DspKind { gain, mute, groupSwitch, filter, band };

struct DspParameter
{
    DspKind kind;
    std::size_t bank;
    std::size_t address;
    std::size_t words; ///< 1; 5 for a single-precision filter, 10 for a double-precision one
    std::string name;
    int hz = 0; ///< centre of a band
};

/** Every parameter of the chain. */
std::span<const DspParameter> dspParameters();

constexpr double dspSampleRate = 48000;

constexpr std::size_t dspBandCount = 15;
struct DspBand
{
    int hz;
    std::size_t words;
};
/** Centre frequency and size of each band, the same in every group. */
extern const DspBand dspBands[dspBandCount];
/** The quality of every band's filter. */
constexpr double dspBandQuality = 1.5;

/** An equaliser: its filters lie one behind the other, its switch word takes it out of the path when it is not 0. */
struct DspGroupPlace
{
    const char* name;
    std::size_t bank;
    std::size_t firstAddress;
    std::size_t switchAddress;
};
constexpr std::size_t dspGroupCount = 3;
extern const DspGroupPlace dspGroups[dspGroupCount];
/** First address of a band's filter. */
std::size_t bandAddress(std::size_t group, std::size_t band);

/** What the outputs of one kind have in common. */
struct DspPath
{
    const char* name;
    std::size_t inputRegister;
    std::size_t bank;
    std::size_t sourceLeft, sourceRight;
    std::size_t mute;
};
enum DspPathIndex : std::size_t { speakerPath, linePath, zonePath, dspPathCount };
extern const DspPath dspPaths[dspPathCount];

constexpr std::size_t noAddress = SIZE_MAX;

enum class DspSide { left, right, both };

/** One output: its path and what lies in it beside what the path has. Addresses may be `noAddress`. */
struct DspOutputPlace
{
    const char* name;
    DspPathIndex path;
    DspSide side;
    std::size_t group; ///< the equaliser in its way, or noAddress
    std::size_t highPass, lowPass;
    std::size_t gains[3];
};
constexpr std::size_t dspOutputCount = 13;
extern const DspOutputPlace dspOutputs[dspOutputCount];

constexpr std::uint8_t converterInput = 0x1A;   ///< in an input register: the analogue converter
constexpr std::size_t converterRegister = 0x66; ///< which socket it listens to
constexpr std::size_t runRegister = 0x85;
constexpr std::uint8_t runValue = 0x1F;

} // namespace Bench
