#pragma once

#include "EngineApi/Bars.h"
#include "ProjectDepend/BarWindow.h"
#include "platform/base/Shared.h"
#include "platform/base/Threads.h"

namespace Bar
{

/** Shows, with a sound, that the supply voltage is low, until it is told to stop or the screen is touched beside it. */
class LowBatteryAlertBar : public EngineApi::LowBatteryBar, public BarWindow
{
public:
    LowBatteryAlertBar();
    ~LowBatteryAlertBar() override;

    /** MSG_LOW_BATTERY_ALERT; others are ignored. Any thread. */
    void postMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, Kernel::Payload payload) override;

    void show(int parameter) override;
    void hide() override;

private:
    /** Plays the alert in a loop, at a reduced volume, while it is wanted; of all alerts, from the first one on. */
    class AlertAudioThread : public Platform::Thread
    {
    public:
        AlertAudioThread();
        void run() override;
        void play();
        /** Ends the sound within 100 ms; false when the sound output takes longer, in which case it ends later. */
        bool silence();

    private:
        Platform::Shared<bool> isWanted { false };
        Platform::Event silent { true };
    };

    void startSound();
    void stopSound();

    std::unique_ptr<AlertAudioThread> alertThread = std::make_unique<AlertAudioThread>();
    const juce::Component::SafePointer<LowBatteryAlertBar> self { this };
};

} // namespace Bar
