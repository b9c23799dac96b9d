#include "bench/remote/RemoteDisplay.h"

#include <gtest/gtest.h>

using namespace Bench;

namespace
{

using Bytes = std::vector<std::uint8_t>;

Bytes textAt(std::uint8_t first, const std::string& text)
{
    Bytes bytes { first };
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.push_back(0);
    return bytes;
}

/** What is left on the display after these bytes. */
RemoteDisplay after(std::initializer_list<Bytes> commands)
{
    RemoteDisplay display;
    for (const auto& bytes : commands)
        for (const auto byte : bytes)
            display.take(byte);
    return display;
}

} // namespace

TEST(RemoteDisplay, SkipsAndCountsWhatMakesNoSense)
{
    const auto good = textAt(0xE0, "FM");
    const struct
    {
        Bytes bytes;
        unsigned damaged;
    } cases[] {
        { { 0x00 }, 1 },                       // an end without a text
        { { 0x8A, 0x00 }, 1 },                 // no such command
        { { 0xE0, 'A', 0xE0, 'B', 0x00 }, 1 }, // a text that the next one interrupts
        { { 0xE0, 0xC3, 0xA4, 0x00 }, 4 },     // not ASCII, and what is left of it
        { textAt(0xE0, std::string(17, 'x')), 3 },
    };
    for (const auto& each : cases)
    {
        const auto display = after({ each.bytes, good });
        EXPECT_EQ(display.damaged(), each.damaged) << int(each.bytes[0]);
        EXPECT_EQ(display.text().substr(1, 2), "FM");
    }
}
