#pragma once

#include "platform/base/Time.h"
#include "platform/config/Configuration.h"

/** Builds and starts the engine once the camera leaves the screen. Message thread. */
class EngineStart : public Platform::MultiTimer
{
public:
    void begin();

    void timerCallback(int timerId) override;

private:
    void startEngine();

    Platform::CameraControl cameraControl;
};
