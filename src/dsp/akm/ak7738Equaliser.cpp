// The filters and gains of the chip.
#include "dsp/akm/ak7738Operator.h"
#include "platform/base/Logger.h"

#include <algorithm>

namespace Dsp
{

namespace
{

constexpr double eqQ = 1.5;
constexpr int highestEqGain = 12;
constexpr double crossoverQ = 0.8;
constexpr int subwooferFrequency = 100;

/** The bands of the compensation and their gains in dB. */
constexpr int compensatedLow = 0;
constexpr int compensatedHigh = 13;
constexpr int compensation = 1;

constexpr std::array<std::uint16_t, 4> channelAddressesBank1 { 0xD3, 0xCD, 0xDF, 0xD9 };
constexpr std::array<std::uint16_t, 4> channelAddressesBank0 { 0xC1, 0xBB, 0xAF, 0xB5 };
/** Which gain a channel takes in bank 1; in bank 0 each takes its own. */
constexpr std::array<std::size_t, 4> crosswise { 2, 3, 0, 1 };

} // namespace

void ak7738Operator::writeBand(const EqBand& band, int gainDb, bool groups1And2, bool group3)
{
    const auto words = designBiquad(FilterType::peaking, band.precision, band.frequency, eqQ, gainDb);
    const std::lock_guard guard(lock);
    if (groups1And2)
    {
        writeCoefficients(band.group1, words.bytes(), Bank::one);
        writeCoefficients(band.group2, words.bytes(), Bank::zero);
    }
    if (group3)
        writeCoefficients(band.group3, words.bytes(), Bank::one);
}

void ak7738Operator::flattenEqualiser()
{
    for (const auto& band : eqBands)
        writeBand(band, 0, true, true);
}

void ak7738Operator::setGeqBand(int userBand, int gainDb, bool includeGroup3)
{
    if (userBand < 0 || userBand >= numOfUserBands)
        return;
    const int index = bandOfUserBand[static_cast<std::size_t>(userBand)];
    const int gain = std::min(gainDb, highestEqGain);
    Platform::debugPrint("Audio Set GEQ band = %d , nGain = %d ,nIndex = %d\n", userBand, gain, index);
    const std::lock_guard guard(lock);
    writeBand(eqBands[static_cast<std::size_t>(index)], gain, true, includeGroup3);
    bandGains[static_cast<std::size_t>(index)] = gain;
}

void ak7738Operator::syncGroup3(bool flat)
{
    const std::lock_guard guard(lock);
    for (std::size_t band = 0; band < eqBands.size(); ++band)
    {
        if (!flat)
            Platform::debugPrint("Audio Set GEQ2 band = %d , nGain = %d\n", static_cast<int>(band), bandGains[band]);
        writeBand(eqBands[band], flat ? 0 : bandGains[band], false, true);
    }
}

void ak7738Operator::setSystemAudioCompensation(bool on)
{
    writeBand(eqBands[compensatedLow], on ? compensation : 0, true, false);
    writeBand(eqBands[compensatedHigh], on ? -compensation : 0, true, false);
}

void ak7738Operator::writeFixedFilter(std::uint16_t address, FilterType type, int frequency, Bank bank)
{
    const auto used = frequency == 0 ? FilterType::bypass : type;
    writeCoefficients(address, designBiquad(used, Precision::doubled, frequency, crossoverQ, 0).bytes(), bank);
}

namespace
{

int crossover(int index)
{
    const auto highest = static_cast<int>(crossoverFrequencies.size()) - 1;
    return crossoverFrequencies[static_cast<std::size_t>(std::clamp(index, 0, highest))];
}

} // namespace

void ak7738Operator::setFrontHighPass(int crossoverIndex)
{
    writeFixedFilter(0xC3, FilterType::highPass, crossover(crossoverIndex), Bank::one);
    writeFixedFilter(0xA5, FilterType::highPass, crossover(crossoverIndex), Bank::zero);
}

void ak7738Operator::setHighPass(int crossoverIndex)
{
    writeFixedFilter(0x184, FilterType::highPass, crossover(crossoverIndex), Bank::one);
}

void ak7738Operator::setLowPass(int crossoverIndex)
{
    writeFixedFilter(0x11, FilterType::lowPass, crossover(crossoverIndex), Bank::one);
}

void ak7738Operator::setSubwooferLowPass(bool on)
{
    writeFixedFilter(0x1A6, FilterType::lowPass, on ? subwooferFrequency : 0, Bank::one);
}

void ak7738Operator::setChannelGains(const std::array<int, 4>& gains, Bank bank)
{
    const auto& addresses = bank == Bank::one ? channelAddressesBank1 : channelAddressesBank0;
    const std::lock_guard guard(lock);
    for (std::size_t channel = 0; channel < gains.size(); ++channel)
        writeGain(addresses[channel], std::max(gains[bank == Bank::one ? crosswise[channel] : channel], silence), bank);
}

} // namespace Dsp
