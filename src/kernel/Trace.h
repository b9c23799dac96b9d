#pragma once

#include "platform/base/Time.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <juce_core/juce_core.h>
#include <vector>

namespace Kernel
{

/**
    What the engine does, for as long as somebody takes a trace of it. Without one a hook costs a look at a flag; with one
    an event is copied into a bounded memory, of which one reader takes it. No thread waits: what finds no room is counted
    and lost. Nothing of it is a step of a recording.
*/
class Trace
{
public:
    using Time = Platform::Clock::time_point;
    /** The number of a thread, the same for all traces of the process. */
    using Thread = std::uint16_t;
    static constexpr Thread noThread = 0;

    /** Who set something off, and when. */
    struct Origin
    {
        Time at {};
        Thread thread = noThread; ///< none when there was no trace
    };

    /** What an event is about, with its numbers. */
    enum class Kind : std::uint8_t {
        message,           ///< handled: receiver, id, arg1, arg2, page
        job,               ///< of a device, carried out: key
        block,             ///< written to the DSP: first bytes, length, attempts, whether it was verified
        frameSent,         ///< command, sequence, bytes; in flight until it is acknowledged or given up
        frameResent,       ///< command, sequence
        frameAcknowledged, ///< sequence
        frameGivenUp,      ///< command, sequence
        frameReceived,     ///< command, sequence, bytes
        confirmationSent,  ///< of a frame that was received: sequence
        switchBegun,       ///< page, action, whether the system asked
        switchEnded,       ///< page, status
        orderSent,         ///< page, type
        orderReported,     ///< page, whether it succeeded
        pageHiding,        ///< page; the view waits for its program
        pageShowing,       ///< page; the same
        pageSettled,       ///< page; the view waits for nobody
        viewTold,          ///< what, page
        viewAnswered,      ///< what, page
        programState,      ///< program, state
        remoteSent,        ///< program, what, arg1, arg2, whether it went out
        remoteReceived     ///< program, what, arg1, arg2
    };
    using Numbers = std::array<std::int32_t, 5>;

    struct Event
    {
        Time begin {}, end {}; ///< the same for what takes no time
        Origin origin;         ///< of what set it off
        Numbers numbers {};
        Thread thread = noThread; ///< that it happened on
        Kind kind {};
    };

    // For everybody. Any thread.

    static bool isOn() { return on.load(std::memory_order_relaxed); }
    /** Of what the calling thread does now; of nobody without a trace. */
    static Origin here() { return isOn() ? hereAndNow() : Origin {}; }
    /** Something has happened, in what the calling thread does. */
    template <typename... Values>
    static void note(Kind kind, Values... numbers)
    {
        noteFrom(here(), kind, numbers...);
    }
    /** Something has happened that somebody else has set off. */
    template <typename... Values>
    static void noteFrom(const Origin& origin, Kind kind, Values... numbers)
    {
        if (!isOn())
            return;
        const auto now = hereAndNow();
        record({ now.at, now.at, origin, { static_cast<std::int32_t>(numbers)... }, now.thread, kind });
    }
    /** Something that somebody else has set off began here at `begin`, and ends now. */
    template <typename... Values>
    static void span(const Origin& origin, Time begin, Kind kind, Values... numbers)
    {
        if (isOn())
            record({ begin,
                     Platform::Clock::now(),
                     origin,
                     { static_cast<std::int32_t>(numbers)... },
                     thisThread(),
                     kind });
    }
    /** While there is a trace. */
    static void record(const Event& event);

    // For who takes it: one thread at a time.

    /** False when there is one already. */
    static bool begin();
    static void end();
    /** What has been recorded since the last call, at most `capacity` events, in the order in which they ended. */
    static void take(std::vector<Event>& events);
    /** Events since `begin` that found no room. */
    static std::uint64_t countLost();
    /** As the system knows it; "message thread" for that one. */
    static juce::String threadName(Thread thread);

    /** Events that wait for the reader. */
    static constexpr std::size_t capacity = 16 * 1024;

private:
    static Origin hereAndNow() { return { Platform::Clock::now(), thisThread() }; }
    static Thread thisThread();

    static inline std::atomic<bool> on { false };
};

/** Something that the calling thread does as long as this lives. */
class TraceScope
{
public:
    template <typename... Values>
    explicit TraceScope(Trace::Kind kindOfEvent, Values... values)
        : begin(Trace::here())
        , kind(kindOfEvent)
        , numbers { static_cast<std::int32_t>(values)... }
    {
    }
    ~TraceScope()
    {
        if (begin.thread != Trace::noThread)
            Trace::record({ begin.at, Platform::Clock::now(), begin, numbers, begin.thread, kind });
    }
    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;

    /** What is known only later. */
    void set(std::size_t index, std::int32_t number) { numbers[index] = number; }

private:
    const Trace::Origin begin;
    const Trace::Kind kind;
    Trace::Numbers numbers;
};

} // namespace Kernel
