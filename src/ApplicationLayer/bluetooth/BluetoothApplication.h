#pragma once

#include "ApplicationLayer/framework/ApplicationTask.h"
#include "EngineApi/Settings.h"

#include <deque>
#include <span>

namespace ApplicationLayer
{

/** The phone page never takes the sound from another page, as no call tells the engine of itself. */
class BTPhoneHandler : public AppHandler
{
public:
    BTPhoneHandler();
    bool isResident() const override { return true; }
    void adjustScheduleInfo(EngineApi::ScheduleInfo& info) override;
    int getAudioChannel() const override;
    void decorateCommandLine(EngineApi::SwitchType switchType, const EngineApi::PageStates& currentStates,
                             const EngineApi::PageStates& newStates, Platform::AppCommandLine& commandLine) override;

    /** The page opens at its device list, once. */
    void openDeviceList();

private:
    bool goToDeviceList = false;
};

/** Tells the iPod program when its protocol runs over the Bluetooth link. */
class BTAudioHandler : public AppHandler
{
public:
    BTAudioHandler();
    bool isResident() const override { return true; }
    void decorateCommandLine(EngineApi::SwitchType switchType, const EngineApi::PageStates& currentStates,
                             const EngineApi::PageStates& newStates, Platform::AppCommandLine& commandLine) override;
};

/**
    The Bluetooth program: follows the module's state, mirrors it for the other programs, switches the module with its
    setting, and looks after the serial link that carries the iPod and Pandora protocols.
*/
class BluetoothApplication : public ApplicationTask,
                             public Kernel::SystemTimer,
                             private EngineApi::SettingDataChangeListener
{
public:
    enum Timer : int { offTimer = 2, pandoraTimer = 6, supplyTimer = 8, autoTestTimer = 9 };

    BluetoothApplication();
    void initialize() override;
    void onRelease() override;
    void handleOwnMessage(const Kernel::SystemMessage& message) override;

private:
    BluetoothApplication(juce::ReferenceCountedObjectPtr<BTPhoneHandler> phoneHandler,
                         juce::ReferenceCountedObjectPtr<BTAudioHandler> audioHandler);

    /** The data manager's thread; goes on on the application's. */
    void onSettingChanged(int index, int origin) override;
    bool acceptsKey(int index, int origin) override;

    void switchOff();
    void switchOnIfEnabled();
    void timerExpired(int timerId);
    void sourceChanged(int page, juce::int32 value);

    void moduleReports(juce::int32 what, juce::int32 value);
    void moduleState(juce::int32 value);
    void disconnected();
    void callState(juce::int32 value);
    void pairedListShown();
    void sppLink(juce::int32 value);
    void sppOpened();
    void pandoraLink(juce::int32 value);

    void autoTest(std::span<const std::uint8_t> request);

    const juce::ReferenceCountedObjectPtr<BTPhoneHandler> phone;
    const juce::ReferenceCountedObjectPtr<BTAudioHandler> audio;
    bool sppOpen = false;
    bool btConnected = false;
    std::deque<std::vector<std::uint8_t>> lateReplies; ///< to the test equipment, once the module had its time
};

} // namespace ApplicationLayer
