#include "EngineApi/DeviceStatus.h"

#include "EngineLayer/devices/DeviceStatusManager.h"

namespace EngineApi
{

namespace
{

EngineLayer::DeviceStatusManager& manager()
{
    return *EngineLayer::DeviceStatusManager::getInstance();
}

} // namespace

void setDeviceState(int kind, bool present)
{
    manager().setDeviceState(kind, present);
}

bool getDeviceState(int kind)
{
    return manager().getDeviceState(kind);
}

void addDeviceStateListener(DeviceStateInterface* listener)
{
    manager().addDeviceStateListener(listener);
}

void removeDeviceStateListener(DeviceStateInterface* listener)
{
    manager().removeDeviceStateListener(listener);
}

void startSourceWhenReady()
{
    manager().startSourceWhenReady();
}

int getStartPage()
{
    return manager().getStartPage();
}

bool isDummyPowerOffCondition()
{
    return false;
}

bool isISRCondition()
{
    return manager().isISRCondition();
}

bool isCallCondition()
{
    return false;
}

void audioChannelChanged()
{
    manager().audioChannelChanged();
}

int getAntitheftValue()
{
    return manager().getAntitheftValue();
}

bool isDiscAudioAvailable()
{
    return manager().isDiscAudioAvailable();
}

bool isDiscVideoAvailable()
{
    return manager().isDiscVideoAvailable();
}

void setLowBatteryAlert(bool on)
{
    manager().setLowBatteryAlert(on);
}

bool isLowBatteryAlert()
{
    return manager().isLowBatteryAlert();
}

void setEnterTestMode(bool on)
{
    manager().setEnterTestMode(on);
}

bool getEnterTestMode()
{
    return manager().getEnterTestMode();
}

} // namespace EngineApi
