#pragma once

#include "bench/unit/Journal.h"

#include <map>

namespace Bench
{

/** What an `expect` line waits for. */
struct Expectation
{
    std::string stream;      ///< of the journal
    std::string text;        ///< the event's text; empty takes any
    bool isPart = false;     ///< the text is a part of the event's (log lines)
    bool isState = false;    ///< holds while it is the newest event of the stream, and consumes nothing
    std::string description; ///< "page mbFM shown"
};

/**
    Waits for expectations. Each stream has its own cursor: an expectation looks only at events behind the one that met
    the previous expectation on the same stream, however long ago that was. Streams are independent, so "page mbFM
    shown" and "page mbMainMenu hidden" may come in any order.
*/
class Expectations
{
public:
    explicit Expectations(const Journal& journalToRead);

    /** Empty when it was met in time, else what was seen on the stream instead. */
    std::string wait(const Expectation& expectation, std::chrono::milliseconds limit);
    /** True when it was not met from the cursor on, nor within this time. Moves no cursor. */
    bool staysAway(const Expectation& expectation, std::chrono::milliseconds duration) const;
    /** Empty when `end` was met in time and `absent` not before that, else what is wrong. Moves the cursor of `end`. */
    std::string staysAwayUntil(const Expectation& absent, const Expectation& end, std::chrono::milliseconds limit);
    /**
        Empty when they were met one after the other, all within this time, whatever their streams, and each at least
        `apart` after the one before. Each stream's cursor moves behind the last event that met one of them.
    */
    std::string waitInOrder(const std::vector<Expectation>& inOrder, std::chrono::milliseconds limit,
                            std::chrono::milliseconds apart = {});
    /** Moves the cursors of all streams to now. */
    void forgetThePast();
    /** Where they began, or were last moved to all together. */
    Place beginningOfAll() const { return beginning; }

    /** Only ends a hang, so long that a busy machine breaks no expectation. */
    static constexpr std::chrono::milliseconds defaultLimit { 60000 };
    static constexpr std::chrono::milliseconds defaultAbsence { 1000 };
    // Where a page is in front by what the programs say, and where it is to stay so by the engine's log.
    static constexpr const char* frontStream = "front";
    static constexpr const char* settledStream = "settled";

private:
    const Journal& journal;
    Place beginning;
    std::map<std::string, Place> cursors;

    /** The event that meets it in time; none after `interrupt`. Moves the cursor, unless it is a state. */
    std::optional<Event> meet(const Expectation& expectation, Clock::time_point deadline);
    Place cursorOf(const std::string& stream) const;
    std::string seenInstead(const Expectation& expectation, Place from) const;
};

} // namespace Bench
