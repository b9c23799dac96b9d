// The keys of the microcontroller's panel: pressed once, held, or in a flood, and the power key.
#include "bench/mcu/Mcu.h"

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
            startSeries(holding, { "mcu hold",
                                   { { keyCommand, keyData(origin, value) } },
                                   Outgoing { keyCommand, keyData(released, value) },
                                   turns,
                                   holdInterval,
                                   now,
                                   now + duration });
        });
}

void Mcu::flood(const Bytes& keys, int perSecond, Milliseconds duration)
{
    std::vector<Outgoing> frames;
    for (const auto key : keys)
        frames.push_back({ keyCommand, keyData(0, key) });
    startFlood(flooding, "mcu flood", std::move(frames), perSecond, duration);
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
