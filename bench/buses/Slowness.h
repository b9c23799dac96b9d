#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace Bench
{

/** How much longer a simulated bus takes for each answer. Any thread. */
class Slowness
{
public:
    void set(std::chrono::milliseconds delayToUse)
    {
        {
            const std::scoped_lock guard(lock);
            delay = delayToUse;
        }
        changed.notify_all();
    }

    /** The device's thread, before it answers. Ends early when the bus is no longer slow. */
    void wait()
    {
        std::unique_lock guard(lock);
        if (delay.count() > 0)
            changed.wait_for(guard, delay, [this] { return delay.count() == 0; });
    }

private:
    std::mutex lock;
    std::condition_variable changed;
    std::chrono::milliseconds delay { 0 };
};

} // namespace Bench
