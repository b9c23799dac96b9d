#pragma once

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
        constexpr int patience = 250;
        here = true;
        leftMs = patience;
    }
    ~Observer() { here = false; }
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

    /** Whether the calling thread has one. */
    static bool isHere() { return here; }

    /** Takes one of the milliseconds that the calling thread's may still wait; throws `Busy` when there is none. */
    static void takeMillisecond()
    {
        if (leftMs-- <= 0)
            throw Busy();
    }

private:
    static inline thread_local constinit bool here = false;
    static inline thread_local constinit int leftMs = 0;
};

} // namespace Platform
