#pragma once

#include "bench/mcu/Mcu.h"

namespace Bench
{

/**
    The keys of the front panel and its dimmer, behind the microcontroller. It answers a power off or on that the unit asks
    for with its power key.

    Journal streams: "mcu power" (off and on, each time the power key goes out), "mcu hold" and "mcu flood" ("N sent, M
    skipped", when they end).
*/
class Panel
{
public:
    using Milliseconds = std::chrono::milliseconds;

    /** Both must outlive it. */
    Panel(Journal& journalToUse, Mcu& mcuToUse);
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    void pressKey(int value, int origin);
    /** Presses a key every 100 ms for this long, at least once, then releases it. A key held before is released now. */
    void hold(int value, int origin, Milliseconds duration);
    /** Presses keys in turn, see McuSeries::flood. */
    void flood(const Bytes& keys, int perSecond, Milliseconds duration);
    /** Level 0 to 11, moved at the panel. */
    void setDimmer(int level);
    void unitRestarts() { current.powered = true; }

    struct State
    {
        bool powered = true; ///< as the power key said last
        int dimmer = 11;     ///< 0 to 11
    };
    State state() const { return current; }

    static constexpr Milliseconds holdInterval { 100 };

private:
    Journal& journal;
    Mcu& mcu;
    State current;

    void hear(const Mcu::Frame& frame);
};

} // namespace Bench
