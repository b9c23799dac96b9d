#include "ApplicationLayer/radio/RadioReports.h"

namespace ApplicationLayer
{

namespace
{

enum ReportKind : int {
    frequencyReport = 1,
    stereoReport = 2,
    programmeNameReport = 3,
    radioTextReport = 4,
    weatherAlertReport = 5
};

RadioReport readFrequency(std::span<const std::uint8_t> data)
{
    constexpr std::size_t length = 5;
    if (data.size() < length || data[1] >= numberOfBands)
        return {};
    return FrequencyReport { static_cast<RadioBand>(data[1]), data[2] << 8 | data[3], data[4] };
}

/** The text after the kind, for a report with as many bytes as its type says. */
template <typename Report>
RadioReport readText(std::span<const std::uint8_t> data)
{
    constexpr auto length = decltype(Report::bytes)::extent;
    if (data.size() <= length)
        return {};
    return Report { data.subspan<1, length>() };
}

} // namespace

RadioReport readInfoReport(std::span<const std::uint8_t> data)
{
    constexpr std::size_t shortest = 2;
    if (data.size() < shortest)
        return {};
    switch (data[0])
    {
    case frequencyReport:
        return readFrequency(data);
    case stereoReport:
        return StereoReport { data[1] };
    case programmeNameReport:
        return readText<ProgrammeNameReport>(data);
    case radioTextReport:
        return readText<RadioTextReport>(data);
    case weatherAlertReport:
        return WeatherAlertReport { data[1] != 0 };
    default:
        return {};
    }
}

RadioReport readTestModeReport(std::span<const std::uint8_t> data)
{
    if (data.size() < numberOfBands)
        return {};
    return SensitivityReport { { data[bandFM], data[bandAM], data[bandWB] } };
}

} // namespace ApplicationLayer
