#include "EngineLayer/hostlink/MonitorSendThread.h"

#include "kernel/SystemEngine.h"

namespace EngineLayer
{

namespace
{

constexpr int tickMs = 50;
constexpr int retries = 3;
constexpr int firstTicks = 5; ///< four waits lie between five ticks: about 200 ms
constexpr int tickBase = 2;   ///< 8 ticks after the first expiry, 16 after the second

} // namespace

void MonitorSendThread::initialize()
{
    retriesLeft = retries;
    ticksLeft = firstTicks;
}

void MonitorSendThread::watch(int sequence)
{
    watched = sequence;
    requestStop();
    Kernel::postSystemMessage(Kernel::monitorSendThreadId, runMessage, sequence, 0);
}

void MonitorSendThread::stopWatching()
{
    watched = nothing;
    requestStop();
}

void MonitorSendThread::runTask(const Kernel::SystemMessage& message)
{
    const int sequence = message.arg1;
    retriesLeft = retries;
    ticksLeft = firstTicks;
    // The wake-up that ended the watch before this one may still be there and would cost the first tick.
    waitForWakeUp(0);
    while (isWatching(sequence))
    {
        if (!tick(sequence))
            return;
        waitForWakeUp(tickMs);
    }
    Kernel::postSystemMessage(Kernel::hostSessionManagerId, msgSendNext, 0, 0);
}

bool MonitorSendThread::tick(int sequence)
{
    if (--ticksLeft >= 1)
        return true;
    if (--retriesLeft < 1)
    {
        Kernel::postSystemMessage(Kernel::hostSessionManagerId, msgSendFailed, sequence, 0);
        return false;
    }
    ticksLeft = tickBase << (retries + 1 - retriesLeft);
    Kernel::postSystemMessage(Kernel::hostSessionManagerId, msgResend, sequence, 0);
    return true;
}

} // namespace EngineLayer
