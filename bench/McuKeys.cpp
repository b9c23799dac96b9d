// The keys of the microcontroller's panel: pressed once, held, or in a flood, and the power key.
#include "bench/Mcu.h"

#include <algorithm>
#include <utility>

namespace Bench
{

namespace
{

constexpr int powerOn = 7;
constexpr int powerOff = 8;
/** In place of a key's origin: the key was let go. */
constexpr int released = 255;

Bytes keyData(int origin, int value)
{
    return { static_cast<std::uint8_t>(origin), static_cast<std::uint8_t>(value) };
}

/** Both directions have the origin first; empty when there is no key, or it is let go. */
std::optional<int> pressedKey(const Bytes& data)
{
    return data.size() >= 2 && data[0] != released ? std::optional<int>(data[1]) : std::nullopt;
}

} // namespace

void Mcu::pressKey(int value, int origin)
{
    send(keyCommand, keyData(origin, value));
}

void Mcu::hold(int value, int origin, Milliseconds duration)
{
    const auto now = Clock::now();
    const auto turns = (duration + holdInterval - Milliseconds(1)) / holdInterval;
    change(
        [&]
        {
            startSeries(held, { "mcu hold",
                                { static_cast<std::uint8_t>(value) },
                                origin,
                                true,
                                turns,
                                holdInterval,
                                now,
                                now + duration });
        });
}

void Mcu::flood(Bytes keys, int perSecond, Milliseconds duration)
{
    constexpr std::chrono::nanoseconds second = std::chrono::seconds(1);
    const auto rate = std::clamp(perSecond, 1, mostKeysPerSecond);
    const auto now = Clock::now();
    const auto turns = duration * rate / std::chrono::seconds(1);
    change(
        [&] {
            startSeries(flooding,
                        { "mcu flood", std::move(keys), 0, false, turns, second / rate, now, now + duration });
        });
}

void Mcu::startSeries(std::optional<KeySeries>& series, KeySeries with)
{
    endSeries(series);
    if (with.keys.empty())
        return;
    with.allTurns = std::max<std::int64_t>(with.allTurns, 1);
    series = std::move(with);
}

std::optional<Clock::time_point> Mcu::KeySeries::due() const
{
    if (turns < allTurns)
        return begin + interval * turns;
    return sent > 0 ? std::optional(end) : std::nullopt;
}

void Mcu::advanceSeries(std::optional<KeySeries>& series)
{
    // A series whose time is over still waits for its first key to go out.
    for (const auto now = Clock::now(); series && series->due() && *series->due() <= now;)
    {
        if (series->turns == series->allTurns)
            return endSeries(series);
        ++series->turns;
        series->waits = true;
    }
}

void Mcu::endSeries(std::optional<KeySeries>& series)
{
    if (!series)
        return;
    journal.add(series->stream,
                std::to_string(series->sent) + " sent, " + std::to_string(series->turns - series->sent) + " skipped");
    if (series->isReleased)
        sendLater(keyCommand, keyData(released, series->keys.front()));
    series.reset();
}

void Mcu::queueWaitingKey()
{
    // After everything else, and one at a time: a flood does not make the queue grow.
    for (auto* series : { &held, &flooding })
        if (auto& each = *series; queue.empty() && each && std::exchange(each->waits, false))
        {
            const auto index = static_cast<std::size_t>(each->sent++) % each->keys.size();
            sendLater(keyCommand, keyData(each->origin, each->keys[index]));
        }
}

void Mcu::answerPowerRequest(const Bytes& data)
{
    if (const auto value = pressedKey(data); value == powerOn || value == powerOff)
        sendLater(keyCommand, keyData(0, *value));
}

void Mcu::followPowerKey(const Bytes& data)
{
    const auto value = pressedKey(data);
    if (value != powerOn && value != powerOff)
        return;
    current.powered = value == powerOn;
    journal.add("mcu power", current.powered ? "on" : "off");
}

} // namespace Bench
