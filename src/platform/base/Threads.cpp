#include "platform/base/Threads.h"

#include <atomic>

namespace Platform
{

namespace
{

std::atomic<bool> stragglers { false };

} // namespace

bool awaitEnd(Thread& thread, int limitMs)
{
    const bool ended = !thread.isThreadRunning() || thread.waitForThreadToExit(limitMs);
    if (!ended)
        stragglers = true;
    return ended;
}

bool hasStragglers()
{
    return stragglers;
}

} // namespace Platform
