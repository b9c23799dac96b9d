#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <chrono>
#include <cstdint>

namespace Platform
{

/**
    How long something took, each time, in a fixed memory: up to 32 us to the microsecond, above that in 32 steps to each
    doubling, so a value is at most 3 % off (the layout of the HDR histograms). Beyond 34 s it counts as 34 s. Any thread.
*/
class Histogram
{
public:
    using Duration = std::chrono::microseconds;

    void add(Duration duration)
    {
        const auto value = static_cast<std::uint64_t>(std::max<std::int64_t>(0, duration.count()));
        counts[std::min(indexOf(value), size - 1)].fetch_add(1, std::memory_order_relaxed);
    }

    std::uint64_t count() const
    {
        std::uint64_t sum = 0;
        for (const auto& each : counts)
            sum += each.load(std::memory_order_relaxed);
        return sum;
    }
    /** That which `share` of all did not exceed; 0.5 is the median, 1 the longest. 0 when there was none. */
    Duration at(double share) const
    {
        const auto wanted = static_cast<double>(count()) * share;
        std::uint64_t sum = 0;
        for (std::size_t i = 0; i < size; ++i)
        {
            sum += counts[i].load(std::memory_order_relaxed);
            if (sum > 0 && static_cast<double>(sum) >= wanted)
                return Duration(highestAt(i));
        }
        return {};
    }

private:
    static constexpr std::uint64_t steps = 32;
    static constexpr int stepBits = 5;
    static constexpr std::size_t doublings = 21;
    static constexpr std::size_t size = steps * doublings;

    static std::size_t indexOf(std::uint64_t value)
    {
        if (value < steps)
            return value;
        const int shift = static_cast<int>(std::bit_width(value)) - stepBits - 1;
        return static_cast<std::size_t>(shift) * steps + (value >> shift);
    }
    static std::int64_t highestAt(std::size_t index)
    {
        if (index < 2 * steps)
            return static_cast<std::int64_t>(index);
        const auto shift = index / steps - 1;
        return static_cast<std::int64_t>(((index % steps + steps + 1) << shift) - 1);
    }

    std::array<std::atomic<std::uint32_t>, size> counts {};
};

} // namespace Platform
