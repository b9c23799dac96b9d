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

/** One thing that a device saw or did. `stream` says about what ("page mbFM"), `text` says what ("shown"). */
struct Event
{
    std::uint64_t number = 0; ///< position in the journal, from 0, never reused
    Clock::time_point at;
    std::string stream;
    std::string text;
};

/**
    The common record of all simulated devices, in the order in which things happened. Whoever waits for something waits
    here, on a condition, and never sleeps to be right. Any thread.
*/
class Journal
{
public:
    using Matches = std::function<bool(const Event&)>;

    void add(std::string stream, std::string text);

    /** Number that the next event will get. */
    std::uint64_t end() const;
    /** The first matching event with this number or a later one; empty at the deadline or after `interrupt`. */
    std::optional<Event> waitFor(std::uint64_t from, Clock::time_point deadline, const Matches& matches) const;
    /** Waits until the newest event of the stream has this text. */
    bool waitForLatest(const std::string& stream, const std::string& text, Clock::time_point deadline) const;
    /** The newest `count` matching events with this number or a later one, oldest first. */
    std::vector<Event> find(std::uint64_t from, std::size_t count, const Matches& matches) const;

    /** Ends every wait, now and later: the user wants to leave. */
    void interrupt();
    bool isInterrupted() const;

    /** Events kept. Older ones are forgotten and counted. */
    static constexpr std::size_t capacity = 100'000;
    std::uint64_t forgotten() const;

private:
    mutable std::mutex lock;
    mutable std::condition_variable changed;
    std::deque<Event> events;
    std::uint64_t nextNumber = 0;
    bool interrupted = false;

    std::size_t indexOf(std::uint64_t number) const;
};

/** Matches one stream and one text. */
Journal::Matches isEvent(std::string stream, std::string text);
/** The fine print: what would bury the rest where everything is listed. */
bool isDetail(const Event& event);
/** Matches a stream, whatever its text. */
Journal::Matches isIn(std::string stream);

} // namespace Bench
