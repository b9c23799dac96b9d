#pragma once

#include "diagnostics/TraceFile.h"
#include "kernel/Trace.h"

#include <unordered_map>

namespace Diagnostics
{

/**
    Tells what the engine has recorded as slices of a trace, with the system's names: a track for each thread, and others
    for the link, the switches, the pages and the programs; an arrow leads from what set something off to what came of it.
    One thread at a time.
*/
class TraceEvents
{
public:
    using Time = Kernel::Trace::Time;

    /** What was over before the beginning is left out. */
    TraceEvents(TraceFile& fileToWrite, Time beginning);

    void add(const Kernel::Trace::Event& event);
    /** So many have found no room until now. */
    void addLoss(std::uint64_t count, Time now);
    /** A handler or a job that runs on this thread. */
    void addUnderWay(const juce::String& thread, const juce::String& name, Time begin, Time now);
    /** Ends what lasts. */
    void finish(Time now);

private:
    using Kind = Kernel::Trace::Kind;
    using Event = Kernel::Trace::Event;
    using Origin = Kernel::Trace::Origin;
    using Slice = TraceFile::Slice;
    using Arguments = TraceFile::Arguments;

    /** What a track is in; written when it is over. */
    struct Phase
    {
        Slice slice;
        Origin origin;
    };

    // One for each kind of event that needs more than its names.
    void addMessage(const Event& event);
    void addJob(const Event& event);
    void addReceived(const Event& event, int track, const std::string& name, Arguments arguments);
    void addSent(const Event& event, int track, const std::string& name, Arguments arguments);

    /** On its thread, from its begin to its end, set off by its origin. */
    void addHandled(const Event& event, const std::string& cause, std::string name, Arguments arguments);
    /** At once, on another track than its thread's, set off by its origin. */
    void addMark(const Event& event, int track, const std::string& name, Arguments arguments = Arguments::object());
    /** From now on the track is in this phase, which its origin has set off; the one before is over. */
    void begin(const Event& event, int track, std::string name, Arguments arguments);
    void end(int track, Time at, const Arguments& outcome);
    /** Leads an arrow from the origin to the slice, if the trace has both. */
    void lead(const Origin& origin, const std::string& cause, Slice& slice);

    std::chrono::nanoseconds since(Time time) const;
    int threadTrack(Kernel::Trace::Thread thread);
    int linkTrack(const char* direction);
    int pageTrack(int page);
    int programTrack(int program);

    TraceFile& file;
    const Time beginning;
    std::uint64_t arrows = 0;
    std::unordered_map<int, Phase> open; ///< by their tracks
    std::vector<int> ordered;            ///< pages with orders of the switch under way
    std::vector<int> threadTracks;       ///< by the threads' numbers; 0 for one that was not seen
};

} // namespace Diagnostics
