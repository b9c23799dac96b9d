#include "dsp/DSPSettingHelperImpl.h"

#include "platform/config/Configuration.h"
#include "platform/settings/EqualiserCurves.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"

#include <algorithm>

namespace Dsp
{

namespace
{

constexpr const char* iniSection = "Volume";
constexpr std::array iniKeys { "Src", "Zone2", "Navi", "Phone" };

/** Tone settings are stored as 0 to twice their middle. */
constexpr int balanceRange = 12;
constexpr int bandMiddle = 7;

int setting(int index)
{
    return Platform::VX_GetSetupValueInt(index);
}

/** The setting, or the nearest value of 0 to `highest`. */
int settingUpTo(int highest, int index)
{
    return std::clamp(setting(index), 0, highest);
}

int aroundMiddle(int middle, int index)
{
    return settingUpTo(2 * middle, index) - middle;
}

} // namespace

DSPSettingHelperImpl::DSPSettingHelperImpl()
{
    file.setFileName(juce::File(Platform::AppConfig::getSystemFilePath()).getChildFile("VX_Volume.ini"));
    for (std::size_t which = 0; which < iniKeys.size(); ++which)
    {
        const int stored = file.getInt(iniSection, iniKeys[which], 0);
        volumes[which] = stored >= 0 && stored <= loudestVolume ? stored : 0;
    }
}

DSPSettingHelperImpl::~DSPSettingHelperImpl()
{
    storeNow();
}

void DSPSettingHelperImpl::storeNow()
{
    if (isTimerRunning())
        timerCallback();
}

void DSPSettingHelperImpl::set(Volume which, int volume)
{
    volumes[static_cast<std::size_t>(which)] = volume;
    file.setInt(iniSection, iniKeys[static_cast<std::size_t>(which)], volume);
}

int DSPSettingHelperImpl::getVolume(bool ofZone2)
{
    return get(ofZone2 ? zone2 : source);
}

int DSPSettingHelperImpl::getNaviVolume()
{
    return get(navigation);
}

int DSPSettingHelperImpl::getPhoneVolume()
{
    return get(phone);
}

void DSPSettingHelperImpl::setVolume(int volume, bool ofZone2)
{
    set(ofZone2 ? zone2 : source, volume);
    startTimer(writeDelayMs);
}

void DSPSettingHelperImpl::setNaviVolume(int volume)
{
    set(navigation, volume);
    file.update();
}

void DSPSettingHelperImpl::setPhoneVolume(int volume)
{
    set(phone, volume);
    file.update();
}

void DSPSettingHelperImpl::timerCallback()
{
    stopTimer();
    file.update();
}

int DSPSettingHelperImpl::getSetting14()
{
    return setting(Platform::setting14);
}

int DSPSettingHelperImpl::getSetting264()
{
    return setting(Platform::setting264);
}

int DSPSettingHelperImpl::getEqPreset()
{
    return setting(Platform::presetSetting);
}

bool DSPSettingHelperImpl::isEqSwitchOn()
{
    return setting(Platform::filtersSetting) != 0;
}

int DSPSettingHelperImpl::getBalance()
{
    return balanceRange - settingUpTo(balanceRange, Platform::balanceSetting);
}

int DSPSettingHelperImpl::getFader()
{
    return balanceRange - settingUpTo(balanceRange, Platform::faderSetting);
}

int DSPSettingHelperImpl::getBassGain()
{
    return aroundMiddle(Platform::flatGain, Platform::bassSetting);
}

int DSPSettingHelperImpl::getMiddleGain()
{
    return aroundMiddle(Platform::flatGain, Platform::middleSetting);
}

int DSPSettingHelperImpl::getTrebleGain()
{
    return aroundMiddle(Platform::flatGain, Platform::trebleSetting);
}

int DSPSettingHelperImpl::getSubwooferLevelIndex()
{
    return settingUpTo(13, Platform::subwooferLevelSetting);
}

bool DSPSettingHelperImpl::isSubwooferOn()
{
    return setting(Platform::subwooferSetting) != 0;
}

int DSPSettingHelperImpl::getCrossoverFrequency()
{
    constexpr std::array frequencies { 0, 55, 85, 120 };
    return frequencies[static_cast<std::size_t>(settingUpTo(frequencies.size() - 1, Platform::lowPassSetting))];
}

int DSPSettingHelperImpl::getHighPassIndex()
{
    return settingUpTo(3, Platform::highPassSetting);
}

int DSPSettingHelperImpl::getBandLevel257()
{
    return aroundMiddle(bandMiddle, Platform::band257);
}

int DSPSettingHelperImpl::getBandLevel261()
{
    return aroundMiddle(bandMiddle, Platform::band261);
}

int DSPSettingHelperImpl::getBandLevel258()
{
    return aroundMiddle(bandMiddle, Platform::band258);
}

int DSPSettingHelperImpl::getBandLevel259()
{
    return aroundMiddle(bandMiddle, Platform::band259);
}

int DSPSettingHelperImpl::getBandLevel260()
{
    return aroundMiddle(bandMiddle, Platform::band260);
}

int DSPSettingHelperImpl::getBandLevel262()
{
    return aroundMiddle(bandMiddle, Platform::band262);
}

int DSPSettingHelperImpl::getBandLevel263()
{
    return aroundMiddle(bandMiddle, Platform::band263);
}

int DSPSettingHelperImpl::getSourceLevelIndex()
{
    return settingUpTo(6, Platform::sourceLevelSetting);
}

int DSPSettingHelperImpl::getCustomEqGain(int band)
{
    return aroundMiddle(Platform::flatGain, Platform::firstBandSetting + std::clamp(band, 0, 6));
}

bool DSPSettingHelperImpl::isZone2On()
{
    return setting(Platform::zone2OnSetting) != 0;
}

int DSPSettingHelperImpl::getZone2VolumeMode()
{
    return setting(Platform::zone2VolumeSetting);
}

int DSPSettingHelperImpl::getZone2OutputMode()
{
    return settingUpTo(2, Platform::zone2OutputSetting);
}

void DSPSettingHelperImpl::setListener(CDSPStateListener* newListener)
{
    const std::lock_guard guard(listenerLock);
    listener = newListener;
}

void DSPSettingHelperImpl::notifyVolume(int volume, int zone, bool show)
{
    const std::lock_guard guard(listenerLock);
    if (listener != nullptr)
        listener->onVolumeChanged(volume, zone, show);
}

void DSPSettingHelperImpl::notifyPair(int first, int second)
{
    const std::lock_guard guard(listenerLock);
    if (listener != nullptr)
        listener->onSecondNotice(first, second);
}

void DSPSettingHelperImpl::notifyMute(bool mute)
{
    const std::lock_guard guard(listenerLock);
    if (listener != nullptr)
        listener->onMuteChanged(mute);
}

void DSPSettingHelperImpl::notifyFourth(int value)
{
    const std::lock_guard guard(listenerLock);
    if (listener != nullptr)
        listener->onFourthNotice(value & 0xff);
}

} // namespace Dsp
