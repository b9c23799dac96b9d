#include "ApplicationLayer/radio/RadioApplication.h"
#include "EngineApi/HostLink.h"
#include "lowlayer/BytePool.h"
#include "platform/base/Logger.h"
#include "platform/base/Utf8.h"

#include <algorithm>

namespace ApplicationLayer
{

using namespace EngineApi;

namespace
{

constexpr Platform::Log logger { "ApplicationLayer/RadioReception", "RadioApplication" };

/** Of a report that is empty or is the only one of its command. */
constexpr int noKind = -1;

} // namespace

void RadioApplication::fromTuner(int command, const Kernel::Payload& payload)
{
    const auto data = LowLayer::bytesOf(payload);
    if (command == EVENT_RADIO_INFO_REPORT || command == EVENT_RADIO_TESTMODE)
    {
        const bool isInfo = command == EVENT_RADIO_INFO_REPORT;
        const auto report = isInfo ? readInfoReport(data) : readTestModeReport(data);
        const int kind = isInfo && !data.empty() ? data[0] : noKind;
        if (std::holds_alternative<std::monostate>(report) && misunderstood.emplace(command, kind).second)
            logger().error("tuner report " + juce::String(command) +
                           " is not understood: " + Platform::hexPairs(data.data(), static_cast<int>(data.size())));
        std::visit([this](const auto& each) { take(each); }, report);
    }
    bodies.flush();
    // Last of all: whoever takes the buffer has to be its only holder soon.
    LowLayer::recycleBytes(payload);
}

void RadioApplication::take(const FrequencyReport& report)
{
    tuner.frequencies[report.band] = report.frequency;
    tuner.areaCode = report.areaCode;
    storeArea();
    bodies.addValue(radioArea, report.areaCode);
    bodies.addValue(radioBand, report.band);
    bodies.addValue(radioFrequency, report.frequency);
    logger().debug("updata radio frequency = " + juce::String(report.frequency) +
                   " area code = " + juce::String(report.areaCode));
    Platform::debugPrint("Radio:: updata radio band = %d , frequency = %d ,  area code = %d \r\n",
                         static_cast<int>(report.band), report.frequency, report.areaCode);
}

void RadioApplication::take(const StereoReport& report)
{
    if (testMode)
        bodies.addValue(radioStereo, report.indication);
}

void RadioApplication::take(const ProgrammeNameReport& report)
{
    takeText(radioProgrammeName, "PS name", report.bytes, psName);
}

void RadioApplication::take(const RadioTextReport& report)
{
    takeText(radioTextKey, "RT info", report.bytes, radioText);
}

void RadioApplication::takeText(RadioBodyKey key, const char* name, std::span<const std::uint8_t> text,
                                std::span<std::uint8_t> stored)
{
    if (!std::equal(text.begin(), text.end(), stored.begin(), stored.end()))
    {
        std::copy(text.begin(), text.end(), stored.begin());
        bodies.addData(key, text);
    }
    const std::string_view bytes(reinterpret_cast<const char*>(text.data()), text.size());
    Platform::debugPrint("Radio:: %s = %s  \r\n", name, Platform::textOfUtf8(bytes).toRawUTF8());
}

void RadioApplication::take(const WeatherAlertReport& report)
{
    Platform::debugPrint("Radio:: WB Alert = %d  \r\n", report.alert ? 1 : 0);
    if (std::exchange(weatherAlert, report.alert) == report.alert)
        return;
    if (weatherAlert)
        startTimer(weatherAlertTimer, weatherAlertMs);
    else
        stopTimer(weatherAlertTimer);
}

void RadioApplication::take(const SensitivityReport& report)
{
    if (!testMode || tuner.band == noBand)
        return;
    const int value = report.values[tuner.band];
    bodies.addValue(radioSensitivityKey, value);
    logger().debug("updata radio sensitivity value = " + juce::String(value));
}

} // namespace ApplicationLayer
