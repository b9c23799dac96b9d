#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Bench
{

using Clock = std::chrono::steady_clock;

/** A place in the journal: between what happened before and what happened after. The first one is before everything. */
struct Place
{
    Clock::time_point at = Clock::time_point::min();
    std::uint64_t number = 0; ///< decides between things of the same time
    auto operator<=>(const Place&) const = default;
};

/** One thing that a device saw or did: `stream` is what it is about ("page mbFM"), `text` what happened ("shown"), in one line. */
struct Event
{
    std::uint64_t number = 0; ///< in the order of arrival, from 0, never reused
    Clock::time_point at;     ///< when it happened
    std::string stream;
    std::string text;

    Place place() const { return { at, number }; }
    Place behind() const { return { at, number + 1 }; }
};

/**
    The common record of all simulated devices, in the order in which things happened. A late report is put in its place
    by its time; only the events of one stream stay in the order in which they were reported. All waiting is done here,
    on a condition variable, never by sleeping. Any thread.
*/
class Journal
{
public:
    using Matches = std::function<bool(const Event&)>;
    using Now = std::function<Clock::time_point()>;

    explicit Journal(Now clock = Clock::now)
        : now(std::move(clock))
    {
    }

    /** `at`: when it happened, by the journal's clock. A time that is yet to come counts as now. Control characters of the text become blanks. */
    void add(std::string stream, std::string text, Clock::time_point at = Clock::time_point::max());

    /** Now: later events are behind this place. */
    Place end() const;
    /** The first matching event from this place on; empty at the deadline or after `interrupt`. */
    std::optional<Event> waitFor(Place from, Clock::time_point deadline, const Matches& matches) const;
    /** Waits until the newest event of the stream has this text. */
    bool waitForLatest(const std::string& stream, const std::string& text, Clock::time_point deadline) const;
    /** The newest `count` matching events from this place on, oldest first. */
    std::vector<Event> find(Place from, std::size_t count, const Matches& matches) const;

    /** Ends every wait, now and later: the user wants to leave, or, not `forGood`, gives up what is waited for now. */
    void interrupt(bool forGood = true);
    /** There are waits again. False when they were ended for good. */
    bool goOn();
    bool isInterrupted() const;
    /** Whether for good. */
    bool isEnded() const;

    /** Events kept. Older ones are forgotten and counted. */
    static constexpr std::size_t capacity = 100'000;
    std::uint64_t forgotten() const;

private:
    const Now now;
    mutable std::mutex lock;
    mutable std::condition_variable changed;
    std::deque<Event> events; // by place
    std::uint64_t nextNumber = 0;
    bool interrupted = false, isOver = false; ///< for now, and for good

    /** Among those that arrived with this number or a later one. */
    const Event* firstMatch(Place from, std::uint64_t arrived, const Matches& matches) const;
};

/** Matches one stream and one text. */
Journal::Matches isEvent(std::string stream, std::string text);
/** A detail, which is left out where everything is listed, because there are so many. */
bool isDetail(const Event& event);
/** Matches a stream, whatever its text. */
Journal::Matches isIn(std::string stream);

} // namespace Bench
