#pragma once

#include "bench/simulation/Scheduler.h"
#include "bench/unit/Journal.h"

namespace Simulation
{

/**
    Which thread of the engine ran when, and what happened meanwhile, in the trace event format (JSON) that the Perfetto
    viewer opens. A step takes no simulated time; here each takes a nanosecond, so that their order is seen.
*/
class Trace
{
public:
    explicit Trace(Scheduler& schedulerToWatch);

    /** Empty on success, else what failed. */
    std::string write(const std::string& file, const Bench::Journal& journal) const;

private:
    struct Slice
    {
        std::string thread;
        Clock::time_point at;
        std::uint64_t step;
    };
    Scheduler& scheduler;
    const Clock::time_point begin;
    std::deque<Slice> slices; ///< the last ones
};

} // namespace Simulation
