#include "platform/System.h"

namespace Platform
{

bool requestRealtimePriority()
{
    return false;
}

} // namespace Platform
