#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <variant>

namespace ApplicationLayer
{

/** The tuner's bands, as the microcontroller and the radio program number them. */
enum RadioBand : int { bandFM = 0, bandAM = 1, bandWB = 2, noBand = 3 };
inline constexpr int numberOfBands = 3;

/**
    The tuner as far as it is known. Frequencies are the tuner's numbers, 0 for unknown; in the weather band channels.
*/
struct TunerState
{
    static constexpr int unknownArea = -1;

    /** 0 without a band. */
    int currentFrequency() const { return band == noBand ? 0 : frequencies[static_cast<std::size_t>(band)]; }

    RadioBand band = noBand; ///< of the radio page that was last ordered
    std::array<int, numberOfBands> frequencies {};
    int areaCode = unknownArea; ///< the tuner's region
};

struct FrequencyReport
{
    RadioBand band;
    int frequency;
    int areaCode;
};
struct StereoReport
{
    int indication;
};
/** Bytes of the report itself; their character set is the station's. */
struct ProgrammeNameReport
{
    std::span<const std::uint8_t, 8> bytes;
};
struct RadioTextReport
{
    std::span<const std::uint8_t, 64> bytes;
};
struct WeatherAlertReport
{
    bool alert;
};
struct SensitivityReport
{
    std::array<int, numberOfBands> values;
};

/** monostate for one that is too short, of no known kind or of no band. */
using RadioReport = std::variant<std::monostate, FrequencyReport, StereoReport, ProgrammeNameReport, RadioTextReport,
                                 WeatherAlertReport, SensitivityReport>;

/** EVENT_RADIO_INFO_REPORT: byte 0 is the kind. */
RadioReport readInfoReport(std::span<const std::uint8_t> data);
/** EVENT_RADIO_TESTMODE from the microcontroller: one sensitivity for each band. */
RadioReport readTestModeReport(std::span<const std::uint8_t> data);

} // namespace ApplicationLayer
