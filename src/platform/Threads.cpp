#include "platform/Threads.h"

#include <atomic>

namespace Platform
{

namespace
{

constexpr int endLimitMs = 200;
std::atomic<bool> stragglers { false };

} // namespace

bool awaitEnd(juce::Thread& thread)
{
    const bool ended = !thread.isThreadRunning() || thread.waitForThreadToExit(endLimitMs);
    if (!ended)
        stragglers = true;
    return ended;
}

bool hasStragglers()
{
    return stragglers;
}

} // namespace Platform
