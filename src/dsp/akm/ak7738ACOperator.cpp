#include "dsp/akm/ak7738ACOperator.h"

#include "dsp/DSPSettingHelper.h"
#include "dsp/akm/VolumeTable.h"
#include "dsp/akm/ak7738Operator.h"
#include "platform/base/Logger.h"

#include <algorithm>

namespace Dsp
{

namespace
{

constexpr int loudest = numOfVolumeSteps - 1;

constexpr std::uint16_t mainVolumeBank1 = 5;
constexpr std::uint16_t mainVolumeBank0 = 0x27;
constexpr std::uint16_t outputA = 0x1B0;
constexpr std::uint16_t outputB = 0x18E;
constexpr std::uint16_t muteAddress = 2;
constexpr std::uint16_t muteAddressSecond = 231;

constexpr std::array<std::uint16_t, 2> sourceLevels { 0, 1 };
constexpr std::array<std::uint16_t, 2> sourceLevelsSecond { 229, 230 };

constexpr double outputALift = 2.5;
constexpr int outputBLift = 5;
constexpr int highestLevel = 12;
constexpr int bank0SourceLift = 5;

/** What the system's own programs play comes in here. */
constexpr int systemInput = 0x2000;

constexpr int inputOfChannel(int channel)
{
    switch (channel)
    {
    case eAudioFM:
    case eAudioAM:
    case eAudioWB:
    case eAudioDAB:
        return 0x400;
    case eAudioDisc:
        return 0x800;
    case eAudioWince:
    case eAudioBTAudio:
    case eAudioPandora:
        return systemInput;
    case eAudioXM:
        return 0x12000;
    case eAudioHDMI:
        return 0x4000;
    case eAudioAux1:
    case eAudioAux2:
        return 0x8000;
    case eAudioAVOff:
        return 0x10000;
    case eAudioDVBT:
        return 0x18000;
    default:
        return 0x20000;
    }
}

constexpr std::uint8_t sourceOfInput(int input)
{
    switch (input)
    {
    case 0x400:
        return 0x1A;
    case 0x800:
    case 0x12000:
        return 0x1C;
    case systemInput:
        return 0x01;
    case 0x4000:
        return 0x06;
    case 0x8000:
    case 0x14000:
    case 0x18000:
        return 0x1B;
    case 0x10000:
        return 0x00;
    case 0x100:
        return 0x0E;
    default:
        return 0xFF;
    }
}

ak7738Operator& chip()
{
    return *ak7738Operator::getInstance();
}

} // namespace

void ak7738ACOperator::init(DSPSettingHelper& settingHelper)
{
    const std::lock_guard guard(lock);
    if (helper != nullptr)
        return;
    helper = &settingHelper;
    zone2On = helper->isZone2On();
    zone2OutputMode = helper->getZone2OutputMode();
    zone2FollowsSteps = helper->getZone2VolumeMode() == 0;
    chip().boot();
    writeMainVolume(helper->getVolume(false));
    applyZoneOutputs();
    // What was asked for before: the source that plays, and the alert over it.
    if (channel != eAudioAVOff)
        startTimer(restoreTimer, restoreMs);
    if (alertActive)
        selectInput(systemInput);
}

// Mute and volume.

void ak7738ACOperator::writeMute(bool muted)
{
    const Word word { static_cast<std::uint8_t>(muted ? 1 : 0), 0, 0 };
    chip().writeCoefficients(muteAddress, word, Bank::one);
    chip().writeCoefficients(muteAddressSecond, word, Bank::one);
    chip().writeCoefficients(muteAddress, word, Bank::zero);
}

void ak7738ACOperator::toggleMute(bool notify)
{
    const std::lock_guard guard(lock);
    if (helper == nullptr)
        return;
    mute = !mute;
    muter = Kernel::Actor::current();
    writeMute(mute);
    if (notify)
        helper->notifyMute(mute);
}

bool ak7738ACOperator::isMute()
{
    const std::lock_guard guard(lock);
    return mute;
}

DspStatus ak7738ACOperator::getStatus() const
{
    const std::lock_guard guard(lock);
    DspStatus status;
    status.isMuted = mute;
    status.isAlerting = alertActive;
    status.changesSource = isTimerRunning(restoreTimer);
    status.muter = muter;
    status.channel = channel;
    status.input = selectedInput;
    return status;
}

void ak7738ACOperator::setCurrentZone(int zone)
{
    const std::lock_guard guard(lock);
    currentZone = zone;
}

int ak7738ACOperator::volumeUp(int steps, int zone)
{
    return volumeStep(steps, zone);
}

int ak7738ACOperator::volumeUp(int steps)
{
    const std::lock_guard guard(lock);
    return volumeStep(steps, currentZone);
}

int ak7738ACOperator::volumeDown(int steps, int zone)
{
    return volumeStep(-steps, zone);
}

int ak7738ACOperator::volumeDown(int steps)
{
    const std::lock_guard guard(lock);
    return volumeStep(-steps, currentZone);
}

int ak7738ACOperator::setVolume(int volume, int zone)
{
    const std::lock_guard guard(lock);
    if (zone == 0)
        return 0;
    if (helper == nullptr || zone < 0 || zone > 2)
        return -1;
    // Zone 2 may follow the whole step, also what is beyond the end of zone 1; twice the range is no other step.
    return volumeStep(std::clamp(volume, -loudest, 2 * loudest) - helper->getVolume(zone == 2), zone);
}

int ak7738ACOperator::volumeStep(int delta, int zone)
{
    const std::lock_guard guard(lock);
    if (helper == nullptr)
        return -1;
    const int limited = std::clamp(delta, -loudest, loudest);
    if (mute)
        toggleMute(true);
    if (zone == 1)
        stepZone1(limited);
    else if (zone == 2)
        stepZone2(limited);
    else
        return -1;
    return 0;
}

void ak7738ACOperator::stepZone1(int delta)
{
    const int before = helper->getVolume(false);
    const int volume = std::clamp(before + delta, 0, loudest);
    if (volume == before)
        return;
    helper->setVolume(volume, false);
    writeMainVolume(volume);
    helper->notifyVolume(volume, 1, true);
    if (!zone2On || zone2FollowsSteps)
    {
        const int zone2Volume = zone2On ? std::clamp(helper->getVolume(true) + delta, 0, loudest) : volume;
        helper->setVolume(zone2Volume, true);
        helper->notifyVolume(zone2Volume, 2, false);
    }
    applyZoneOutputs();
}

void ak7738ACOperator::stepZone2(int delta)
{
    const int before = helper->getVolume(true);
    const int volume = std::clamp(before + delta, 0, loudest);
    if (volume == before)
        return;
    helper->setVolume(volume, true);
    helper->notifyVolume(volume, 2, true);
    applyZoneOutputs();
}

void ak7738ACOperator::writeMainVolume(int step)
{
    chip().writeGain(mainVolumeBank1, volumeLevel(volumeTableA, step), Bank::one);
    chip().writeGain(mainVolumeBank0, volumeLevel(volumeTableB, step), Bank::zero);
}

// Zone 2.

int ak7738ACOperator::zoneVolume(int zone)
{
    return helper->getVolume(zone == 2);
}

void ak7738ACOperator::applyZoneOutputs()
{
    int zoneOfA = 1;
    int zoneOfB = 1;
    if (zone2On && subwooferDirect)
    {
        Platform::debugPrint("subwoofer direct on \r\n");
        zoneOfB = 2;
    }
    else if (zone2On)
    {
        zoneOfA = zone2OutputMode == 1 ? 1 : 2;
        zoneOfB = zone2OutputMode == 0 ? 1 : 2;
    }
    chip().writeGain(outputA, volumeLevel(volumeTableA, zoneVolume(zoneOfA)) + outputALift, Bank::one);
    const int levelOfB = volumeLevel(volumeTableA, zoneVolume(zoneOfB));
    chip().writeGain(outputB, levelOfB == silence ? silence : std::min(levelOfB + outputBLift, highestLevel),
                     Bank::one);
}

void ak7738ACOperator::zone2OnChanged()
{
    const std::lock_guard guard(lock);
    if (helper == nullptr)
        return;
    zone2On = helper->isZone2On();
    applyZoneOutputs();
}

void ak7738ACOperator::zone2OutputModeChanged()
{
    const std::lock_guard guard(lock);
    if (helper == nullptr)
        return;
    zone2OutputMode = helper->getZone2OutputMode();
    applyZoneOutputs();
}

void ak7738ACOperator::zone2VolumeModeChanged()
{
    const std::lock_guard guard(lock);
    if (helper == nullptr)
        return;
    zone2FollowsSteps = helper->getZone2VolumeMode() == 0;
    applyZoneOutputs();
}

void ak7738ACOperator::setSubwooferDirect(bool on)
{
    const std::lock_guard guard(lock);
    subwooferDirect = on;
    if (helper != nullptr)
        applyZoneOutputs();
}

// Sources.

void ak7738ACOperator::setSource(int parameter, int audioChannel)
{
    const std::lock_guard guard(lock);
    if (parameter == inputParameter && audioChannel == channel)
        return;
    inputParameter = parameter;
    channel = audioChannel;
    if (helper != nullptr)
        startTimer(restoreTimer, restoreMs);
}

void ak7738ACOperator::changeSource(int audioChannel)
{
    const std::lock_guard guard(lock);
    channel = audioChannel;
    if (helper == nullptr)
        return;
    startTimer(restoreTimer, restoreMs);
    startTimer(compensationTimer, compensationMs);
    writeMute(true);
    chip().setChannelGains({ silence, silence, silence, silence }, Bank::zero);
}

void ak7738ACOperator::timerCallback(int timerId)
{
    const std::lock_guard guard(lock);
    stopTimer(timerId);
    if (timerId == compensationTimer)
    {
        chip().setSystemAudioCompensation(channel == eAudioWince);
        return;
    }
    // The alert's input is there, unless the alert came while this source, which has the same one, was not on it yet.
    const int input = alertActive ? systemInput : inputOfChannel(channel);
    if (!alertActive || selectedInput != input)
        selectInput(input);
    applySourceLevel();
    writeMute(mute);
    chip().setChannelGains(channelGains, Bank::zero);
}

void ak7738ACOperator::selectInput(int inputCode)
{
    selectedInput = inputCode;
    const auto source = sourceOfInput(inputCode);
    constexpr std::uint8_t tuner = 0x1A;
    constexpr std::uint8_t aux = 0x1B;
    constexpr std::uint8_t disc = 0x1C;
    constexpr std::uint8_t inputSwitch = 0x66;
    // The three share one path; a switch in front of it says which is on it.
    const auto path = source == aux || source == disc ? tuner : source;
    const std::uint8_t switched = source == disc ? 0x13 : source == aux ? 0x12 : 0x11;
    const std::array<RegisterValue, 4> registers {
        { { 0x37, path }, { 0x38, path }, { 0x39, path }, { inputSwitch, switched } }
    };
    chip().writeRegisters(std::span(registers).first(path == tuner ? 4 : 3));
}

void ak7738ACOperator::applySourceLevel()
{
    const std::lock_guard guard(lock);
    if (helper == nullptr)
        return;
    constexpr std::array auxLevels { -6, -4, -2, 0, 2, 4, 6 };
    int level = 0;
    switch (channel)
    {
    case eAudioWince:
        level = 1;
        break;
    case eAudioAux2:
    {
        const auto index = std::clamp(helper->getSourceLevelIndex(), 0, static_cast<int>(auxLevels.size()) - 1);
        level = auxLevels[static_cast<std::size_t>(index)] - 5;
        break;
    }
    case eAudioXM:
    case eAudioBTAudio:
        level = -10;
        break;
    case eAudioFM:
    case eAudioWB:
        level = -7;
        break;
    case eAudioAM:
        level = -8;
        break;
    case eAudioPandora:
        level = -5;
        break;
    default:
        break;
    }
    Platform::debugPrint("soruce output  %s     value:%d\r\n", audioChannelName(channel), level);
    const int limited = std::min(level, highestLevel);
    for (const auto address : sourceLevels)
        chip().writeGain(address, limited, Bank::one);
    for (const auto address : sourceLevels)
        chip().writeGain(address, std::min(level + bank0SourceLift, highestLevel), Bank::zero);
    for (const auto address : sourceLevelsSecond)
        chip().writeGain(address, limited, Bank::one);
}

void ak7738ACOperator::setAlert(bool on)
{
    const std::lock_guard guard(lock);
    if (alertActive == on)
        return;
    alertActive = on;
    const int input = inputOfChannel(channel);
    if (helper != nullptr && input != systemInput)
        selectInput(on ? systemInput : input);
}

void ak7738ACOperator::setChannelGains(int gain1, int gain2, int gain3, int gain4)
{
    const std::lock_guard guard(lock);
    channelGains = { gain1, gain2, gain3, gain4 };
}

} // namespace Dsp
