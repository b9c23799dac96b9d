#pragma once

#include "ApplicationLayer/framework/ApplicationTask.h"

namespace ApplicationLayer
{

/** The main menu's page: tells its program the unit's state, takes its keys, and returns to the source when idle. */
class MainMenuHandler : public AppHandler
{
public:
    enum Timer : int { retryTimer = 1, idleTimer = 2 };

    MainMenuHandler();

    bool isResident() const override { return true; }
    void handleMessage(const Kernel::SystemMessage& message) override;
    void onKey(juce::int32 key, juce::int32 value) override;
    void onAppConnected() override { sendMenuState(); }
    void onTimer(int timerId) override;
    void decorateCommandLine(EngineApi::SwitchType switchType, const EngineApi::PageStates& currentStates,
                             const EngineApi::PageStates& newStates, Platform::AppCommandLine& commandLine) override;

    /** Tells the program which pages it can offer and which sources are current. */
    void sendMenuState() const;

private:
    void sourceKey(juce::int32 value);
    void showMenuPage(int page);
    void restartIdleTimer();
    void returnToSource() const;

    int retryPage = Pubhead::NUM_OF_PAGES; ///< waits for its program to close
};

/** The main menu program, and the commands that other programs post to the engine as window messages. */
class MainMenuApplication : public ApplicationTask
{
public:
    MainMenuApplication();
    void handleOwnMessage(const Kernel::SystemMessage& message) override;

private:
    explicit MainMenuApplication(juce::ReferenceCountedObjectPtr<MainMenuHandler> menuHandler);

    void fromProgram(const Kernel::SystemMessage& message) const;
    void command(juce::int32 which, juce::int32 value);
    void panelCommand(juce::int32 value);
    void toggleReturn();

    const juce::ReferenceCountedObjectPtr<MainMenuHandler> handler;
    bool returnPending = false; ///< the source was shown for a while; the page saved below comes back
    int savedPage = Pubhead::NUM_OF_PAGES;
};

} // namespace ApplicationLayer
