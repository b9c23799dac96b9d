#pragma once

#include "app/EngineStart.h"
#include "app/MainWindow.h"
#include "app/TerminationSignal.h"
#include "diagnostics/Service.h"

/**
    The application object: prepares the process, starts the engine, and takes it down.
*/
class MainApplication : public juce::JUCEApplication, public juce::ActionListener
{
public:
    MainApplication();
    ~MainApplication() override;

    const juce::String getApplicationName() override { return "MainApplication"; }
    const juce::String getApplicationVersion() override { return HEADUNIT_VERSION; }
    /** True, because `Platform::InstanceLock` has ensured one engine for each unit, not for each machine. */
    bool moreThanOneInstanceAllowed() override { return true; }
    void initialise(const juce::String& commandLine) override;
    void shutdown() override;
    void anotherInstanceStarted(const juce::String&) override {}

    /** "showWindow" and "hideWindow", exactly; any other text is ignored. */
    void actionListenerCallback(const juce::String& message) override;

private:
    TerminationSignal terminationSignal;
    MainWindow mainWindow;
    EngineStart engineStart;
    Diagnostics::Service diagnostics;
};
