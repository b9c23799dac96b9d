#pragma once

#include "ApplicationLayer/framework/AppHandler.h"

namespace ApplicationLayer
{

/**
    The page of the setup program: its keys, the way back to the source when nobody touches it, and the factory reset.
*/
class SetupHandler : public AppHandler
{
public:
    enum Timer : int { resetTimer = 1, idleTimer = 2 };

    SetupHandler();

    void onKey(juce::int32 key, juce::int32 value) override;
    void onTimer(int timerId) override;
    void decorateCommandLine(EngineApi::SwitchType switchType, const EngineApi::PageStates& currentStates,
                             const EngineApi::PageStates& newStates, Platform::AppCommandLine& commandLine) override;

private:
    void mmsKey();
    void amsKey();
    void versionKey();
    void restartIdleTimer();

    void announceReset();
    void deleteSettings();

    bool showAMS = false;    ///< KEY_AMS1 asked for the page last
    bool showReset = false;  ///< the next page that is shown is that of the reset
    bool amsPending = false; ///< KEY_MMS1 did; neither is set before the first of them
};

} // namespace ApplicationLayer
