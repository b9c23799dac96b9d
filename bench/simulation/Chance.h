#pragma once

#include <cstdint>
#include <random>

namespace Simulation
{

/** What a seed decides. The same on every machine: the standard's distributions are not. */
class Chance
{
public:
    explicit Chance(std::uint64_t seed)
        : engine(seed)
    {
    }

    /** 0 to `count` - 1; `count` is at least 1. */
    std::uint64_t below(std::uint64_t count) { return engine() % count; }
    /** Both ends included. */
    int between(int lowest, int highest)
    {
        return lowest + static_cast<int>(below(static_cast<std::uint64_t>(highest - lowest) + 1));
    }
    /** So often in a thousand. */
    bool happens(int perThousand) { return below(1000) < static_cast<std::uint64_t>(perThousand); }

private:
    std::mt19937_64 engine;
};

} // namespace Simulation
