#include "ProjectDepend/LowBatteryAlertBar.h"

#include "kernel/MessageIds.h"
#include "platform/Configuration.h"
#include "platform/Logger.h"
#include "platform/Sound.h"
#include "platform/System.h"
#include "platform/Threads.h"

namespace Bar
{

namespace
{

constexpr juce::int32 alertOn = 1;

/** Of 0xFFFF on both channels. */
constexpr juce::uint32 alertVolume = 0xEEEEEEEE;
constexpr juce::uint32 fullVolume = 0xFFFFFFFF;

constexpr int stepMs = 100;

} // namespace

LowBatteryAlertBar::LowBatteryAlertBar()
    : BarWindow("LowBatteryAlertBar", "VoltmeterBar\\VoltmeterBar.bin")
{
}

LowBatteryAlertBar::~LowBatteryAlertBar()
{
    LowBatteryAlertBar::hide();
}

void LowBatteryAlertBar::postMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, Kernel::Payload payload)
{
    if (CallbackMessage::passOn(self, id, arg1, arg2, payload))
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
    if (!alertThread->startThread())
        Platform::Logger::getInstance()->logError("ProjectDepend/LowBatteryAlertBar", __LINE__, "LowBatteryAlertBar",
                                                  "cannot start the alert sound");
}

void LowBatteryAlertBar::stopSound()
{
    alertThread->signalThreadShouldExit();
    alertThread->notify();
    if (Platform::awaitEnd(*alertThread))
        return;
    // It hangs in the sound output. It is not killed, and the next alert has a thread of its own.
    Platform::Logger::getInstance()->logError("ProjectDepend/LowBatteryAlertBar", __LINE__, "LowBatteryAlertBar",
                                              "the alert sound does not end");
    static_cast<void>(alertThread.release());
    alertThread = std::make_unique<AlertAudioThread>();
}

LowBatteryAlertBar::AlertAudioThread::AlertAudioThread()
    : juce::Thread("AlertAudio")
{
}

void LowBatteryAlertBar::AlertAudioThread::run()
{
    Platform::enterThread(getThreadName());
    Platform::setWaveOutVolume(alertVolume);
    Platform::PlaySound(Platform::AppConfig::getProfilePath() + "alert_49.wav");
    while (!threadShouldExit())
        wait(stepMs);
    Platform::setWaveOutVolume(fullVolume);
    Platform::PlaySound({});
}

} // namespace Bar
