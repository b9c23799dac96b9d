// The pages that change settings: setup, and the equaliser.
#include "bench/program/profiles/Profiles.h"
#include "bench/unit/Settings.h"
#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"

#include <algorithm>
#include <array>

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

/** The setting goes on to its next value; after the last one comes the first. */
void stepOn(Host& host, const SettingInfo& setting)
{
    if (setting.isText)
    {
        const auto current = VX_GetSetupValueString(setting.index);
        const auto found = std::find_if(setting.values.begin(), setting.values.end(),
                                        [&](const char* name) { return current == name; });
        const bool isLast = found == setting.values.end() || std::next(found) == setting.values.end();
        host.changeSetting(setting.index, juce::String(isLast ? setting.values.front() : *std::next(found)));
        return;
    }
    const auto value = VX_GetSetupValueInt(setting.index);
    host.changeSetting(setting.index, value < setting.highest ? value + 1 : setting.lowest);
}

struct Tab
{
    const char* label;
    std::array<int, 6> settings;
};

constexpr std::array tabs { Tab { "Unit", { 7, 19, 21, 23, 20, 22 } },
                            Tab { "Sound", { 276, 277, 278, 279, 280, 1793 } },
                            Tab { "Zones, light", { 281, 282, 283, 285, 286, 6 } } };
constexpr int firstTabButton = 10'000; ///< above every setting

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
                content.rows.push_back({ index, setting->title, valueText(*setting) });
        return content;
    }

    void onTouch(int, int id) override
    {
        if (id >= firstTabButton)
        {
            tab = id - firstTabButton;
            host.changed();
        }
        else if (const auto* setting = Bench::settingInfo(id))
            stepOn(host, *setting);
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
            return "Touch a setting to change it";
        }
    }
};

constexpr int toneControls = 0;
constexpr int ownCurve = 4;
constexpr int flat = 6; ///< of the gains
enum EqualiserId : int { firstPreset = 0, firstUp = 2000, firstDown = 4000 };

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
        content.status = preset == toneControls || preset == ownCurve ? "Touch above or below a bar"
                                                                      : valueText(*presets) + ", a curve of the unit";
        const auto addLevels = [&](int first, int last)
        {
            for (int index = first; index <= last; ++index)
                content.levels.push_back(level(*Bench::settingInfo(index)));
        };
        if (preset == toneControls)
            addLevels(bassSetting, subwooferLevelSetting);
        else if (preset == ownCurve)
            addLevels(firstBandSetting, lastBandSetting);
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
    static Level level(const SettingInfo& setting)
    {
        const auto value = VX_GetSetupValueInt(setting.index);
        const auto gain = value - flat;
        const auto text = setting.index == subwooferLevelSetting ? juce::String(value)
                                                                 : (gain > 0 ? "+" : "") + juce::String(gain) + " dB";
        return { firstUp + setting.index, firstDown + setting.index, setting.title, text, value, setting.lowest,
                 setting.highest };
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
