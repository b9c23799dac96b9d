#pragma once

#include "bench/mcu/Mcu.h"

namespace Bench
{

/**
    What the boat's wiring brings to the microcontroller, which reports it: the battery, the lights of the boat's panels
    and the trigger of the camera.
*/
class PowerSupply
{
public:
    /** It must outlive this. */
    explicit PowerSupply(Mcu& mcuToUse);
    PowerSupply(const PowerSupply&) = delete;
    PowerSupply& operator=(const PowerSupply&) = delete;

    struct State
    {
        double volts = 12.6; ///< 0 to 25.2
        bool lights = false;
        bool trigger = false;
    };
    State state() const { return current; }

    void setVolts(double volts) { current.volts = volts, report(); }
    void setLights(bool on) { current.lights = on, report(); }
    void setTrigger(bool on) { current.trigger = on, report(); }

private:
    Mcu& mcu;
    State current;

    void report();
};

} // namespace Bench
