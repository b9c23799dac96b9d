#pragma once

#include "app/MainWindow.h"
#include "app/TerminationSignal.h"
#include "platform/base/Time.h"
#include "platform/config/Configuration.h"

/**
    The application object: prepares the process, builds the engine once the camera leaves the screen, and takes it
    down.
*/
class MainApplication : public juce::JUCEApplication, public Platform::MultiTimer, public juce::ActionListener
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

    void timerCallback(int timerId) override;
    /** "showWindow" and "hideWindow", exactly; any other text is ignored. */
    void actionListenerCallback(const juce::String& message) override;

private:
    void startEngine();

    TerminationSignal terminationSignal;
    MainWindow mainWindow;
    Platform::CameraControl cameraControl;
};
