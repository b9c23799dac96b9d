#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <sys/types.h>
#include <thread>

namespace Bench
{

/**
    One thread of a child process that does not get on for a while, as if its code hung, while all others go on. The
    system must allow the bench to trace the process. Any thread, one at a time.
*/
class HeldThread
{
public:
    /** Called when it goes on; not when the process has ended meanwhile. On the holding thread. */
    using Released = std::function<void()>;

    /**
        Returns when the thread stands still: empty, else what failed. It is found by the name that the system shows, 15
        bytes at most, and never the first of its process: those that wait for the process would hear of its stop. It
        is held as soon as it waits for something, after a second in any case. What was held before is released.
    */
    std::string hold(pid_t process, const std::string& threadName, std::chrono::milliseconds time, Released released);
    /** Returns when it goes on. Nothing when none is held. */
    void release();

private:
    std::jthread holder;
};

} // namespace Bench
