#include "bench/mcu/Panel.h"

namespace Bench
{

namespace
{

constexpr int powerOn = 7;
constexpr int powerOff = 8;
/** In place of a key's origin: the key was let go. */
constexpr int released = 255;

McuMessage keyMessage(int origin, int value)
{
    return { Mcu::key, { static_cast<std::uint8_t>(origin), static_cast<std::uint8_t>(value) } };
}

/** Both directions have the origin first; empty when there is no key, or it is let go. */
std::optional<int> pressedKey(const Bytes& data)
{
    return data.size() >= 2 && data[0] != released ? std::optional<int>(data[1]) : std::nullopt;
}

} // namespace

Panel::Panel(Journal& journalToUse, Mcu& mcuToUse)
    : journal(journalToUse)
    , mcu(mcuToUse)
{
    mcu.addListener([this](const Mcu::Frame& frame) { hear(frame); });
}

void Panel::pressKey(int value, int origin)
{
    mcu.send(keyMessage(origin, value));
}

void Panel::hold(int value, int origin, Milliseconds duration)
{
    mcu.series().repeat(McuSeries::holding, "mcu hold", keyMessage(origin, value), keyMessage(released, value),
                        holdInterval, duration);
}

void Panel::flood(const Bytes& keys, int perSecond, Milliseconds duration)
{
    std::vector<McuMessage> frames;
    for (const auto each : keys)
        frames.push_back(keyMessage(0, each));
    mcu.series().flood(McuSeries::flooding, "mcu flood", std::move(frames), perSecond, duration);
}

void Panel::setDimmer(int level)
{
    current.dimmer = level;
    const auto byte = static_cast<std::uint8_t>(level + 1);
    mcu.send({ Mcu::dimmer, { byte, byte } });
}

void Panel::hear(const Mcu::Frame& frame)
{
    if (frame.fromUnit && frame.command == Mcu::dimmer && !frame.data.empty() && frame.data[0] > 0)
        current.dimmer = frame.data[0] - 1;
    const auto value = frame.command == Mcu::key ? pressedKey(frame.data) : std::nullopt;
    if (value != powerOn && value != powerOff)
        return;
    if (frame.fromUnit)
        return pressKey(*value, 0);
    current.powered = value == powerOn;
    journal.add("mcu power", current.powered ? "on" : "off");
}

} // namespace Bench
