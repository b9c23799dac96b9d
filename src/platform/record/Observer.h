#pragma once

#include "platform/base/Time.h"

namespace Platform
{

/**
    As long as one lives, its thread only looks at what the others have: nothing of it is a step of a recording, and for
    locks that others keep it waits a quarter of a second in all: then taking one of them throws `Busy`.
*/
class Observer
{
public:
    struct Busy
    {
    };

    Observer()
    {
        constexpr std::chrono::milliseconds patience { 250 };
        here = true;
        until = Clock::now() + patience;
    }
    ~Observer() { here = false; }
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

    /** Whether the calling thread has one. */
    static bool isHere() { return here; }

    /** Whether that of the calling thread has waited for long enough. */
    static bool isImpatient() { return Clock::now() > until; }

private:
    static inline thread_local constinit bool here = false;
    static inline thread_local constinit Clock::time_point until {};
};

} // namespace Platform
