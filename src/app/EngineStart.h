#pragma once

#include "platform/base/Time.h"
#include "platform/config/Configuration.h"

/** Builds and starts the engine once the camera leaves the screen. Message thread. */
class EngineStart : public Platform::MultiTimer
{
public:
    /** `whenStarted` is called once the engine runs. */
    void begin(std::function<void()> whenStarted = {});

    void timerCallback(int timerId) override;

private:
    void startEngine();

    std::function<void()> started;
    Platform::CameraControl cameraControl;
};
