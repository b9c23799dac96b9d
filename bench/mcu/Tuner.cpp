#include "bench/mcu/Tuner.h"

#include "bench/console/Script.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <utility>

namespace Bench
{

namespace
{

constexpr int radioInfo = 15;
constexpr int radioReport = 17;
constexpr int testModeCommand = 24;

/** First byte of EVENT_RADIO_INFO. */
enum Request : int { seekDown = 1, stepDown = 2, seekUp = 3, stepUp = 4, setFrequency = 5, setRegion = 7 };
/** First byte of EVENT_RADIO_INFO_REPORT. */
enum Kind : std::uint8_t { kindFrequency = 1, kindStereo = 2, kindName = 3, kindText = 4, kindAlert = 5 };
/** First byte of EVENT_RADIO_TESTMODE. */
constexpr int testSet = 1;

struct Limits
{
    int lowest, highest, step;
};
/** By region and band: 10 kHz on FM, kHz on AM, channels. */
constexpr Limits limits[2][Tuner::bandCount] = {
    { { 8750, 10790, 20 }, { 530, 1710, 10 }, { 1, 7, 1 } },
    { { 8750, 10800, 5 }, { 522, 1620, 9 }, { 1, 7, 1 } },
};

struct Station
{
    Tuner::Band band;
    int frequency;
    const char* name;
    const char* text;
};
constexpr Station stations[] = {
    { Tuner::fm, 8850, "HARBOUR", "Harbour radio: tides and traffic" },
    { Tuner::fm, 9470, "CLASSIC", "Evening concert from the old opera house" },
    { Tuner::fm, 10110, "OCEAN FM", "Ocean FM - music for the sea" },
    { Tuner::fm, 10470, "NIGHT", "" },
    { Tuner::am, 630, "", "" },
    { Tuner::am, 999, "", "" },
    { Tuner::am, 1000, "", "" },
    { Tuner::am, 1270, "", "" },
    { Tuner::weather, 3, "", "" },
    { Tuner::weather, 5, "", "" },
};

const Limits& limitsOf(int area, Tuner::Band band)
{
    return limits[area == 1 ? 1 : 0][band];
}

const Station* stationAt(Tuner::Band band, int frequency)
{
    const auto* found =
        std::find_if(std::begin(stations), std::end(stations),
                     [&](const auto& each) { return each.band == band && each.frequency == frequency; });
    return found != std::end(stations) ? found : nullptr;
}

/** The kind, and the text with zeros behind it. */
Bytes padded(Kind kind, const std::string& text, std::size_t size)
{
    Bytes data(size + 1, 0);
    data[0] = kind;
    std::copy_n(text.begin(), std::min(text.size(), size), data.begin() + 1);
    return data;
}

} // namespace

Tuner::Tuner(Journal& journalToUse, Mcu& mcuToUse)
    : journal(journalToUse)
    , mcu(mcuToUse)
{
    mcu.addListener([this](const Mcu::Frame& frame) { hear(frame); });
    mcu.setSourceListener([this](Source source) { select(source); });
    listen();
}

void Tuner::hear(const Mcu::Frame& frame)
{
    const auto& data = frame.data;
    if (frame.fromUnit && frame.command == testModeCommand)
        return testMode(data);
    if (!frame.fromUnit || frame.command != radioInfo || data.empty())
        return;
    switch (data[0])
    {
    case seekDown:
    case seekUp:
        return seek(data[0] == seekUp);
    case stepDown:
    case stepUp:
        return step(data[0] == stepUp);
    case setFrequency:
        if (data.size() >= 4 && data[1] < bandCount)
            tune(static_cast<Band>(data[1]), data[2] << 8 | data[3]);
        return;
    case setRegion:
        if (data.size() < 2)
            return;
        area = data[1] == 1 ? 1 : 0;
        return tune(current, frequency());
    default:
        return;
    }
}

void Tuner::select(Source source)
{
    constexpr std::pair<int, Band> bandsOfTypes[] { { 0, am }, { 1, fm }, { 22, weather } };
    for (const auto& [type, band] : bandsOfTypes)
        if (source.type == type) // back to where the band was left
            tune(band, frequencies[static_cast<std::size_t>(band)]);
}

void Tuner::send(const Reports& reports)
{
    for (const auto& report : reports)
        mcu.send(report);
}

void Tuner::testMode(const Bytes& data)
{
    if (data.size() >= 3 && data[0] == testSet && data[1] < bandCount)
        sensitivity[data[1]] = data[2];
    send({ { testModeCommand, Bytes(sensitivity.begin(), sensitivity.end()) } });
}

void Tuner::arriveAt(int frequency)
{
    if (std::exchange(frequencies[static_cast<std::size_t>(current)], frequency) != frequency && current == fm)
        listen();
}

void Tuner::listen()
{
    const auto* station = stationAt(fm, frequencies[fm]);
    name = station != nullptr ? station->name : "";
    radioText = station != nullptr ? station->text : "";
}

void Tuner::tune(Band band, int frequency)
{
    current = band;
    const auto& [lowest, highest, step] = limitsOf(area, band);
    arriveAt(std::clamp(frequency, lowest, highest));
    reportAll();
}

void Tuner::step(bool up)
{
    const auto& [lowest, highest, step] = limitsOf(area, current);
    const int next = frequency() + (up ? step : -step);
    arriveAt(next > highest ? lowest : next < lowest ? highest : next);
    reportAll();
}

void Tuner::seek(bool up)
{
    // The next station in this direction; behind the end of the band it goes on at the other.
    std::optional<int> next, first;
    for (const auto& each : stations)
    {
        if (each.band != current)
            continue;
        const auto isNearer = [up](int candidate, std::optional<int> best)
        { return !best || (up ? candidate < *best : candidate > *best); };
        const bool isAhead = up ? each.frequency > frequency() : each.frequency < frequency();
        if (isAhead && isNearer(each.frequency, next))
            next = each.frequency;
        if (isNearer(each.frequency, first))
            first = each.frequency;
    }
    arriveAt(next ? *next : first ? *first : frequency());
    reportAll();
}

void Tuner::say(const std::string& newName, const std::string& newText)
{
    name = newName;
    radioText = newText;
    send({ { radioReport, padded(kindName, name, nameSize) }, { radioReport, padded(kindText, radioText, textSize) } });
    journal.add("mcu rds", name + ": " + radioText);
}

void Tuner::setWeatherAlert(bool on)
{
    alert = on;
    send({ { radioReport, { kindAlert, static_cast<std::uint8_t>(on ? 1 : 0) } } });
    journal.add("mcu weather", on ? "alert" : "no alert");
}

void Tuner::reportAll()
{
    constexpr int byte = 8;
    Reports reports { { radioReport,
                        { kindFrequency, static_cast<std::uint8_t>(current),
                          static_cast<std::uint8_t>(frequency() >> byte), static_cast<std::uint8_t>(frequency()),
                          static_cast<std::uint8_t>(area) } } };
    if (current == fm)
    {
        const bool isStereo = stationAt(fm, frequency()) != nullptr;
        reports.push_back({ radioReport, { kindStereo, static_cast<std::uint8_t>(isStereo ? 1 : 0) } });
        // What the station says is received anew: at first there is none of it.
        for (const bool received : { false, true })
        {
            reports.push_back({ radioReport, padded(kindName, received ? name : "", nameSize) });
            reports.push_back({ radioReport, padded(kindText, received ? radioText : "", textSize) });
        }
    }
    send(reports);
    journal.add("mcu tuner", text());
}

std::string Tuner::text() const
{
    constexpr double perMegahertz = 100;
    std::ostringstream out;
    if (current == fm)
        out << "FM " << std::fixed << std::setprecision(2) << frequency() / perMegahertz;
    else
        out << (current == am ? "AM " : "WX ") << frequency();
    return out.str();
}

std::optional<std::pair<Tuner::Band, int>> Tuner::parseFrequency(const std::string& text)
{
    constexpr double perMegahertz = 100, lowestFm = 87.5, highestFm = 108, lowestAm = 522, highestAm = 1710;
    std::istringstream in(text);
    double value = 0;
    if (!(in >> value) || !in.eof())
        return {};
    if (value >= lowestFm && value <= highestFm)
        return { { fm, static_cast<int>(std::lround(value * perMegahertz)) } };
    if (value == std::floor(value) && value >= lowestAm && value <= highestAm)
        return { { am, static_cast<int>(value) } };
    return {};
}

} // namespace Bench
