#include "kernel/SystemTask.h"

namespace Kernel
{

void SingalTask::dispatchMessage(const SystemMessage& message)
{
    if (message.id != runMessage)
        return;
    stop = false;
    idle = false;
    runTask(message);
    stop = true;
    idle = true;
}

void SingalTask::requestStop()
{
    stop = true;
    wakeUp.signal();
}

} // namespace Kernel
