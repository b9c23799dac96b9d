#include "dsp/akm/ak7738EQOperator.h"

#include "dsp/DSPSettingHelper.h"
#include "dsp/akm/ak7738Operator.h"
#include "platform/base/Logger.h"

#include <algorithm>

namespace Dsp
{

namespace
{

constexpr Platform::Log logger { "dsp/akm/ak7738EQOperator", "ak7738EQOperator" };

using Curve = Platform::EqualiserCurve;

constexpr Curve dmeOffsets { 1, 0, 1, 0, -1, -2, 2 };

/**
    dB by position, 6 is the middle: one fades out upwards, the other downwards. Positions count from right (0) to left
    (12) and from front (0) to rear (12): what fades out upwards is right and front.
*/
constexpr std::array<int, 13> fadeUp { 0, 0, 0, 0, 0, 0, 0, -10, -15, -20, -25, -30, -144 };
constexpr std::array<int, 13> fadeDown { -144, -30, -25, -20, -15, -10, 0, 0, 0, 0, 0, 0, 0 };

constexpr std::array<int, 14> subwooferLevels { -144, -21, -19, -17, -15, -13, -11, -9, -7, -5, -3, -2, -1, 0 };
constexpr int fullSubwoofer = 13;
constexpr int levelLift = 3;
constexpr int highestLevel = 12;

constexpr std::uint16_t level = 0x0B;
constexpr std::uint16_t subwooferLevel = 0x1A0;
constexpr std::uint16_t outputARight = 0x1B6;
constexpr std::uint16_t outputALeft = 0x1BC;
constexpr std::uint16_t outputBRight = 0x19A;
constexpr std::uint16_t outputBLeft = 0x194;
constexpr int subwooferLift = 4;

ak7738Operator& chip()
{
    return *ak7738Operator::getInstance();
}

template <std::size_t size>
int at(const std::array<int, size>& table, int index)
{
    return table[static_cast<std::size_t>(std::clamp(index, 0, static_cast<int>(size) - 1))];
}

} // namespace

void ak7738EQOperator::init(DSPSettingHelper& settingHelper, ACService& audioControl)
{
    const std::lock_guard guard(lock);
    helper = &settingHelper;
    audio = &audioControl;
    applyPreset();
    setSubwooferLevel(helper->getSubwooferLevelIndex());
    setHighPass(helper->getHighPassIndex());
    chip().setLowPass(0);
    updateSubwoofer();
    applyBalanceFader();
    setSwitch(0, helper->isEqSwitchOn());
    setSwitch(1, helper->isEqSwitchOn());
}

// The equaliser.

bool ak7738EQOperator::presetGains(std::array<int, numOfUserBands>& gains) const
{
    const int preset = helper->getEqPreset();
    gains = {};
    if (preset == Platform::toneControlsPreset)
    {
        gains[Platform::bassBand] = helper->getBassGain();
        gains[Platform::middleBand] = helper->getMiddleGain();
        gains[Platform::trebleBand] = helper->getTrebleGain();
    }
    else if (preset == Platform::userCurvePreset)
    {
        for (std::size_t band = 0; band < gains.size(); ++band)
            gains[band] = helper->getCustomEqGain(static_cast<int>(band));
    }
    else if (preset > Platform::toneControlsPreset && preset < Platform::userCurvePreset)
        gains = Platform::presetCurves[static_cast<std::size_t>(preset - 1)];
    else
        return false;
    return true;
}

void ak7738EQOperator::writeUserBand(std::size_t band)
{
    chip().setGeqBand(static_cast<int>(band), baseGains[band] + (dmeOn ? dmeOffsets[band] : 0), !subwooferOn);
}

bool ak7738EQOperator::applyPreset()
{
    const std::lock_guard guard(lock);
    Curve gains {};
    if (helper == nullptr || !presetGains(gains))
        return true;
    baseGains = gains;
    for (std::size_t band = 0; band < baseGains.size(); ++band)
        writeUserBand(band);
    return true;
}

void ak7738EQOperator::setDmeState(bool on)
{
    const std::lock_guard guard(lock);
    if (dmeOn == on)
        return;
    Platform::debugPrint("set usb DME state = %d \n", on ? 1 : 0);
    dmeOn = on;
    if (helper == nullptr)
        return;
    for (std::size_t band = 0; band < baseGains.size(); ++band)
        writeUserBand(band);
}

void ak7738EQOperator::setCustomBand(int band, int stored)
{
    const std::lock_guard guard(lock);
    if (helper == nullptr || helper->getEqPreset() != Platform::userCurvePreset || band < 0 || band >= numOfUserBands)
        return;
    baseGains[static_cast<std::size_t>(band)] = std::clamp(stored, 0, 2 * Platform::flatGain) - Platform::flatGain;
    chip().setGeqBand(band, baseGains[static_cast<std::size_t>(band)], true);
}

void ak7738EQOperator::setSwitch(int which, bool on)
{
    const auto word = toBytes(on ? 0x000000 : 0x100000);
    const std::lock_guard guard(lock);
    if (helper == nullptr)
        return;
    if (which != 0)
    {
        chip().writeCoefficients(0x10B, word, Bank::one);
        return;
    }
    chip().writeCoefficients(0x4A, word, Bank::one);
    chip().writeCoefficients(0x26, word, Bank::zero);
}

// Balance, fader, subwoofer.

int ak7738EQOperator::applyBalance()
{
    applyBalanceFader();
    return 0;
}

int ak7738EQOperator::applyFader()
{
    applyBalanceFader();
    return 0;
}

void ak7738EQOperator::applyBalanceFader()
{
    const std::lock_guard guard(lock);
    if (helper == nullptr)
        return adjustSpeakers();
    const int fader = helper->getFader();
    const int balance = helper->getBalance();
    Platform::debugPrint("Fader = %d ,balance = %d \n", fader, balance);
    // Front left and right, rear left and right.
    const std::array gains { at(fadeUp, fader) + at(fadeDown, balance), at(fadeUp, fader) + at(fadeUp, balance),
                             at(fadeDown, fader) + at(fadeDown, balance), at(fadeDown, fader) + at(fadeUp, balance) };
    juce::String values;
    for (const int gain : gains)
        values << " " << gain;
    logger().info("Set Balance Fader:" + values);
    // A source that is restored meanwhile takes these, or is overtaken by them.
    audio->setChannelGains(gains[0], gains[1], gains[2], gains[3]);
    chip().setChannelGains(gains, Bank::zero);
    chip().setChannelGains(gains, Bank::one);
    adjustSpeakers();
}

void ak7738EQOperator::adjustSpeakers()
{
    if (helper == nullptr)
    {
        logger().error("AdjustSpeaker error");
        return;
    }
    const int right = at(fadeUp, helper->getBalance());
    const int left = at(fadeDown, helper->getBalance());
    if (!subwooferOn)
    {
        chip().writeGain(outputARight, right, Bank::one);
        chip().writeGain(outputALeft, left, Bank::one);
    }
    chip().writeGain(outputBRight, right, Bank::one);
    chip().writeGain(outputBLeft, left, Bank::one);
}

void ak7738EQOperator::setSubwooferLevel(int index)
{
    const std::lock_guard guard(lock);
    if (helper == nullptr)
        return;
    const int decibels = at(subwooferLevels, index);
    chip().writeGain(level, decibels == silence ? silence : std::min(decibels + levelLift, highestLevel), Bank::one);
    if (subwooferOn)
        chip().writeGain(subwooferLevel, decibels, Bank::one);
}

void ak7738EQOperator::setHighPass(int index)
{
    const std::lock_guard guard(lock);
    if (helper == nullptr)
        return;
    chip().setFrontHighPass(index);
    if (!subwooferOn)
        chip().setHighPass(index);
}

bool ak7738EQOperator::updateSubwoofer()
{
    const std::lock_guard guard(lock);
    if (helper == nullptr)
        return true;
    subwooferOn = helper->isSubwooferOn();
    chip().setHighPass(subwooferOn ? 0 : helper->getHighPassIndex());
    chip().setSubwooferLowPass(subwooferOn);
    chip().writeGain(subwooferLevel,
                     at(subwooferLevels, subwooferOn ? helper->getSubwooferLevelIndex() : fullSubwoofer), Bank::one);
    audio->setSubwooferDirect(subwooferOn);
    chip().syncGroup3(subwooferOn);
    if (subwooferOn)
    {
        chip().writeGain(outputALeft, subwooferLift, Bank::one);
        chip().writeGain(outputARight, silence, Bank::one);
    }
    adjustSpeakers();
    return true;
}

} // namespace Dsp
