#include "bench/remote/WiredRemote.h"

#include "bench/mcu/McuFrame.h"

#include <algorithm>

namespace Bench
{

namespace
{

constexpr std::array keyTable {
    WiredRemote::Key { "pre", 0xA1 },        WiredRemote::Key { "next", 0xA2 },
    WiredRemote::Key { "playpause", 0xA3 },  WiredRemote::Key { "return", 0xA4 },
    WiredRemote::Key { "favorites", 0xA5 },  WiredRemote::Key { "source", 0xA6 },
    WiredRemote::Key { "enter", 0xA7 },      WiredRemote::Key { "pre-long", 0xA8 },
    WiredRemote::Key { "next-long", 0xA9 },  WiredRemote::Key { "off", 0xAB },
    WiredRemote::Key { "ams1", 0xAC },       WiredRemote::Key { "menu", 0xAD },
    WiredRemote::Key { "rotary-pre", 0xAE }, WiredRemote::Key { "rotary-next", 0xAF },
};

} // namespace

std::span<const WiredRemote::Key> WiredRemote::keys()
{
    return keyTable;
}

std::optional<std::uint8_t> WiredRemote::findKey(const std::string& name)
{
    const auto found = std::find_if(keyTable.begin(), keyTable.end(), [&](auto& key) { return name == key.name; });
    return found != keyTable.end() ? std::optional(found->byte) : std::nullopt;
}

WiredRemote::WiredRemote(Journal& journalToUse, SerialLine& lineToUse)
    : journal(journalToUse)
    , line(lineToUse)
{
    line.received = [this](std::span<const std::uint8_t> bytes)
    {
        for (const auto byte : bytes)
            take(byte);
    };
}

std::string WiredRemote::plug()
{
    if (line.isOpen())
        return {};
    if (auto error = line.open(); !error.empty())
        return error;
    shown = {}; // its memory is lost with the power
    journal.add("remote", "plugged");
    return {};
}

bool WiredRemote::sendBytes(std::span<const std::uint8_t> bytes)
{
    const bool sent = line.write(bytes);
    if (sent)
        journal.add("remote", "sends " + hex(bytes));
    return sent;
}

void WiredRemote::unplug()
{
    if (!line.isOpen())
        return;
    line.close();
    held.reset();
    journal.add("remote", "unplugged");
}

void WiredRemote::take(std::uint8_t byte)
{
    const auto dimmers = [this] { return std::pair(shown.dimmerA(), shown.dimmerB()); };
    const auto before = dimmers();
    switch (shown.take(byte))
    {
    case RemoteDisplay::Change::none:
        break;
    case RemoteDisplay::Change::display:
        journal.add("remote display", shown.text());
        break;
    case RemoteDisplay::Change::dimmer:
        // The unit repeats its levels every two seconds; only a change is worth a line.
        if (shown.dimmerA() != before.first)
            journal.add("remote dimmer", "A " + std::to_string(*shown.dimmerA()));
        if (shown.dimmerB() != before.second)
            journal.add("remote dimmer", "B " + std::to_string(*shown.dimmerB()));
        break;
    case RemoteDisplay::Change::damage:
        journal.add("remote", "damaged");
        break;
    }
}

void WiredRemote::doDue()
{
    if (!held || held->next > now)
        return;
    if (now >= held->end)
    {
        held.reset();
        return;
    }
    press(held->key);
    held->next += repeatEvery;
}

} // namespace Bench
