#include "bench/mcu/McuSeries.h"

#include <algorithm>
#include <utility>

namespace Bench
{

void McuSeries::repeat(Kind kind, const char* stream, McuMessage frame, McuMessage last, Milliseconds interval,
                       Milliseconds duration)
{
    const auto turns = (duration + interval - Milliseconds(1)) / interval;
    begin(kind, { stream, { std::move(frame) }, std::move(last), turns, interval, now, now + duration });
}

void McuSeries::flood(Kind kind, const char* stream, std::vector<McuMessage> frames, int perSecond,
                      Milliseconds duration)
{
    constexpr std::chrono::nanoseconds second = std::chrono::seconds(1);
    const auto rate = std::clamp(perSecond, 1, mostPerSecond);
    begin(kind, { stream,
                  std::move(frames),
                  {},
                  duration * rate / std::chrono::seconds(1),
                  second / rate,
                  now,
                  now + duration });
}

void McuSeries::begin(Kind kind, Series with)
{
    end(series[kind]);
    if (with.frames.empty())
        return;
    with.allTurns = std::max<std::int64_t>(with.allTurns, 1);
    series[kind] = std::move(with);
}

std::optional<Clock::time_point> McuSeries::Series::due() const
{
    if (turns < allTurns)
        return begin + interval * turns;
    return sent > 0 ? std::optional(end) : std::nullopt;
}

void McuSeries::doDue()
{
    // A series whose time is over still waits for its first frame to go out.
    for (auto& each : series)
        while (each && each->due() && *each->due() <= now)
        {
            if (each->turns == each->allTurns)
            {
                end(each);
                break;
            }
            ++each->turns;
            each->waits = true;
        }
}

void McuSeries::end(std::optional<Series>& each)
{
    if (!each)
        return;
    journal.add(each->stream,
                std::to_string(each->sent) + " sent, " + std::to_string(each->turns - each->sent) + " skipped");
    if (each->last)
        lastOnes.push_back(*each->last);
    each.reset();
}

void McuSeries::play(std::string name, std::vector<TimedFrame> frames)
{
    stopPlaying();
    playing = { std::move(name), std::move(frames), now };
}

void McuSeries::stopPlaying()
{
    if (!playing)
        return;
    const auto sent = std::to_string(playing->sent), all = std::to_string(playing->frames.size());
    journal.add("n2k", (sent == all ? "played " + all : "stopped after " + sent + " of " + all) + " messages of " +
                           playing->name);
    playing.reset();
}

void McuSeries::clear()
{
    for (auto& each : series)
        end(each);
    lastOnes.clear();
    stopPlaying();
}

std::optional<Clock::time_point> McuSeries::due() const
{
    std::optional<Clock::time_point> next;
    for (const auto& each : series)
        if (const auto due = each ? each->due() : std::nullopt; due && (!next || *due < *next))
            next = due;
    return next;
}

std::optional<Clock::time_point> McuSeries::playDue() const
{
    if (playing && playing->sent < playing->frames.size())
        return playing->begin + playing->frames[playing->sent].due;
    return {};
}

std::optional<McuMessage> McuSeries::next()
{
    if (!lastOnes.empty())
    {
        auto last = std::move(lastOnes.front());
        lastOnes.pop_front();
        return last;
    }
    if (playing && playing->sent == playing->frames.size())
        stopPlaying(); // the last one has been acknowledged, or given up
    if (const auto due = playDue(); due && *due <= now)
        return playing->frames[playing->sent++].frame;
    for (auto& each : series)
        if (each && std::exchange(each->waits, false))
            return each->frames[static_cast<std::size_t>(each->sent++) % each->frames.size()];
    return {};
}

} // namespace Bench
