#include "platform/Configuration.h"
#include "platform/linux/XDisplay.h"

namespace Platform
{

bool UIHelper::hasDisplay()
{
    return XDisplay::current() != nullptr;
}

} // namespace Platform
