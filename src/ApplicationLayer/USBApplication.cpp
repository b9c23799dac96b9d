#include "ApplicationLayer/USBApplication.h"

#include "kernel/ComponentRegistration.h"

namespace ApplicationLayer
{

namespace
{

const Kernel::ComponentRegistration registration { Kernel::usbApplicationId,
                                                   []() -> Kernel::SystemTask* { return new USBApplication; } };

} // namespace

USBAudioHandler::USBAudioHandler()
    : AppHandler(Pubhead::mbUSBAudio)
{
}

USBVideoHandler::USBVideoHandler()
    : AppHandler(Pubhead::mbUSBVideo)
{
}

USBApplication::USBApplication()
    : ApplicationTask({ new USBAudioHandler, new USBVideoHandler })
{
}

} // namespace ApplicationLayer
