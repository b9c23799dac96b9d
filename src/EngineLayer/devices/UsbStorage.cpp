#include "EngineLayer/devices/UsbStorage.h"

#include "platform/config/Configuration.h"

namespace EngineLayer
{

namespace
{

constexpr int usbMountPoints = 8;

bool isMounted(int index)
{
    if (index == 0 && Platform::CorvaneConfig::isUseSDAsUsb())
        return Platform::ExternalDeviceState::isSDConnect();
    return Platform::ExternalDeviceState::isHardDiskPresent(index);
}

} // namespace

bool isUsbStoragePresent()
{
    for (int index = 0; index < usbMountPoints; ++index)
        if (isMounted(index))
            return true;
    return false;
}

} // namespace EngineLayer
