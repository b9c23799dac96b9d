#pragma once

#include "ApplicationLayer/framework/ApplicationTask.h"
#include "EngineApi/DeviceStatus.h"

namespace ApplicationLayer
{

class StandbyHandler : public AppHandler
{
public:
    StandbyHandler();
};

class AVOffHandler : public AppHandler
{
public:
    AVOffHandler();
};

/** The equaliser's page ends some time after it was hidden. */
class EQHandler : public AppHandler
{
public:
    static constexpr int closeTimer = 1;

    EQHandler();
    void onTimer(int timerId) override;
    void decorateCommandLine(EngineApi::SwitchType switchType, const EngineApi::PageStates& currentStates,
                             const EngineApi::PageStates& newStates, Platform::AppCommandLine& commandLine) override;
};

class AntitheftHandler : public AppHandler
{
public:
    AntitheftHandler();
    void decorateCommandLine(EngineApi::SwitchType switchType, const EngineApi::PageStates& currentStates,
                             const EngineApi::PageStates& newStates, Platform::AppCommandLine& commandLine) override;
};

/** The camera's page: while the camera is on, it comes back in front of whatever covers it. */
class CameraHandler : public AppHandler
{
public:
    static constexpr int showTimer = 1;

    CameraHandler();
    void onKey(juce::int32 key, juce::int32 value) override;
    void onTimer(int timerId) override;
    void decorateCommandLine(EngineApi::SwitchType switchType, const EngineApi::PageStates& currentStates,
                             const EngineApi::PageStates& newStates, Platform::AppCommandLine& commandLine) override;

    bool isCameraOn() const { return cameraOn; }

private:
    void toggle();
    void restartShowTimer();

    bool cameraOn = false; ///< as the key left it, whatever page is in front
};

/** The programs that belong to no source: standby, equaliser, anti-theft, silence and camera. */
class GeneralApplication : public ApplicationTask, private EngineApi::DeviceStateInterface
{
public:
    GeneralApplication();

    void initialize() override;
    void onRelease() override;
    void handleOwnMessage(const Kernel::SystemMessage& message) override;

private:
    explicit GeneralApplication(juce::ReferenceCountedObjectPtr<CameraHandler> cameraHandler);

    /** On the device status manager's thread: what touches the camera's page is posted to the application. */
    void onDeviceStateChanged(int kind) override;
    void followTrigger() const;

    const juce::ReferenceCountedObjectPtr<CameraHandler> camera;
};

} // namespace ApplicationLayer
