#pragma once

#include "ApplicationLayer/ApplicationTask.h"

namespace ApplicationLayer
{

class BTPhoneHandler : public AppHandler
{
public:
    BTPhoneHandler();
    bool isResident() const override { return true; }
    /** The phone takes the sound only during a call. */
    void adjustScheduleInfo(EngineLayer::ScheduleInfo& info) override;
};

class BTAudioHandler : public AppHandler
{
public:
    BTAudioHandler();
    bool isResident() const override { return true; }
};

/** The Bluetooth program: phone and music. */
class BluetoothApplication : public ApplicationTask
{
public:
    BluetoothApplication();
};

} // namespace ApplicationLayer
