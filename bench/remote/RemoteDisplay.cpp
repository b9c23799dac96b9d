#include "bench/remote/RemoteDisplay.h"

#include <algorithm>

namespace Bench
{

namespace
{

constexpr std::uint8_t positionMark = 0xE0; ///< three highest bits; the others are the position
constexpr std::uint8_t positionBits = 0x1F;
constexpr std::uint8_t endOfText = 0x00;
constexpr std::uint8_t commandMark = 0x8A;
constexpr std::uint8_t clearCommand = 0x9A;
constexpr std::uint8_t levelBits = 0x0F;
constexpr int startLevelMark = 0xB0, dimmerAMark = 0xC0, dimmerBMark = 0xD0;

bool isPrintable(std::uint8_t byte)
{
    return byte >= 0x20 && byte < 0x7F;
}

} // namespace

RemoteDisplay::Change RemoteDisplay::take(std::uint8_t byte)
{
    switch (expecting)
    {
    case Expecting::command:
        return begin(byte);
    case Expecting::parameter:
        return finishCommand(byte);
    case Expecting::text:
        break;
    }
    if (isPrintable(byte) && received.size() < columns)
    {
        received += static_cast<char>(byte);
        return Change::none;
    }
    if (byte != endOfText)
    {
        // The rest of the text, or a new command in the middle of it.
        expecting = Expecting::command;
        ++damages;
        return begin(byte);
    }
    expecting = Expecting::command;
    ++taken;
    auto& target = lines[static_cast<std::size_t>(position / columns)];
    const auto column = static_cast<std::size_t>(position % columns);
    const auto fitting = std::min(received.size(), columns - column);
    target.replace(column, fitting, received, 0, fitting);
    return Change::display;
}

RemoteDisplay::Change RemoteDisplay::begin(std::uint8_t byte)
{
    if (byte == commandMark)
    {
        expecting = Expecting::parameter;
        return Change::none;
    }
    if (byte >= positionMark)
    {
        position = byte & positionBits;
        received.clear();
        expecting = Expecting::text;
        return Change::none;
    }
    return damage();
}

RemoteDisplay::Change RemoteDisplay::finishCommand(std::uint8_t parameter)
{
    expecting = Expecting::command;
    const int level = parameter & levelBits;
    if (parameter == clearCommand)
    {
        for (auto& each : lines)
            each.assign(columns, ' ');
        ++taken;
        return Change::display;
    }
    switch (parameter & ~levelBits)
    {
    case startLevelMark:
        start = level;
        break;
    case dimmerAMark:
        levelA = level;
        break;
    case dimmerBMark:
        levelB = level;
        break;
    default:
        return damage();
    }
    ++taken;
    return Change::dimmer;
}

RemoteDisplay::Change RemoteDisplay::damage()
{
    ++damages;
    return Change::damage;
}

std::string RemoteDisplay::text() const
{
    return "|" + lines[0] + "|" + lines[1] + "|";
}

} // namespace Bench
