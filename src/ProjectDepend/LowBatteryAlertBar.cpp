#include "ProjectDepend/LowBatteryAlertBar.h"

#include "kernel/MessageIds.h"
#include "platform/base/Logger.h"
#include "platform/base/System.h"
#include "platform/config/Configuration.h"
#include "platform/sound/Sound.h"

namespace Bar
{

namespace
{

constexpr Platform::Log logger { "ProjectDepend/LowBatteryAlertBar", "LowBatteryAlertBar" };

constexpr juce::int32 alertOn = 1;

/** Of 0xFFFF on both channels. */
constexpr juce::uint32 alertVolume = 0xEEEEEEEE;
constexpr juce::uint32 fullVolume = 0xFFFFFFFF;

constexpr int stepMs = 100;
constexpr int stopMs = 100;

} // namespace

LowBatteryAlertBar::LowBatteryAlertBar()
    : BarWindow("LowBatteryAlertBar", "VoltmeterBar\\VoltmeterBar.bin")
{
}

LowBatteryAlertBar::~LowBatteryAlertBar()
{
    LowBatteryAlertBar::hide();
    alertThread->signalThreadShouldExit();
    alertThread->notify();
    if (!Platform::awaitEnd(*alertThread))
        static_cast<void>(alertThread.release());
}

void LowBatteryAlertBar::postMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, Kernel::Payload payload)
{
    if (passOn(self, id, arg1, arg2, payload))
        return;
    if (id != Kernel::MSG_LOW_BATTERY_ALERT)
        return;
    if (arg1 == alertOn)
        show(0);
    else
        hide();
}

void LowBatteryAlertBar::show(int parameter)
{
    if (isBarShown())
        return;
    BarWindow::show(parameter);
    startSound();
}

void LowBatteryAlertBar::hide()
{
    if (!isBarShown())
        return;
    BarWindow::hide();
    stopSound();
}

void LowBatteryAlertBar::startSound()
{
    alertThread->play();
    if (!alertThread->isThreadRunning() && !alertThread->startThread())
        logger().error("cannot start the alert sound");
}

void LowBatteryAlertBar::stopSound()
{
    // One that hangs in the sound output is not killed; it goes on with the next alert or ends as soon as it can.
    if (alertThread->isThreadRunning() && !alertThread->silence())
        logger().error("the alert sound does not end");
}

LowBatteryAlertBar::AlertAudioThread::AlertAudioThread()
    : Platform::Thread("AlertAudio")
{
}

void LowBatteryAlertBar::AlertAudioThread::play()
{
    // The wish first: whoever ends the sound before does not say any more that it is silent.
    isWanted = true;
    silent.reset();
    notify();
}

bool LowBatteryAlertBar::AlertAudioThread::silence()
{
    isWanted = false;
    notify();
    return silent.wait(stopMs);
}

void LowBatteryAlertBar::AlertAudioThread::run()
{
    while (!threadShouldExit())
    {
        if (isWanted)
        {
            Platform::setWaveOutVolume(alertVolume);
            Platform::PlaySound(Platform::AppConfig::getProfilePath() + "alert_49.wav");
            while (isWanted && !threadShouldExit())
                wait(stepMs);
            Platform::setWaveOutVolume(fullVolume);
            Platform::PlaySound({});
        }
        // An alert that has come meanwhile goes on with the next round.
        if (isWanted)
            continue;
        silent.signal();
        if (!threadShouldExit())
            wait(-1);
    }
}

} // namespace Bar
