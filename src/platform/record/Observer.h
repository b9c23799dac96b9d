#pragma once

namespace Platform
{

/**
    As long as one lives, its thread only looks at what the others have: nothing of it is a step of a recording, and a
    lock that somebody keeps for longer than a quarter of a second is not waited for: taking it throws `Busy`.
*/
class Observer
{
public:
    struct Busy
    {
    };

    Observer() { here = true; }
    ~Observer() { here = false; }
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

    /** Whether the calling thread has one. */
    static bool isHere() { return here; }

private:
    static inline thread_local constinit bool here = false;
};

} // namespace Platform
