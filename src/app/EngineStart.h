#pragma once

#include "platform/base/Time.h"
#include "platform/config/Configuration.h"

/** Builds and starts the engine once the camera leaves the screen. Message thread. */
class EngineStart : public Platform::MultiTimer
{
public:
    struct Listener
    {
        std::function<void()> held = [] {};    ///< the camera has the screen: now and again
        std::function<void()> started = [] {}; ///< the engine runs
    };
    void begin(Listener listener);
    void begin() { begin(Listener()); }

    void timerCallback(int timerId) override;

private:
    bool waitForCamera();
    void startEngine();

    Listener listener;
    Platform::CameraControl cameraControl;
};
