#include "bench/dsp/DspMap.h"

#include <vector>

namespace Bench
{

namespace
{

constexpr std::size_t singlePrecision = 5;
constexpr std::size_t doublePrecision = 10;

std::vector<DspParameter> makeParameters()
{
    using enum DspKind;
    std::vector<DspParameter> all {
        { gain, 1, 0x000, 1, "speaker source left" },
        { gain, 1, 0x001, 1, "speaker source right" },
        { mute, 1, 0x002, 1, "speaker mute" },
        { gain, 1, 0x005, 1, "speaker volume" },
        { gain, 1, 0x00B, 1, "subwoofer level" },
        { filter, 1, 0x011, doublePrecision, "subwoofer crossover" },
        { groupSwitch, 1, 0x04A, 1, "equaliser 1" },
        { filter, 1, 0x0C3, doublePrecision, "speaker crossover" },
        { gain, 1, 0x0CD, 1, "rear right" },
        { gain, 1, 0x0D3, 1, "rear left" },
        { gain, 1, 0x0D9, 1, "front right" },
        { gain, 1, 0x0DF, 1, "front left" },
        { gain, 1, 0x0E5, 1, "zone source left" },
        { gain, 1, 0x0E6, 1, "zone source right" },
        { mute, 1, 0x0E7, 1, "zone mute" },
        { groupSwitch, 1, 0x10B, 1, "equaliser 3" },
        { filter, 1, 0x184, doublePrecision, "zone crossover" },
        { gain, 1, 0x18E, 1, "output B" },
        { gain, 1, 0x194, 1, "output B left" },
        { gain, 1, 0x19A, 1, "output B right" },
        { gain, 1, 0x1A0, 1, "output A level" },
        { filter, 1, 0x1A6, doublePrecision, "output A crossover" },
        { gain, 1, 0x1B0, 1, "output A" },
        { gain, 1, 0x1B6, 1, "output A right" },
        { gain, 1, 0x1BC, 1, "output A left" },
        { gain, 0, 0x000, 1, "line source left" },
        { gain, 0, 0x001, 1, "line source right" },
        { mute, 0, 0x002, 1, "line mute" },
        { groupSwitch, 0, 0x026, 1, "equaliser 2" },
        { gain, 0, 0x027, 1, "line volume" },
        { filter, 0, 0x0A5, doublePrecision, "line crossover" },
        { gain, 0, 0x0AF, 1, "line rear left" },
        { gain, 0, 0x0B5, 1, "line rear right" },
        { gain, 0, 0x0BB, 1, "line front right" },
        { gain, 0, 0x0C1, 1, "line front left" },
    };
    for (std::size_t group = 0; group < dspGroupCount; ++group)
        for (std::size_t index = 0; index < dspBandCount; ++index)
            all.push_back({ band, dspGroups[group].bank, bandAddress(group, index), dspBands[index].words,
                            "equaliser " + std::to_string(group + 1) + " " + std::to_string(dspBands[index].hz) + " Hz",
                            dspBands[index].hz });
    return all;
}

} // namespace

const DspBand dspBands[dspBandCount] = {
    { 20, doublePrecision },   { 50, doublePrecision },    { 125, doublePrecision },  { 180, doublePrecision },
    { 250, doublePrecision },  { 500, doublePrecision },   { 630, doublePrecision },  { 1000, doublePrecision },
    { 2000, doublePrecision }, { 3000, singlePrecision },  { 4000, singlePrecision }, { 6300, singlePrecision },
    { 8000, singlePrecision }, { 10000, singlePrecision }, { 16000, singlePrecision }
};

const DspGroupPlace dspGroups[dspGroupCount] = { { "equaliser 1 (front, rear)", 1, 0x04B, 0x04A },
                                                 { "equaliser 2 (line)", 0, 0x02D, 0x026 },
                                                 { "equaliser 3 (outputs A, B)", 1, 0x10C, 0x10B } };

const DspPath dspPaths[dspPathCount] = { { "speakers", 0x37, 1, 0x000, 0x001, 0x002 },
                                         { "line", 0x38, 0, 0x000, 0x001, 0x002 },
                                         { "zones", 0x39, 1, 0x0E5, 0x0E6, 0x0E7 } };

const DspOutputPlace dspOutputs[dspOutputCount] = {
    { "front left", speakerPath, DspSide::left, 0, 0x0C3, noAddress, { 0x005, 0x0DF, noAddress } },
    { "front right", speakerPath, DspSide::right, 0, 0x0C3, noAddress, { 0x005, 0x0D9, noAddress } },
    { "rear left", speakerPath, DspSide::left, 0, 0x0C3, noAddress, { 0x005, 0x0D3, noAddress } },
    { "rear right", speakerPath, DspSide::right, 0, 0x0C3, noAddress, { 0x005, 0x0CD, noAddress } },
    { "line front left", linePath, DspSide::left, 1, 0x0A5, noAddress, { 0x027, 0x0C1, noAddress } },
    { "line front right", linePath, DspSide::right, 1, 0x0A5, noAddress, { 0x027, 0x0BB, noAddress } },
    { "line rear left", linePath, DspSide::left, 1, 0x0A5, noAddress, { 0x027, 0x0AF, noAddress } },
    { "line rear right", linePath, DspSide::right, 1, 0x0A5, noAddress, { 0x027, 0x0B5, noAddress } },
    { "output A left", zonePath, DspSide::left, 2, 0x184, 0x1A6, { 0x1A0, 0x1B0, 0x1BC } },
    { "output A right", zonePath, DspSide::right, 2, 0x184, 0x1A6, { 0x1A0, 0x1B0, 0x1B6 } },
    { "output B left", zonePath, DspSide::left, 2, 0x184, noAddress, { 0x18E, 0x194, noAddress } },
    { "output B right", zonePath, DspSide::right, 2, 0x184, noAddress, { 0x18E, 0x19A, noAddress } },
    { "subwoofer", speakerPath, DspSide::both, noAddress, noAddress, 0x011, { 0x005, 0x00B, noAddress } }
};

std::size_t bandAddress(std::size_t group, std::size_t band)
{
    auto address = dspGroups[group].firstAddress;
    for (std::size_t before = 0; before < band; ++before)
        address += dspBands[before].words;
    return address;
}

std::span<const DspParameter> dspParameters()
{
    static const auto all = makeParameters();
    return all;
}

} // namespace Bench
