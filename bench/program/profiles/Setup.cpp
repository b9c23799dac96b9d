// The pages that change settings: setup, and the equaliser.
#include "bench/dsp/DspModel.h"
#include "bench/program/profiles/Profiles.h"
#include "bench/unit/Settings.h"
#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/settings/EqualiserCurves.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace BenchProgram
{

using namespace Platform;
using Bench::SettingInfo;

namespace
{

juce::String valueText(const SettingInfo& setting)
{
    if (setting.isText)
        return VX_GetSetupValueString(setting.index);
    const auto value = VX_GetSetupValueInt(setting.index);
    if (value >= setting.lowest && value - setting.lowest < static_cast<int>(setting.values.size()))
        return setting.values[static_cast<std::size_t>(value - setting.lowest)];
    return juce::String(value);
}

/** Of a text, its place among those that it may be; -1 for another one. */
int currentValue(const SettingInfo& setting)
{
    if (!setting.isText)
        return VX_GetSetupValueInt(setting.index);
    const auto text = VX_GetSetupValueString(setting.index);
    const auto found =
        std::find_if(setting.values.begin(), setting.values.end(), [&](const char* name) { return text == name; });
    return found != setting.values.end() ? static_cast<int>(found - setting.values.begin()) : -1;
}

/** To the next value, or the one before; there is nothing beyond the ends. */
void step(Host& host, const SettingInfo& setting, int by)
{
    const auto value = currentValue(setting);
    const auto next = juce::jlimit(setting.lowest, setting.highest, value + by);
    if (next == value)
        return;
    if (setting.isText)
        host.changeSetting(setting.index, juce::String(setting.values[static_cast<std::size_t>(next)]));
    else
        host.changeSetting(setting.index, next);
}

/** Of two values, a touch takes the other one. */
bool isSwitch(const SettingInfo& setting)
{
    return setting.highest - setting.lowest == 1;
}

struct Tab
{
    const char* label;
    std::array<int, 6> settings;
};

constexpr std::array tabs { Tab { "Unit", { 7, 19, 21, 23, 20, 22 } },
                            Tab { "Sound", { 276, 277, 278, 279, 280, 1793 } },
                            Tab { "Zones, light", { 281, 282, 283, 285, 286, 6 } } };
/** Above every setting; a setting's own index steps it up. */
enum SetupId : int { firstTabButton = 10'000, firstDownKey = 20'000 };

/** First argument of RMSG_SETTING_NOTIFY. */
enum Notice : int { settingNotice = 2, showVersion = 8, showService = 9, showReset = 10, leaveService = 11 };

class SetupProfile : public Profile
{
public:
    using Profile::Profile;

    void onCommandLine(const AppCommandLine& line) override
    {
        const auto extra = line.getExtraData();
        if (!line.isFrontShow())
            return;
        notice = extra != nullptr && extra->getBool("showReset", false) ? showReset
                 : extra != nullptr && extra->getBool("showAMS", false) ? showService
                                                                        : 0;
    }

    void onMessage(const RemoteMessage& message) override
    {
        if (message.what != RMSG_SETTING_NOTIFY)
            return;
        if (message.arg1 >= showVersion)
            notice = message.arg1 == leaveService ? 0 : message.arg1;
        host.changed();
    }

    PageContent content(int page) const override
    {
        auto content = plainContent(page, host.getSource());
        content.status = noticeText();
        for (int i = 0; i < static_cast<int>(tabs.size()); ++i)
            content.buttons.push_back({ firstTabButton + i, tabs[static_cast<std::size_t>(i)].label, i == tab });
        for (const auto index : tabs[static_cast<std::size_t>(tab)].settings)
            if (const auto* setting = Bench::settingInfo(index))
                content.rows.push_back({ index, setting->title, valueText(*setting), false,
                                         isSwitch(*setting) ? 0 : firstDownKey + index });
        return content;
    }

    void onTouch(int, int id) override
    {
        const bool down = id >= firstDownKey;
        if (!down && id >= firstTabButton)
        {
            tab = id - firstTabButton;
            host.changed();
        }
        else if (const auto* setting = Bench::settingInfo(down ? id - firstDownKey : id))
            step(host, *setting, down || (isSwitch(*setting) && currentValue(*setting) == setting->highest) ? -1 : 1);
    }

private:
    int tab = 0;
    int notice = 0;

    juce::String noticeText() const
    {
        switch (notice)
        {
        case showVersion:
            return "Version " + VX_GetSetupValueString(applicationVersionSetting);
        case showService:
            return "Service";
        case showReset:
            return "Back to factory values ...";
        default:
            return {};
        }
    }
};

enum EqualiserId : int { firstPreset = 0, firstUp = 2000, firstDown = 4000 };

/** What the bands do together, from 20 Hz to 20 kHz. */
std::vector<juce::Point<double>> curveOf(const EqualiserCurve& gains)
{
    constexpr int points = 120;
    constexpr double lowest = 20;
    constexpr double range = 1000; ///< the highest by the lowest
    std::vector<juce::Point<double>> curve;
    for (int i = 0; i <= points; ++i)
    {
        const auto hz = lowest * std::pow(range, i / static_cast<double>(points));
        double sum = 0;
        for (std::size_t band = 0; band < gains.size(); ++band)
            sum += Bench::analoguePeakDb(hz, userBandFrequencies[band], gains[band]);
        curve.emplace_back(hz, sum);
    }
    return curve;
}

int gainOf(int setting)
{
    return VX_GetSetupValueInt(setting) - flatGain;
}

class EqualiserProfile : public Profile
{
public:
    using Profile::Profile;

    PageContent content(int page) const override
    {
        auto content = plainContent(page, host.getSource());
        const auto preset = VX_GetSetupValueInt(presetSetting);
        const auto* presets = Bench::settingInfo(presetSetting);
        for (int i = 0; i <= presets->highest; ++i)
            content.buttons.push_back({ firstPreset + i, presets->values[static_cast<std::size_t>(i)], i == preset });
        EqualiserCurve gains {};
        content.status = {};
        if (preset == toneControlsPreset)
        {
            gains[bassBand] = gainOf(bassSetting);
            gains[middleBand] = gainOf(middleSetting);
            gains[trebleBand] = gainOf(trebleSetting);
            content.levels = { level(bassSetting, gains[bassBand], userBandFrequencies[bassBand]),
                               level(middleSetting, gains[middleBand], userBandFrequencies[middleBand]),
                               level(trebleSetting, gains[trebleBand], userBandFrequencies[trebleBand]),
                               subwooferLevel() };
        }
        else
        {
            const bool isOwn = preset == userCurvePreset;
            if (!isOwn)
                gains = presetCurves[static_cast<std::size_t>(juce::jlimit(1, userCurvePreset - 1, preset) - 1)];
            for (int band = 0; band < userBandCount; ++band)
            {
                auto& gain = gains[static_cast<std::size_t>(band)];
                if (isOwn)
                    gain = gainOf(firstBandSetting + band);
                content.levels.push_back(
                    level(firstBandSetting + band, gain, userBandFrequencies[static_cast<std::size_t>(band)], !isOwn));
            }
        }
        content.curve = curveOf(gains);
        return content;
    }

    void onTouch(int, int id) override
    {
        if (id < firstUp)
            return host.changeSetting(presetSetting, id - firstPreset);
        const bool up = id < firstDown;
        const auto* setting = Bench::settingInfo(id - (up ? firstUp : firstDown));
        if (setting == nullptr)
            return;
        const auto value = VX_GetSetupValueInt(setting->index) + (up ? 1 : -1);
        if (value >= setting->lowest && value <= setting->highest)
            host.changeSetting(setting->index, value);
    }

private:
    static Level level(int index, int gain, int hz, bool fixed = false)
    {
        return { firstUp + index,
                 firstDown + index,
                 Bench::settingInfo(index)->title,
                 (gain > 0 ? "+" : "") + juce::String(gain) + " dB",
                 gain,
                 -flatGain,
                 flatGain,
                 hz,
                 fixed };
    }

    static Level subwooferLevel()
    {
        const auto* setting = Bench::settingInfo(subwooferLevelSetting);
        const auto value = VX_GetSetupValueInt(setting->index);
        return { firstUp + setting->index,
                 firstDown + setting->index,
                 setting->title,
                 juce::String(value),
                 value,
                 setting->lowest,
                 setting->highest };
    }
};

} // namespace

std::unique_ptr<Profile> makeSetupProfile(Host& host)
{
    return std::make_unique<SetupProfile>(host);
}

std::unique_ptr<Profile> makeEqualiserProfile(Host& host)
{
    return std::make_unique<EqualiserProfile>(host);
}

} // namespace BenchProgram
