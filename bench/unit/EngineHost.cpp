#include "bench/unit/EngineHost.h"

#include <cstdlib>

namespace Bench
{

std::string EngineHost::stall(const std::string& group, std::chrono::milliseconds time)
{
    if (!isRunning())
        return "the engine does not run";
    // The thread has the name of its group without the last word.
    const auto thread = group.substr(0, group.find_last_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ"));
    stalled.release();
    note({ pid(), group });
    const auto error = stalled.hold(pid(), thread, time,
                                    [this, group]
                                    {
                                        note({});
                                        journal.add("engine", group + " goes on");
                                    });
    if (error.empty())
        journal.add("engine", group + " stands still");
    else
        note({});
    return error.empty() ? "" : group + ": " + error;
}

std::string EngineHost::stalledGroup() const
{
    const std::scoped_lock guard(lock);
    return held.process == pid() ? held.group : "";
}

void EngineHost::note(Held now)
{
    const std::scoped_lock guard(lock);
    held = std::move(now);
}

std::string displayOfEnvironment(Display display)
{
    const char* given = display == Display::ofEnvironment ? std::getenv("DISPLAY") : nullptr;
    return given != nullptr ? given : "";
}

} // namespace Bench
