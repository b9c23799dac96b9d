#include "bench/Journal.h"

#include <algorithm>

namespace Bench
{

void Journal::add(std::string stream, std::string text)
{
    {
        const std::scoped_lock guard(lock);
        events.push_back({ nextNumber++, Clock::now(), std::move(stream), std::move(text) });
        if (events.size() > capacity)
            events.pop_front();
    }
    changed.notify_all();
}

std::uint64_t Journal::end() const
{
    const std::scoped_lock guard(lock);
    return nextNumber;
}

std::size_t Journal::indexOf(std::uint64_t number) const
{
    const auto first = nextNumber - events.size();
    return static_cast<std::size_t>(std::clamp(number, first, nextNumber) - first);
}

std::optional<Event> Journal::waitFor(std::uint64_t from, Clock::time_point deadline, const Matches& matches) const
{
    std::unique_lock guard(lock);
    for (;;)
    {
        for (auto i = indexOf(from); i < events.size(); ++i)
            if (matches(events[i]))
                return events[i];
        from = nextNumber;
        const auto hasNews = [&] { return nextNumber > from || interrupted; };
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

std::vector<Event> Journal::find(std::uint64_t from, std::size_t count, const Matches& matches) const
{
    const std::scoped_lock guard(lock);
    std::vector<Event> found;
    const auto oldest = indexOf(from);
    for (auto i = events.size(); i > oldest && found.size() < count; --i)
        if (matches(events[i - 1]))
            found.push_back(events[i - 1]);
    std::reverse(found.begin(), found.end());
    return found;
}

void Journal::interrupt()
{
    {
        const std::scoped_lock guard(lock);
        interrupted = true;
    }
    changed.notify_all();
}

bool Journal::isInterrupted() const
{
    const std::scoped_lock guard(lock);
    return interrupted;
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
    // Among them the line that goes up and down with every byte for the wired remote.
    return event.stream == "log" || event.stream == "i2c" || event.stream == "dsp write" ||
           event.stream == "gpio 32768" || event.stream == "settled";
}

Journal::Matches isIn(std::string stream)
{
    return [stream = std::move(stream)](const Event& event) { return event.stream == stream; };
}

} // namespace Bench
