#include "bench/WiredRemote.h"
#include "bench/console/Watch.h"

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

std::string blank(const std::string& line1, const std::string& line2)
{
    const auto full = [](const std::string& line) { return line + std::string(16 - line.size(), ' '); };
    return "|" + full(line1) + "|" + full(line2) + "|";
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

TEST(RemoteDisplay, ShowsWhatTheUnitWrites)
{
    const Bytes clear { 0x8A, 0x9A };
    EXPECT_EQ(after({}).text(), blank("", ""));
    EXPECT_EQ(after({ textAt(0xE0, "Favorites"), textAt(0xFB, " Mute") }).text(),
              blank("Favorites", "            Mute"));
    EXPECT_EQ(after({ textAt(0xE0, "Favorites"), textAt(0xE2, "no") }).text(), blank("Fanorites", ""));
    EXPECT_EQ(after({ textAt(0xE0, "FM"), textAt(0xF0, "AM"), clear }).text(), blank("", ""));
    EXPECT_EQ(after({ textAt(0xEE, "FM and more") }).text(), blank("              FM", "")) << "beyond the line";
    const auto levels = after({ { 0x8A, 0xB3, 0x8A, 0xCF, 0x8A, 0xD0 } });
    EXPECT_EQ(levels.startLevel(), 3);
    EXPECT_EQ(levels.dimmerA(), 15);
    EXPECT_EQ(levels.dimmerB(), 0);
    EXPECT_EQ(levels.damaged(), 0u);
}

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

TEST(Watch, EveryLineIsAsWideAsTheTerminal)
{
    WatchView view;
    const auto everyLineFits = [&](const char* what)
    {
        for (const auto& line : composeWatch(view, Style(false)))
        {
            int width = 0;
            for (const char c : line)
                width += (static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0;
            EXPECT_EQ(width, watchWidth) << what << ": " << line;
        }
    };
    view.remote = { std::string(16, ' '), std::string(16, ' ') };
    everyLineFits("nothing runs");
    const std::string lengthy = "a text that is far longer than its place in the table could ever be, with ä and …";
    view.engine = view.page = view.behind = view.plays = view.source = view.zone1 = view.zone2 = view.dimmer = lengthy;
    view.link = view.heartbeat = lengthy + lengthy;
    view.route = { lengthy, lengthy, lengthy };
    for (int i = 0; i < 20; ++i)
    {
        view.lines.push_back({ "32768", lengthy, true });
        view.programs.push_back({ lengthy, lengthy, lengthy, true });
    }
    everyLineFits("everything runs");
}
