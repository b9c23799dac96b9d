#pragma once

#include "diagnostics/TraceEvents.h"

#include <memory>
#include <optional>

namespace Diagnostics
{

/** The trace that is being taken, if any. The engine takes one at a time. One thread. */
class TraceSession
{
public:
    struct Summary
    {
        std::uint64_t events = 0; ///< that were recorded and taken
        std::uint64_t lost = 0;   ///< that were not: too many at once, or the file took no more
        std::chrono::milliseconds length {};
        std::string failure; ///< why it has ended early; else empty
    };

    TraceSession() = default;
    ~TraceSession();
    TraceSession(const TraceSession&) = delete;
    TraceSession& operator=(const TraceSession&) = delete;

    /**
        Writes into the file, of which it keeps a duplicate, for so long from now on. Empty when it has begun, else a
        sentence why not.
    */
    std::string begin(int descriptor, std::chrono::seconds length);
    bool isOn() const { return file != nullptr; }
    /** To be called every 100 ms: writes what there is. What it was, when its time is over or it cannot go on. */
    std::optional<Summary> poll(TraceEvents::Time now);
    /** Ends it. Nothing but zeros when there is none. */
    Summary stop();

private:
    void write();
    void addUnderWay(TraceEvents::Time now);

    std::unique_ptr<TraceFile> file;
    std::unique_ptr<TraceEvents> story;
    std::vector<Kernel::Trace::Event> taken;
    TraceEvents::Time beginning, deadline;
    Summary summary;
};

} // namespace Diagnostics
