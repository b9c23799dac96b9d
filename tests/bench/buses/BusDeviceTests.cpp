#include "bench/buses/GpioLines.h"
#include "bench/buses/WireValues.h"

#include <gtest/gtest.h>

namespace
{

using namespace Bench;
using namespace std::chrono_literals;

struct MemoryBus : PacketLine
{
    std::vector<std::pair<int, Bytes>> sent;

    std::string open() override { return {}; }
    void close() override {}
    void drop(int) override {}
    bool send(int connection, Packet packet) override
    {
        sent.emplace_back(connection, Bytes(packet.begin(), packet.end()));
        return true;
    }
};

TEST(BusDevice, AnswersInTurnAndAtOnceWhenItIsNoLongerSlow)
{
    Journal journal;
    MemoryBus bus;
    GpioLines lines(journal, bus);
    Clock::time_point time {};
    const auto pass = [&](std::chrono::milliseconds duration) { lines.advance(time += duration); };
    pass(0ms);
    lines.drive(7, 1);
    lines.slowBy(100ms);
    Bytes readLine7;
    for (const std::uint32_t value : { 7u, 2u, 0u })
        appendValue(readLine7, value);
    for (const int connection : { 1, 2, 3 })
        bus.received(connection, readLine7);
    pass(99ms);
    EXPECT_TRUE(bus.sent.empty());
    pass(1ms);
    const Bytes high { 0, 0, 0, 0, 1, 0, 0, 0 };
    EXPECT_EQ(bus.sent, (std::vector { std::pair(1, high) }));
    EXPECT_EQ(lines.due(), time + 100ms);
    lines.slowBy(0ms);
    pass(0ms);
    EXPECT_EQ(bus.sent, (std::vector { std::pair(1, high), { 2, high }, { 3, high } }));
}

} // namespace
