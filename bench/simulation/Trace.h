#pragma once

#include "bench/simulation/Scheduler.h"
#include "bench/unit/Journal.h"
#include "kernel/Trace.h"

namespace Simulation
{

/**
    Which thread of the engine ran when, what it did, and what happened meanwhile, for the Perfetto viewer. A step takes
    no simulated time; on the tracks of the steps each takes a nanosecond, so that their order is seen.
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
    std::deque<Slice> slices;                ///< the last ones
    std::deque<Kernel::Trace::Event> events; ///< of the engine, the last ones
    std::vector<Kernel::Trace::Event> taken;

    void note(const std::string& thread);
};

} // namespace Simulation
