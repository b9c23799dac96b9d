#include "bench/unit/Journal.h"

#include "platform/devices/UnitLines.h"

#include <algorithm>

namespace Bench
{

namespace
{

constexpr unsigned char deleteCharacter = 0x7f;

} // namespace

void Journal::add(std::string stream, std::string text, Clock::time_point at)
{
    // What a device or somebody else's program says may be anything.
    std::ranges::replace_if(
        text, [](unsigned char each) { return each < ' ' || each == deleteCharacter; }, ' ');
    {
        const std::scoped_lock guard(lock);
        at = std::min(at, now());
        auto next = events.end();
        while (next != events.begin() && std::prev(next)->at > at && std::prev(next)->stream != stream)
            --next;
        if (next != events.begin())
            at = std::max(at, std::prev(next)->at);
        events.insert(next, { nextNumber++, at, std::move(stream), std::move(text) });
        if (events.size() > capacity)
            events.pop_front();
    }
    changed.notify_all();
}

Place Journal::end() const
{
    const std::scoped_lock guard(lock);
    return { now(), nextNumber };
}

const Event* Journal::firstMatch(Place from, std::uint64_t arrived, const Matches& matches) const
{
    const Event* first = nullptr;
    auto left = nextNumber - arrived;
    for (auto event = events.rbegin(); event != events.rend() && left > 0 && event->place() >= from; ++event)
    {
        if (event->number < arrived)
            continue;
        --left;
        if (matches(*event))
            first = &*event;
    }
    return first;
}

std::optional<Event> Journal::waitFor(Place from, Clock::time_point deadline, const Matches& matches) const
{
    std::unique_lock guard(lock);
    for (std::uint64_t seen = 0;;)
    {
        if (const auto* event = firstMatch(from, seen, matches))
            return *event;
        seen = nextNumber;
        const auto hasNews = [&] { return nextNumber > seen || interrupted; };
        if (!changed.wait_until(guard, deadline, hasNews) || interrupted)
            return {};
    }
}

bool Journal::waitForLatest(const std::string& stream, const std::string& text, Clock::time_point deadline) const
{
    std::unique_lock guard(lock);
    const auto isLatest = [&]
    {
        const auto newest = std::find_if(events.rbegin(), events.rend(), isIn(stream));
        return newest != events.rend() && newest->text == text;
    };
    changed.wait_until(guard, deadline, [&] { return interrupted || isLatest(); });
    return isLatest();
}

std::vector<Event> Journal::find(Place from, std::size_t count, const Matches& matches) const
{
    const std::scoped_lock guard(lock);
    std::vector<Event> found;
    for (auto event = events.rbegin(); event != events.rend() && found.size() < count && event->place() >= from;
         ++event)
        if (matches(*event))
            found.push_back(*event);
    std::reverse(found.begin(), found.end());
    return found;
}

void Journal::interrupt(bool forGood)
{
    {
        const std::scoped_lock guard(lock);
        interrupted = true;
        isOver = isOver || forGood;
    }
    changed.notify_all();
}

bool Journal::goOn()
{
    const std::scoped_lock guard(lock);
    interrupted = isOver;
    return !isOver;
}

bool Journal::isInterrupted() const
{
    const std::scoped_lock guard(lock);
    return interrupted;
}

bool Journal::isEnded() const
{
    const std::scoped_lock guard(lock);
    return isOver;
}

std::uint64_t Journal::forgotten() const
{
    const std::scoped_lock guard(lock);
    return nextNumber - events.size();
}

Journal::Matches isEvent(std::string stream, std::string text)
{
    return [stream = std::move(stream), text = std::move(text)](const Event& event)
    { return event.stream == stream && event.text == text; };
}

bool isDetail(const Event& event)
{
    // It goes up and down with every byte for the wired remote.
    static const auto remoteTransmit = "gpio " + std::to_string(Platform::remoteTransmitLine);
    return event.stream == "log" || event.stream == "i2c" || event.stream == "dsp write" ||
           event.stream == remoteTransmit || event.stream == "settled";
}

Journal::Matches isIn(std::string stream)
{
    return [stream = std::move(stream)](const Event& event) { return event.stream == stream; };
}

} // namespace Bench
