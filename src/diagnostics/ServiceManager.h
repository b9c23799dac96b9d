#pragma once

#include <chrono>
#include <optional>

/** What the service manager that has started the process is told, as in sd_notify(3); without one nobody is. Any thread. */
namespace Diagnostics::ServiceManager
{

/** The unit is up and gets on, with a sentence for the manager's status line. */
void reportAlive(const char* status);
void reportStopping();

/** How soon after the last feeding the manager kills the process; none when it does not. */
std::optional<std::chrono::milliseconds> watchdogLimit();
void feedWatchdog();

} // namespace Diagnostics::ServiceManager
