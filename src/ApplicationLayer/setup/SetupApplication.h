#pragma once

#include "ApplicationLayer/framework/ApplicationTask.h"
#include "ApplicationLayer/setup/Dimmer.h"
#include "EngineApi/Settings.h"
#include "EngineLayer/settings/WaitingChanges.h"

#include <cstdint>
#include <span>

namespace ApplicationLayer
{

/**
    The application of the setup program: carries out changed settings, and follows the dimmer and the supply voltage.
    Its state is used only on its own thread.
*/
class SetupApplication : public ApplicationTask, private EngineApi::SettingDataChangeListener
{
public:
    SetupApplication();

    void initialize() override;
    void onRelease() override;
    void handleOwnMessage(const Kernel::SystemMessage& message) override;

private:
    using Bytes = std::span<const std::uint8_t>;

    /** Both on the data manager's thread; the change is posted to the application. */
    void onSettingChanged(int index, int origin) override;
    bool acceptsKey(int index, int origin) override;

    void settingChanged(int index);
    void hostEvent(juce::int32 command, Bytes data);
    void dimmerReported(Bytes data) const;
    void voltageReported(Bytes data);
    void showVoltage(int raw);
    void watchBattery(double volts);
    void switchAlertOn() const;
    void followLights(bool on);
    void dimmerModeChosen() const;
    void dimmerMoved() const;

    bool lightsOn = false;       ///< the boat's illumination
    bool lowVoltage = false;     ///< the supply is below 10.5 V
    juce::int32 voltageRaw = -1; ///< as reported last, 0 to 255; nothing was before the first report
    bool dimmerSynced = false;   ///< the dimmer was sent once, so the lights are known
    EngineLayer::WaitingChanges changes { "setup application" };
};

} // namespace ApplicationLayer
