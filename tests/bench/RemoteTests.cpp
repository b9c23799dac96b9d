#include "bench/WiredRemote.h"
#include "bench/console/Watch.h"

#include <array>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

using namespace Bench;
using namespace std::chrono_literals;

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

class RemoteTest : public testing::Test
{
protected:
    RemoteTest() { EXPECT_EQ(remote.start(link), ""); }
    ~RemoteTest() override
    {
        remote.stop();
        std::filesystem::remove(link);
    }

    /** The unit's end of the line. */
    int open() const { return ::open(link.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC); }
    bool seen(const std::string& stream, const std::string& text)
    {
        const auto met = journal.waitFor(from, Clock::now() + 5s, isEvent(stream, text));
        from = met ? met->number + 1 : from;
        return met.has_value();
    }

    Journal journal;
    WiredRemote remote { journal };
    const std::string link =
        (std::filesystem::temp_directory_path() / ("remote-" + std::to_string(::getpid()))).string();
    std::uint64_t from = 0;
};

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

TEST_F(RemoteTest, IsALineThatTheUnitOpensWritesAndReads)
{
    const int unit = open();
    ASSERT_GE(unit, 0);
    const auto text = textAt(0xE0, "FM");
    ASSERT_EQ(::write(unit, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    EXPECT_TRUE(seen("remote display", blank("FM", "")));
    EXPECT_TRUE(remote.press(*WiredRemote::findKey("source")));
    pollfd waiting { unit, POLLIN, 0 };
    ASSERT_EQ(::poll(&waiting, 1, 5000), 1);
    std::uint8_t key = 0;
    ASSERT_EQ(::read(unit, &key, 1), 1);
    EXPECT_EQ(key, 0xA6);
    ::close(unit);
}

TEST_F(RemoteTest, GoesAwayAndComesBackAtTheSamePath)
{
    const int unit = open();
    remote.unplug();
    EXPECT_FALSE(remote.press(0xA1));
    pollfd waiting { unit, POLLIN, 0 };
    ASSERT_EQ(::poll(&waiting, 1, 5000), 1);
    EXPECT_NE(waiting.revents & POLLHUP, 0);
    ::close(unit);
    EXPECT_LT(open(), 0);

    EXPECT_EQ(remote.plug(), "");
    const int again = open();
    const auto text = textAt(0xF0, "back");
    ASSERT_EQ(::write(again, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    EXPECT_TRUE(seen("remote display", blank("", "back")));
    ::close(again);
}

TEST_F(RemoteTest, AStalledOneTakesNothingUntilItGoesOn)
{
    const int unit = open();
    remote.stall(true);
    const Bytes flood(16'384, 0xA5);
    ssize_t taken = 0;
    for (ssize_t count = 0; (count = ::write(unit, flood.data(), flood.size())) > 0;)
        taken += count;
    EXPECT_EQ(errno, EAGAIN);
    remote.stall(false);
    EXPECT_TRUE(seen("remote", "damaged"));
    ::close(unit);
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
    view.link = view.heartbeat = view.network = view.networkTold = lengthy + lengthy;
    view.route = { lengthy, lengthy, lengthy };
    for (int i = 0; i < 20; ++i)
    {
        view.lines.push_back({ "32768", lengthy, true });
        view.programs.push_back({ lengthy, lengthy, lengthy, true });
    }
    everyLineFits("everything runs");
}
