#include "platform/config/Configuration.h"
#include "platform/screen/linux/XDisplay.h"

namespace Platform
{

bool UIHelper::hasDisplay()
{
    return XDisplay::current() != nullptr;
}

} // namespace Platform
