#include "bench/simulation/Trace.h"

#include <fstream>
#include <nlohmann/json.hpp>

namespace Simulation
{

namespace
{

using nlohmann::json;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr std::size_t mostSlices = 200'000;
constexpr int threadTracks = 1, eventTracks = 2;
constexpr double stepLength = 0.001; ///< microseconds

json nameOf(const char* what, int process, int thread, const std::string& name)
{
    return { { "ph", "M" }, { "name", what }, { "pid", process }, { "tid", thread }, { "args", { { "name", name } } } };
}

/** Numbers of tracks, in the order in which they are first needed. */
class Tracks
{
public:
    Tracks(int processToUse, json& eventsToName)
        : process(processToUse)
        , events(eventsToName)
    {
    }

    int operator[](const std::string& name)
    {
        const auto [found, isNew] = numbers.emplace(name, static_cast<int>(numbers.size()) + 1);
        if (isNew)
            events.push_back(nameOf("thread_name", process, found->second, name));
        return found->second;
    }

private:
    const int process;
    json& events;
    std::map<std::string, int> numbers;
};

} // namespace

Trace::Trace(Scheduler& schedulerToWatch)
    : scheduler(schedulerToWatch)
    , begin(scheduler.now())
{
    scheduler.onResume(
        [this](const std::string& thread)
        {
            slices.push_back({ thread, scheduler.now(), scheduler.steps() });
            if (slices.size() > mostSlices)
                slices.pop_front();
        });
}

std::string Trace::write(const std::string& file, const Bench::Journal& journal) const
{
    json events = json::array();
    events.push_back(nameOf("process_name", threadTracks, 0, "threads of the engine"));
    events.push_back(nameOf("process_name", eventTracks, 0, "what happened"));
    Tracks threads(threadTracks, events), streams(eventTracks, events);
    Clock::time_point instant;
    std::uint64_t firstStep = 0;
    for (const auto& slice : slices)
    {
        if (slice.at != std::exchange(instant, slice.at))
            firstStep = slice.step;
        const auto offset = static_cast<double>(slice.step - firstStep) * stepLength;
        events.push_back({ { "ph", "X" },
                           { "name", slice.thread },
                           { "pid", threadTracks },
                           { "tid", threads[slice.thread] },
                           { "ts", Microseconds(slice.at - begin).count() + offset },
                           { "dur", stepLength },
                           { "args", { { "step", slice.step } } } });
    }
    for (const auto& event : journal.find({}, Bench::Journal::capacity, [](const auto&) { return true; }))
        events.push_back({ { "ph", "i" },
                           { "s", "t" },
                           { "name", event.text },
                           { "pid", eventTracks },
                           { "tid", streams[event.stream] },
                           { "ts", Microseconds(event.at - begin).count() } });
    std::ofstream text(file, std::ios::trunc);
    text << json { { "displayTimeUnit", "ns" }, { "traceEvents", std::move(events) } }.dump(
        -1, ' ', false, json::error_handler_t::replace);
    return text.flush() ? "" : file + ": cannot be written";
}

} // namespace Simulation
