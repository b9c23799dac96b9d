#pragma once

#include "bench/console/EventText.h"

#include <set>

namespace BenchPanel
{

using namespace Bench;

/** An event in words: "key volume-up", "FM radio shown". */
std::string wordsOf(const Event& event);

/**
    The events of the unit as a person wants to see them: of some subjects, what comes by itself or in rows folded. What has
    been said to the console is always there.
*/
class EventList
{
public:
    EventList();

    /** What is new in `newest`, the newest of all events, oldest first. */
    void take(const std::vector<Event>& newest);
    void want(const Subject& subject, bool isWanted);
    bool wants(const Subject& subject) const { return wanted.contains(&subject); }

    struct Line
    {
        Event event; ///< its first; the text says how many there are
        /** Since the last line of the console before it, or since the first event. */
        Clock::duration after {};
        bool isSaid() const { return event.stream == saidStream; }
    };
    /** The newest, oldest first. */
    std::vector<Line> lines() const;

    /** What an event came with. */
    struct Origin
    {
        std::string frame; ///< the last on the link: name and bytes; "" when that is long ago, or for a frame itself
        std::string log;   ///< the line of the engine's log that is next to it in time; "" without one
    };
    /** By its number; null when it is no longer known. */
    const Event* find(std::uint64_t number) const;
    Origin originOf(const Event& event) const;

    static constexpr std::size_t capacity = 4000, mostLines = 500;

private:
    std::deque<Event> events; ///< by place
    std::uint64_t next = 0;   ///< number of the first that has not been taken
    std::set<const Subject*> wanted;

    bool isListed(const Event& event) const;
};

} // namespace BenchPanel
