#include "bench/remote/RemoteDisplay.h"

#include <algorithm>
#include <cstdlib>

namespace
{

void require(bool condition)
{
    if (!condition)
        std::abort();
}

bool isSound(const Bench::RemoteDisplay& display)
{
    const auto printable = [](char c) { return c >= 0x20 && c < 0x7F; };
    for (int row = 0; row < Bench::RemoteDisplay::rows; ++row)
    {
        const auto& line = display.line(row);
        if (line.size() != Bench::RemoteDisplay::columns || !std::all_of(line.begin(), line.end(), printable))
            return false;
    }
    for (const auto level : { display.startLevel(), display.dimmerA(), display.dimmerB() })
        if (level && (*level < 0 || *level > 15))
            return false;
    return true;
}

} // namespace

/** Any bytes on the remote's bus leave two whole lines, and a remote that takes the next good command. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Bench::RemoteDisplay display;
    for (std::size_t at = 0; at < size; ++at)
    {
        display.take(data[at]);
        require(isSound(display));
    }
    display.take(0x00); // whatever was open is over
    const auto before = display.commands();
    for (const std::uint8_t byte : std::initializer_list<std::uint8_t> { 0x8A, 0x9A })
        display.take(byte);
    require(display.commands() == before + 1);
    require(display.text() == "|                |                |");
    return 0;
}
