#include "platform/Configuration.h"
#include "platform/linux/XConnection.h"

namespace Platform
{

bool UIHelper::hasDisplay()
{
    return XConnection::shared() != nullptr;
}

} // namespace Platform
