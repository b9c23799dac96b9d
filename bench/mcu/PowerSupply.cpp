#include "bench/mcu/PowerSupply.h"

#include <algorithm>
#include <cmath>

namespace Bench
{

PowerSupply::PowerSupply(Mcu& mcuToUse)
    : mcu(mcuToUse)
{
    mcu.addListener(
        [this](const Mcu::Frame& frame)
        {
            if (frame.fromUnit && frame.command == Mcu::lastMemory) // the unit has started
                report();
        });
}

void PowerSupply::report()
{
    constexpr double voltsPerStep = 25.3 / 256;
    constexpr double highest = 255;
    const auto raw = std::clamp(std::round(current.volts / voltsPerStep), 0.0, highest);
    mcu.send({ Mcu::voltage,
               { static_cast<std::uint8_t>(raw),
                 static_cast<std::uint8_t>((current.trigger ? 1 : 0) | (current.lights ? 2 : 0)) } });
}

} // namespace Bench
