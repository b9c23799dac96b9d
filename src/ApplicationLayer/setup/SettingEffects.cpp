#include "ApplicationLayer/setup/SettingEffects.h"

#include "EngineApi/Bars.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Settings.h"
#include "EngineLayer/system/SystemInfo.h"
#include "dsp/AudioServices.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SysInfoItems.h"

namespace ApplicationLayer
{

using namespace EngineApi;

namespace
{

void reportToNetwork(juce::int32 message)
{
    Kernel::postSystemMessage(Kernel::navicoManagerId, message, 0, 0);
}

bool changesNetworkReport(int index)
{
    return index == Platform::balanceSetting || index == Platform::faderSetting || index == Platform::presetSetting ||
           (index >= Platform::bassSetting && index <= Platform::subwooferLevelSetting);
}

void showVoltmeter(juce::int32 shown)
{
    EngineLayer::SystemInfo::getInstance()->set(Platform::sysInfoVoltageShown, shown);
    if (auto* bar = Provided<FavoriteBar>::get())
        bar->postMessage(Kernel::MSG_VOLTMETER_SHOW, shown, 0, nullptr);
}

void applyToSound(Dsp::ChipManager& chips, int index, juce::int32 value)
{
    auto& control = chips.getACService();
    auto& tone = chips.getEQService();
    switch (index)
    {
    case Platform::sourceLevelSetting:
        return control.applySourceLevel();
    case Platform::filtersSetting:
        tone.setSwitch(0, value != 0);
        return tone.setSwitch(1, value != 0);
    case Platform::highPassSetting:
        return tone.setHighPass(value);
    case Platform::subwooferSetting:
        tone.updateSubwoofer();
        return;
    case Platform::balanceSetting:
        tone.applyBalance();
        return;
    case Platform::faderSetting:
        tone.applyFader();
        return;
    case Platform::zone2OnSetting:
        return control.zone2OnChanged();
    case Platform::zone2OutputSetting:
        return control.zone2OutputModeChanged();
    case Platform::zone2VolumeSetting:
        return control.zone2VolumeModeChanged();
    case Platform::bassSetting:
    case Platform::middleSetting:
    case Platform::trebleSetting:
    case Platform::presetSetting:
        tone.applyPreset();
        return;
    case Platform::subwooferLevelSetting:
        return tone.setSubwooferLevel(value);
    case Platform::dmeSetting:
        return tone.setDmeState(value != 0);
    default:
        if (index >= Platform::firstBandSetting && index <= Platform::lastBandSetting)
            tone.setCustomBand(index - Platform::firstBandSetting, value);
        return;
    }
}

} // namespace

bool mattersWithoutSetup(int index)
{
    return index == Platform::sourceLevelSetting ||
           (index >= Platform::auxNameSetting && index <= Platform::voltmeterSetting) ||
           (index >= Platform::filtersSetting && index <= Platform::zone2NameSetting) ||
           index == Platform::dimmerLevelSetting ||
           (index >= Platform::bassSetting && index <= Platform::lastBandSetting) || index == Platform::presetSetting ||
           index == Platform::dmeSetting;
}

void applySetting(int index)
{
    const auto value = getSettingInt(index);
    if (auto* chips = Provided<Dsp::ChipManager>::get())
        applyToSound(*chips, index, value);
    if (changesNetworkReport(index))
        reportToNetwork(Kernel::MSG_NAVICO_REPORT);
    else if (index == Platform::zone2NameSetting)
        reportToNetwork(Kernel::MSG_NAVICO_SETUP_REPORT);
    else if (index == Platform::tunerRegionSetting)
        Kernel::postSystemMessage(Kernel::radioApplicationId, Kernel::MSG_RADIO_REGION, value, 0);
    else if (index == Platform::voltmeterSetting)
        showVoltmeter(value);
}

} // namespace ApplicationLayer
