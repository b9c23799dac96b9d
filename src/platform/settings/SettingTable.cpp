#include "platform/settings/SettingTable.h"

#include "platform/settings/SetupIndex.h"

#include <algorithm>
#include <array>

namespace Platform
{

namespace
{

constexpr std::array onOff { "Off", "On" };
constexpr std::array auxNames { "AUX", "TV", "Media", "MP3", "NAV" };
constexpr std::array regions { "Americas", "Europe" };
constexpr std::array highPasses { "Off", "50 Hz", "80 Hz", "120 Hz" };
constexpr std::array lowPasses { "Off", "55 Hz", "85 Hz", "120 Hz" };
constexpr std::array brightnessModes { "Full", "Night", "By the lights" };
constexpr std::array outputs { "A", "B", "Both" };
constexpr std::array volumes { "With zone 1", "Its own" };
constexpr std::array presets { "Tone", "Rock", "Pop", "Jazz", "Custom" };
constexpr int steps = 12;
constexpr std::array frontAndRear { "rear 6",  "rear 5",  "rear 4",  "rear 3",  "rear 2",  "rear 1", "centre",
                                    "front 1", "front 2", "front 3", "front 4", "front 5", "front 6" };
constexpr std::array leftAndRight { "left 6",  "left 5",  "left 4",  "left 3",  "left 2",  "left 1", "centre",
                                    "right 1", "right 2", "right 3", "right 4", "right 5", "right 6" };

constexpr SettingInfo choice(int index, const char* name, const char* title, std::span<const char* const> values)
{
    return { index, name, title, 0, static_cast<int>(values.size()) - 1, values };
}

constexpr SettingInfo number(int index, const char* name, const char* title, int highest)
{
    return { index, name, title, 0, highest };
}

constexpr std::array settingTable {
    number(sourceLevelSetting, "aux-level", "AUX level", 6),
    choice(bluetoothSetting, "bluetooth", "Bluetooth", onOff),
    choice(internetRadioSetting, "internet-radio", "Internet radio of the phone", onOff),
    SettingInfo { auxNameSetting, "aux-name", "Name of AUX", 0, static_cast<int>(auxNames.size()) - 1, auxNames, true },
    choice(lowBatterySetting, "low-battery-alert", "Low-battery alert", onOff),
    choice(tunerRegionSetting, "region", "Tuner region", regions),
    choice(voltmeterSetting, "show-voltage", "Voltage with the favourites", onOff),
    choice(weatherAlertSetting, "weather-alert", "Weather alert", onOff),
    choice(lowPassSetting, "low-pass", "Low-pass of the subwoofer", lowPasses),
    choice(filtersSetting, "eq", "Equaliser", onOff),
    choice(highPassSetting, "high-pass", "High-pass of the speakers", highPasses),
    choice(subwooferSetting, "subwoofer", "Subwoofer", onOff),
    choice(faderSetting, "fader", "Fader", frontAndRear),
    choice(balanceSetting, "balance", "Balance", leftAndRight),
    choice(zone2OnSetting, "zone2", "Zone 2", onOff),
    choice(zone2OutputSetting, "zone2-outputs", "Outputs of zone 2", outputs),
    choice(zone2VolumeSetting, "zone2-volume", "Volume of zone 2", volumes),
    choice(dimmerModeSetting, "dimmer-mode", "Brightness", brightnessModes),
    number(dimmerLevelSetting, "dimmer", "Brightness level", 11),
    number(bassSetting, "bass", "Bass", steps),
    number(middleSetting, "middle", "Middle", steps),
    number(trebleSetting, "treble", "Treble", steps),
    number(subwooferLevelSetting, "subwoofer-level", "Sub", 13),
    number(firstBandSetting, "band1", "50 Hz", steps),
    number(firstBandSetting + 1, "band2", "125 Hz", steps),
    number(firstBandSetting + 2, "band3", "250 Hz", steps),
    number(firstBandSetting + 3, "band4", "500 Hz", steps),
    number(firstBandSetting + 4, "band5", "1 kHz", steps),
    number(firstBandSetting + 5, "band6", "3 kHz", steps),
    number(lastBandSetting, "band7", "8 kHz", steps),
    choice(presetSetting, "eq-preset", "Sound", presets),
    choice(dmeSetting, "usb-effect", "Effect for USB music", onOff),
};

} // namespace

std::span<const SettingInfo> allSettings()
{
    return settingTable;
}

const SettingInfo* settingInfo(int index)
{
    const auto found =
        std::find_if(settingTable.begin(), settingTable.end(), [&](auto& info) { return info.index == index; });
    return found != settingTable.end() ? &*found : nullptr;
}

} // namespace Platform
