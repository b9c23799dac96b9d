#include "kernel/SystemTimer.h"

#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"

namespace Kernel
{

void SystemTimer::timerCallback(int timerId)
{
    postHandlerMessage(owner, timerPage, MSG_SYS_TIMER, timerId, 0);
}

} // namespace Kernel
