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
    return index == balanceSetting || index == faderSetting || index == presetSetting ||
           (index >= bassSetting && index <= subwooferLevelSetting);
}

void showVoltmeter(juce::int32 shown)
{
    EngineLayer::SystemInfo::getInstance()->set(EngineLayer::sysInfoVoltageShown, shown);
    if (auto* bar = Provided<FavoriteBar>::get())
        bar->postMessage(Kernel::MSG_VOLTMETER_SHOW, shown, 0, nullptr);
}

void applyToSound(ChipManager& chips, int index, juce::int32 value)
{
    auto& control = chips.getACService();
    auto& tone = chips.getEQService();
    switch (index)
    {
    case sourceLevelSetting:
        return control.applySourceLevel();
    case filtersSetting:
        tone.setSwitch(0, value != 0);
        return tone.setSwitch(1, value != 0);
    case highPassSetting:
        return tone.setHighPass(value);
    case subwooferSetting:
        tone.updateSubwoofer();
        return;
    case balanceSetting:
        tone.applyBalance();
        return;
    case faderSetting:
        tone.applyFader();
        return;
    case zone2OnSetting:
        return control.zone2OnChanged();
    case zone2OutputSetting:
        return control.zone2OutputModeChanged();
    case zone2VolumeSetting:
        return control.zone2VolumeModeChanged();
    case bassSetting:
    case middleSetting:
    case trebleSetting:
    case presetSetting:
        tone.applyPreset();
        return;
    case subwooferLevelSetting:
        return tone.setSubwooferLevel(value);
    case dmeSetting:
        return tone.setDmeState(value != 0);
    default:
        if (index >= firstBandSetting && index <= lastBandSetting)
            tone.setCustomBand(index - firstBandSetting, value);
        return;
    }
}

} // namespace

bool mattersWithoutSetup(int index)
{
    return index == sourceLevelSetting || (index >= auxNameSetting && index <= voltmeterSetting) ||
           (index >= filtersSetting && index <= zone2NameSetting) || index == dimmerLevelSetting ||
           (index >= bassSetting && index <= lastBandSetting) || index == presetSetting || index == dmeSetting;
}

void applySetting(int index)
{
    const auto value = getSettingInt(index);
    if (auto* chips = Provided<ChipManager>::get())
        applyToSound(*chips, index, value);
    if (changesNetworkReport(index))
        reportToNetwork(Kernel::MSG_NAVICO_REPORT);
    else if (index == zone2NameSetting)
        reportToNetwork(Kernel::MSG_NAVICO_SETUP_REPORT);
    else if (index == tunerRegionSetting)
        Kernel::postSystemMessage(Kernel::radioApplicationId, Kernel::MSG_RADIO_REGION, value, 0);
    else if (index == voltmeterSetting)
        showVoltmeter(value);
}

} // namespace ApplicationLayer
