#pragma once

#include <cstdint>

/** What the engine has taken with `new` and not given back. What belongs to the bench does not count. */
namespace Simulation
{

struct Allocations
{
    std::int64_t bytes = 0;
    std::int64_t blocks = 0;
};
Allocations engineAllocations();

/** As long as it lives, and its fiber runs, nothing counts: the bench does its part on a thread of the engine's. */
class BenchPart
{
public:
    BenchPart();
    ~BenchPart();
    BenchPart(const BenchPart&) = delete;
    BenchPart& operator=(const BenchPart&) = delete;
};

/** Whether one lives on the fiber that runs. Outside of all fibers is the bench. */
bool isBenchPart();
/** Depth of bench parts of whoever runs; the scheduler exchanges it with its fibers. */
int exchangeBenchParts(int depth);

} // namespace Simulation
