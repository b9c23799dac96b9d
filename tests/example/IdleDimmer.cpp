#include "example/IdleDimmer.h"

#include "kernel/MessageIds.h"

namespace
{

constexpr int fullLevel = 15;
constexpr int idleLevel = 3;

} // namespace

IdleDimmer::IdleDimmer()
    : SystemTimer(componentId)
{
}

void IdleDimmer::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32, const Kernel::Payload&)
{
    switch (id)
    {
    case Kernel::MSG_SYS_START:
    case Kernel::MSG_APP_KEY:
        brighten();
        break;
    case Kernel::MSG_SYS_TIMER:
        if (arg1 == idleTimer)
            dim();
        break;
    default:
        break;
    }
}

void IdleDimmer::brighten()
{
    level = fullLevel;
    // Starting a timer that runs begins its period anew.
    startTimer(idleTimer, idleMs);
}

void IdleDimmer::dim()
{
    level = idleLevel;
    stopTimer(idleTimer);
}
