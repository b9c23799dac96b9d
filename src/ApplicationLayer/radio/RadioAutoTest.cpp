#include "ApplicationLayer/radio/RadioAutoTest.h"

#include <initializer_list>

namespace ApplicationLayer
{

namespace
{

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t done = 1;

/**
    The bands and steps of each area code that the equipment knows, in its notation: FM 87.50 to 107.90 MHz by 200 kHz
    and AM 530 to 1710 kHz by 10, FM 87.50 to 108.00 MHz by 50 kHz and AM 522 to 1620 kHz by 9.
*/
constexpr std::array<std::array<std::uint8_t, 11>, 2> regions { {
    { 0x00, 0x22, 0x2E, 0x2A, 0x26, 0x14, 0x02, 0x12, 0x06, 0xAE, 0x0A },
    { 0x02, 0x22, 0x2E, 0x2A, 0x30, 0x05, 0x02, 0x0A, 0x06, 0x54, 0x09 },
} };

Bytes region(int areaCode)
{
    if (areaCode < 0 || areaCode >= static_cast<int>(regions.size()))
        return {};
    const auto& known = regions[static_cast<std::size_t>(areaCode)];
    return { known.begin(), known.end() };
}

Bytes frequency(const TunerState& tuner)
{
    if (tuner.band != bandFM && tuner.band != bandAM)
        return {};
    const int value = tuner.currentFrequency();
    return { static_cast<std::uint8_t>(tuner.band == bandAM ? testBandAM : testBandFM),
             static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value) };
}

/** The first bytes of the parameters, when they are all there and begin with a band. */
Bytes echo(std::span<const std::uint8_t> parameters, std::size_t length)
{
    if (parameters.size() < length || (parameters[0] != testBandFM && parameters[0] != testBandAM))
        return {};
    return { parameters.begin(), parameters.begin() + static_cast<std::ptrdiff_t>(length) };
}

/** What follows the first two bytes. */
Bytes answer(int test, std::span<const std::uint8_t> parameters, const TunerState& tuner)
{
    switch (test)
    {
    case testShowBand:
        return echo(parameters, 1);
    case testTune:
        return echo(parameters, 3);
    case testSeekUp:
    case testSeekDown:
    case testNotifyTuner:
        return { done };
    case testReadFrequency:
        return frequency(tuner);
    case testReadRegion:
        return region(tuner.areaCode);
    default:
        return {};
    }
}

} // namespace

Bytes replyToRadioTest(std::span<const std::uint8_t> request, const TunerState& tuner)
{
    constexpr std::size_t head = 2;
    constexpr std::size_t shortest = 5;
    if (request.size() < head)
        return {};
    const auto found = answer(request[1], request.subspan(head), tuner);
    if (found.empty())
        return {};
    Bytes reply { request[0], request[1] };
    reply.insert(reply.end(), found.begin(), found.end());
    // The equipment does not take shorter ones.
    if (reply.size() < shortest)
        reply.resize(shortest);
    return reply;
}

} // namespace ApplicationLayer
