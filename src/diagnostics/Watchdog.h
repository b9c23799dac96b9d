#pragma once

#include "platform/base/Time.h"

#include <atomic>
#include <memory>
#include <string>

namespace Diagnostics
{

/**
    Goes round the task groups and the message thread, and feeds the service manager's watchdog as long as all of them get
    on. A handler that takes longer than half of its time is named in the log, once; then the watchdog is left hungry and
    the unit is restarted. Without a service manager the line is all. One observer's thread.
*/
class Watchdog
{
public:
    Watchdog();

    /** How often `look` is to be called. */
    std::chrono::milliseconds period() const { return limit / 2; }
    void look();

    /** What does not get on; "" while all do. */
    std::string stuck() const;

private:
    /** That of the message thread; it may answer when this is gone. */
    struct Answer
    {
        std::atomic<bool> awaited { false };
        Platform::Clock::time_point asked;
    };

    void askMessageThread();

    bool feeds = false; ///< the service manager wants it
    std::chrono::milliseconds limit;
    std::shared_ptr<Answer> messageThread = std::make_shared<Answer>();
    std::string named;
};

} // namespace Diagnostics
