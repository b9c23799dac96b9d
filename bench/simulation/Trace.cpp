#include "bench/simulation/Trace.h"

#include "diagnostics/TraceEvents.h"

#include <fcntl.h>
#include <system_error>

namespace Simulation
{

namespace
{

constexpr std::size_t mostSlices = 200'000, mostEvents = 100'000;
constexpr std::chrono::nanoseconds stepLength { 1 };

} // namespace

Trace::Trace(Scheduler& schedulerToWatch)
    : scheduler(schedulerToWatch)
    , begin(scheduler.now())
{
    Kernel::Trace::begin();
    scheduler.onResume([this](const std::string& thread) { note(thread); });
}

void Trace::note(const std::string& thread)
{
    slices.push_back({ thread, scheduler.now(), scheduler.steps() });
    if (slices.size() > mostSlices)
        slices.pop_front();
    taken.clear();
    Kernel::Trace::take(taken);
    events.insert(events.end(), taken.begin(), taken.end());
    if (events.size() > mostEvents)
        events.erase(events.begin(), events.end() - mostEvents);
}

std::string Trace::write(const std::string& name, const Bench::Journal& journal) const
{
    constexpr mode_t readable = 0644;
    const Platform::Descriptor descriptor(::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, readable));
    if (!descriptor)
        return name + ": " + std::generic_category().message(errno);
    Diagnostics::TraceFile file(descriptor.get());
    Clock::time_point instant;
    std::uint64_t firstStep = 0;
    for (const auto& [thread, at, step] : slices)
    {
        if (at != std::exchange(instant, at))
            firstStep = step;
        const auto offset = static_cast<std::int64_t>(step - firstStep) * stepLength;
        file.add({ file.track("steps of the threads", thread),
                   thread,
                   at - begin + offset,
                   stepLength,
                   { { "step", step } } });
    }
    for (const auto& event : journal.find({}, Bench::Journal::capacity, [](const auto&) { return true; }))
        file.add({ file.track("what happened", event.stream), event.text.empty() ? event.stream : event.text,
                   event.at - begin });
    Diagnostics::TraceEvents story(file, begin);
    for (const auto& event : events)
        story.add(event);
    story.finish(scheduler.now());
    file.finish({ { "steps", scheduler.steps() } });
    return file.getFailure();
}

} // namespace Simulation
