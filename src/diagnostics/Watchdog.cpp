#include "diagnostics/Watchdog.h"

#include "diagnostics/ServiceManager.h"
#include "diagnostics/Text.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/base/Threads.h"

namespace Diagnostics
{

namespace
{

constexpr Platform::Log logger { "diagnostics/Watchdog", "Watchdog" };

Platform::Counter stuckHandlers { "engine.handlers-stuck", "handlers that took longer than the watchdog allows" };

/** Without a service manager. */
constexpr std::chrono::milliseconds ownLimit { 5000 };

} // namespace

Watchdog::Watchdog()
    : limit(ownLimit)
{
    if (const auto given = ServiceManager::watchdogLimit())
    {
        feeds = true;
        limit = *given / 2;
    }
}

void Watchdog::askMessageThread()
{
    if (messageThread->awaited.exchange(true))
        return;
    messageThread->asked = Platform::Clock::now();
    Platform::callOnMessageThread([answer = messageThread] { answer->awaited = false; });
}

std::string Watchdog::stuck() const
{
    for (const auto& group : Kernel::SystemEngine::getInstance()->getGroupStatus())
        if (group.isStuck(limit))
            return text(group.name + " " + group.describe());
    if (messageThread->awaited && Platform::Clock::now() - messageThread->asked > limit)
        return "the message thread does not get on";
    return {};
}

void Watchdog::look()
{
    const auto now = stuck();
    if (now.empty() && feeds)
        ServiceManager::feedWatchdog();
    if (!now.empty() && now != named)
    {
        ++stuckHandlers;
        logger().error("%s for more than %lld ms%s", now.c_str(), static_cast<long long>(limit.count()),
                       feeds ? ": the watchdog is not fed any more" : "");
    }
    named = now;
    askMessageThread();
}

} // namespace Diagnostics
