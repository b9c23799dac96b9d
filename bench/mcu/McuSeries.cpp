// What the microcontroller sends by itself, turn after turn or at its time, and never more than one of it at the link.
#include "bench/mcu/Mcu.h"

#include <algorithm>
#include <utility>

namespace Bench
{

void Mcu::noteNetwork(bool fromUnit, int command, const Bytes& data)
{
    constexpr std::array commands { dataBlock, version, pgnParcel, mediaInfo, networkDeviceId };
    if (!networkListeners.empty() && std::ranges::find(commands, command) != commands.end())
        heardNetwork.push_back({ fromUnit, command, data });
}

void Mcu::startFlood(SeriesKind kind, const char* stream, std::vector<Outgoing> frames, int perSecond,
                     Milliseconds duration)
{
    constexpr std::chrono::nanoseconds second = std::chrono::seconds(1);
    const auto rate = std::clamp(perSecond, 1, mostPerSecond);
    const auto now = Clock::now();
    const auto turns = duration * rate / std::chrono::seconds(1);
    change([&] { startSeries(kind, { stream, std::move(frames), {}, turns, second / rate, now, now + duration }); });
}

void Mcu::floodNetwork(Bytes parcel, int perSecond, Milliseconds duration)
{
    startFlood(floodingNetwork, "mfd flood", { { pgnParcel, std::move(parcel) } }, perSecond, duration);
}

void Mcu::startSeries(SeriesKind kind, Series with)
{
    endSeries(series[kind]);
    if (with.frames.empty())
        return;
    with.allTurns = std::max<std::int64_t>(with.allTurns, 1);
    series[kind] = std::move(with);
}

std::optional<Clock::time_point> Mcu::Series::due() const
{
    if (turns < allTurns)
        return begin + interval * turns;
    return sent > 0 ? std::optional(end) : std::nullopt;
}

void Mcu::advanceSeries()
{
    // A series whose time is over still waits for its first frame to go out.
    const auto now = Clock::now();
    for (auto& each : series)
        while (each && each->due() && *each->due() <= now)
        {
            if (each->turns == each->allTurns)
            {
                endSeries(each);
                break;
            }
            ++each->turns;
            each->waits = true;
        }
}

void Mcu::endSeries(std::optional<Series>& each)
{
    if (!each)
        return;
    journal.add(each->stream,
                std::to_string(each->sent) + " sent, " + std::to_string(each->turns - each->sent) + " skipped");
    if (each->last)
        sendLater(each->last->command, each->last->data);
    each.reset();
}

void Mcu::play(std::string name, std::vector<TimedParcel> parcels)
{
    change(
        [&]
        {
            endPlaying();
            playing = { std::move(name), std::move(parcels), Clock::now() };
        });
}

void Mcu::stopPlaying()
{
    change([this] { endPlaying(); });
}

void Mcu::endPlaying()
{
    if (!playing)
        return;
    const auto sent = std::to_string(playing->sent), all = std::to_string(playing->parcels.size());
    journal.add("n2k", (sent == all ? "played " + all : "stopped after " + sent + " of " + all) + " messages of " +
                           playing->name);
    playing.reset();
}

Clock::time_point Mcu::nextTurn() const
{
    auto next = Clock::now() + std::chrono::hours(1);
    for (const auto& each : series)
        if (const auto due = each ? each->due() : std::nullopt)
            next = std::min(next, *due);
    // While the link is busy or silent, its own deadline or the acknowledgement comes first.
    if (playing && playing->sent < playing->parcels.size() && !inFlight && !faults.silentUntil)
        next = std::min(next, playing->begin + playing->parcels[playing->sent].due);
    return next;
}

void Mcu::queueWaiting()
{
    // After everything else, and one at a time: nothing of this makes the queue grow. What is played must go out whole,
    // so it goes before the floods, which count what they skip.
    if (!queue.empty())
        return;
    if (playing && playing->sent == playing->parcels.size())
        endPlaying(); // the last one has been acknowledged, or given up
    if (playing && playing->begin + playing->parcels[playing->sent].due <= Clock::now())
        return sendLater(pgnParcel, playing->parcels[playing->sent++].parcel);
    for (auto& each : series)
        if (each && std::exchange(each->waits, false))
        {
            const auto& next = each->frames[static_cast<std::size_t>(each->sent++) % each->frames.size()];
            return sendLater(next.command, next.data);
        }
}

} // namespace Bench
