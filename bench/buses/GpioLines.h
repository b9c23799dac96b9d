#pragma once

#include "bench/buses/BusDevice.h"

#include <map>

namespace Bench
{

/** The general-purpose lines. Journal stream "gpio 32856": "1" for each level driven, "1 from outside". */
class GpioLines : public BusDevice
{
public:
    struct Line
    {
        std::uint32_t function = 0;
        std::uint32_t level = 0;
        unsigned writes = 0;
    };

    using BusDevice::BusDevice;

    /** The lines that the unit has touched so far. */
    std::map<std::uint32_t, Line> lines() const { return table; }
    /** A level from outside, which the unit reads. */
    void drive(std::uint32_t number, std::uint32_t level);

    static constexpr std::size_t maxLines = 1024;

private:
    std::map<std::uint32_t, Line> table;

    std::optional<Bytes> answer(int connection, Packet request) override;
};

} // namespace Bench
