#pragma once

#include "platform/base/Histogram.h"
#include "platform/base/Time.h"

#include <utility>

namespace Kernel
{

/**
    What from outside has set off what the engine does now. It goes along with every message and every job of a device
    from the thread that posts them to the one that handles them, and ends at timers.
*/
struct Cause
{
    enum Kind : std::uint8_t {
        none,
        bytes,        ///< from a port, not known yet for what
        key,          ///< of the microcontroller or the wired remote
        sourceSwitch, ///< the microcontroller asks for a source
        command,      ///< of a display on the boat's network
        NUM_OF_KINDS
    };
    /** What it has brought about. */
    enum Stage : std::uint8_t {
        order,  ///< a program has its command line
        page,   ///< a program has shown its page
        sound,  ///< the DSP has taken words
        answer, ///< a frame with its acknowledgement or report has left
        NUM_OF_STAGES
    };

    Kind kind = none;
    Platform::Clock::time_point begin {}; ///< when its last byte was there

    static const char* kindName(Kind kind);
    static const char* stageName(Stage stage);

    /** Of what the calling thread does now. */
    static const Cause& current() { return own; }
    /** The bytes that the calling thread handles turn out to be this. */
    static void is(Kind kind)
    {
        if (own.kind == bytes)
            own.kind = kind;
    }
    /** Notes how long it took until now, the first time that it gets there. Any thread; nothing without a cause. */
    void reached(Stage stage) const;
    /** Times of all causes since the process began. */
    static const Platform::Histogram& times(Kind kind, Stage stage);

private:
    friend class CauseScope;
    static thread_local constinit Cause own;
};

/** The calling thread's cause as long as it lives; afterwards the one before. */
class CauseScope
{
public:
    explicit CauseScope(const Cause& cause)
        : before(std::exchange(Cause::own, cause))
    {
    }
    ~CauseScope() { Cause::own = before; }
    CauseScope(const CauseScope&) = delete;
    CauseScope& operator=(const CauseScope&) = delete;

private:
    const Cause before;
};

} // namespace Kernel
