#pragma once

#include "ApplicationLayer/radio/RadioReports.h"

#include <vector>

namespace ApplicationLayer
{

/** What the test equipment of the factory asks of the radio: byte 1 of the request. */
enum RadioTest : int {
    testShowBand = 1, ///< byte 2 is a RadioTestBand, as for testTune
    testSeekUp = 3,
    testSeekDown = 4,
    testNotifyTuner = 13, ///< with the current band and frequency
    testTune = 18,        ///< bytes 3 and 4 are the frequency, high byte first
    testReadFrequency = 20,
    testReadRegion = 21
};

/** The equipment's numbers of the bands. */
enum RadioTestBand : int { testBandFM = 0, testBandAM = 3 };

/**
    The answer to a request, which begins as the request does. Empty for a request that is unknown, too short or cannot
    be answered now; such a request has no effect.
*/
std::vector<std::uint8_t> replyToRadioTest(std::span<const std::uint8_t> request, const TunerState& tuner);

} // namespace ApplicationLayer
