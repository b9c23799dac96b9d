#include "bench/unit/Settings.h"

#include "bench/console/Script.h"
#include "bench/text/Names.h"

#include <algorithm>
#include <array>

namespace Bench
{

namespace
{

constexpr std::array onOff { "Off", "On" };
constexpr std::array auxNames { "AUX", "TV", "Media", "MP3", "NAV" };
constexpr std::array regions { "Americas", "Europe" };
constexpr std::array highPasses { "Off", "50 Hz", "80 Hz", "120 Hz" };
constexpr std::array lowPasses { "Off", "55 Hz", "85 Hz", "120 Hz" };
constexpr std::array brightnessModes { "Full", "Night", "By the lights" };
constexpr std::array outputs { "Zone 2 on A", "Zone 2 on B", "Zone 2 on both" };
constexpr std::array volumes { "With zone 1", "Its own" };
constexpr std::array presets { "Tone", "Rock", "Pop", "Jazz", "Custom" };
constexpr int steps = 12;

constexpr SettingInfo choice(int index, const char* name, const char* title, std::span<const char* const> values)
{
    return { index, name, title, 0, static_cast<int>(values.size()) - 1, values };
}

constexpr SettingInfo number(int index, const char* name, const char* title, int highest)
{
    return { index, name, title, 0, highest };
}

constexpr std::array settingTable {
    number(6, "aux-level", "AUX level", 6),
    choice(7, "bluetooth", "Bluetooth", onOff),
    choice(9, "internet-radio", "Internet radio of the phone", onOff),
    SettingInfo { 19, "aux-name", "Name of AUX", 0, static_cast<int>(auxNames.size()) - 1, auxNames, true },
    choice(20, "low-battery-alert", "Low-battery alert", onOff),
    choice(21, "region", "Tuner region", regions),
    choice(22, "show-voltage", "Voltage with the favourites", onOff),
    choice(23, "weather-alert", "Weather alert", onOff),
    choice(267, "low-pass", "Low-pass of the subwoofer", lowPasses),
    choice(276, "eq", "Equaliser", onOff),
    choice(277, "high-pass", "High-pass of the speakers", highPasses),
    choice(278, "subwoofer", "Subwoofer", onOff),
    number(279, "fader", "Fader", steps),
    number(280, "balance", "Balance", steps),
    choice(281, "zone2", "Zone 2", onOff),
    choice(282, "zone2-outputs", "Outputs of zone 2", outputs),
    choice(283, "zone2-volume", "Volume of zone 2", volumes),
    choice(285, "dimmer-mode", "Brightness", brightnessModes),
    number(286, "dimmer", "Brightness level", 11),
    number(1281, "bass", "Bass", steps),
    number(1282, "middle", "Middle", steps),
    number(1283, "treble", "Treble", steps),
    number(1284, "subwoofer-level", "Sub", 13),
    number(1285, "band1", "50 Hz", steps),
    number(1286, "band2", "125 Hz", steps),
    number(1287, "band3", "250 Hz", steps),
    number(1288, "band4", "500 Hz", steps),
    number(1289, "band5", "1 kHz", steps),
    number(1290, "band6", "3 kHz", steps),
    number(1291, "band7", "8 kHz", steps),
    choice(1792, "eq-preset", "Sound", presets),
    choice(1793, "usb-effect", "Effect for USB music", onOff),
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

std::optional<int> findSetting(const std::string& name)
{
    constexpr int highestSetting = 0xffff;
    for (const auto& info : settingTable)
        if (name == info.name)
            return info.index;
    return parseNumber(name, 0, highestSetting);
}

std::vector<std::string> settingNames()
{
    return namesIn(settingTable);
}

} // namespace Bench
