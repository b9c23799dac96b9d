#pragma once

#include "platform/base/Time.h"

#include <chrono>

namespace EngineLayer
{

/**
    The camera's video decoder on the I2C bus. Its calls wait for the bus, a second at most: one thread at a time, and
    none that others wait for.
*/
class VideoDecoder
{
public:
    /**
        Powers the decoder and writes its registers; only the first call does anything, whether or not it succeeds. The
        first register that is not taken ends it.
    */
    void initialise();
    /**
        True when the decoder sees a picture; false also when it does not answer. One that does not is left alone for
        thirty times as long as it was waited for.
    */
    bool hasSignal();

    enum class Probe { noBus, silent, answers };
    /** Reads a register. A decoder without power is silent. */
    static Probe probe();

private:
    using Clock = Platform::Clock;

    bool initialised = false;
    Clock::time_point leftAloneUntil;
};

} // namespace EngineLayer
