#include "platform/base/System.h"

#include "platform/base/Time.h"
#include "platform/config/Configuration.h"
#include "platform/record/Recorder.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sched.h>

namespace Platform
{

namespace
{

constexpr juce::uint32 fullVolume = 0xFFFFFFFF;
std::atomic<juce::uint32> waveOutVolume { fullVolume };

juce::Result registryFailure(const char* prefix, int error)
{
    return juce::Result::fail(juce::String(prefix) + "RegOpenKeyEx  failure " + juce::String(error));
}

/** Seconds east of UTC in the given month (0 to 11) of this year. */
long offsetInMonth(int year, int month)
{
    std::tm date {};
    date.tm_year = year;
    date.tm_mon = month;
    date.tm_mday = 1;
    date.tm_isdst = -1;
    const auto time = std::mktime(&date);
    std::tm local {};
    localtime_r(&time, &local);
    return local.tm_gmtoff;
}

} // namespace

juce::Result writeRegistryValue(const juce::String& key, const juce::String& name, juce::uint32 value)
{
    const std::filesystem::path root = Configuration::get().registryPath.toStdString();
    const auto folder =
        root / key.replaceCharacter('\\', '/').trimCharactersAtStart("/").trimCharactersAtEnd("/").toStdString();
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        return registryFailure("", error.value());

    // Written beside and renamed: a reader, or a loss of power, sees the old value or the new one.
    const auto target = folder / name.toStdString();
    auto temporary = target;
    temporary += ".new";
    errno = 0;
    std::ofstream file(temporary, std::ios::trunc);
    file << value << '\n';
    file.close();
    if (!file)
        return registryFailure("111  ", errno);
    std::filesystem::rename(temporary, target, error);
    return error ? registryFailure("111  ", error.value()) : juce::Result::ok();
}

void disableDaylightSaving()
{
    tzset();
    const std::time_t now = std::chrono::floor<std::chrono::seconds>(timeOfDay()).count();
    std::tm today {};
    localtime_r(&now, &today);
    // Daylight saving moves the clock forward, so the smaller offset of the year is the standard one, on either half of
    // the earth, and also for zones that are defined the other way round (summer as standard, winter as exception).
    constexpr int january = 0, july = 6;
    const auto offset = std::min(offsetInMonth(today.tm_year, january), offsetInMonth(today.tm_year, july));

    constexpr int secondsPerMinute = 60, minutesPerHour = 60;
    const auto minutes = static_cast<int>(std::labs(offset) / secondsPerMinute);
    const auto clock = [minutes](const char* separator)
    {
        return juce::String(minutes / minutesPerHour).paddedLeft('0', 2) + separator +
               juce::String(minutes % minutesPerHour).paddedLeft('0', 2);
    };
    // The name is free; behind it the sign counts westwards.
    const auto text = (offset < 0 ? "<-" + clock("") + ">+" : "<+" + clock("") + ">-") + clock(":");
    setenv("TZ", text.toRawUTF8(), 1);
    tzset();
}

void setWaveOutVolume(juce::uint32 volume)
{
    waveOutVolume = volume;
}

juce::uint32 getWaveOutVolume()
{
    return waveOutVolume;
}

bool requestRealtimePriority()
{
    sched_param parameters {};
    parameters.sched_priority = sched_get_priority_min(SCHED_RR);
    constexpr pid_t callingThread = 0;
    return sched_setscheduler(callingThread, SCHED_RR | SCHED_RESET_ON_FORK, &parameters) == 0;
}

std::optional<juce::uint32> getUniqueId()
{
    constexpr int digits = 8;
    const auto text = juce::File("/etc/machine-id").loadFileAsString().substring(0, digits);
    std::optional<juce::uint32> id;
    if (text.length() == digits && text.containsOnly("0123456789abcdefABCDEF"))
        id = static_cast<juce::uint32>(text.getHexValue64());
    recordStep(Step::uniqueId, id ? juce::int64 { *id } : -1);
    return id;
}

juce::uint32 getTickCount()
{
    using namespace std::chrono;
    return static_cast<juce::uint32>(floor<milliseconds>(Clock::now().time_since_epoch()).count());
}

} // namespace Platform
