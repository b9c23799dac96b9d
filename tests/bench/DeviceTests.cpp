#include "BusClient.h"
#include "bench/GpioLines.h"
#include "bench/Names.h"
#include "bench/Programs.h"
#include "bench/VideoDecoder.h"
#include "bench/WireValues.h"
#include "bench/program/ControlChannel.h"

#include <filesystem>
#include <future>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace
{

using namespace Bench;
using namespace std::chrono_literals;
using nlohmann::json;

class Devices : public testing::Test
{
protected:
    Journal journal;
    std::filesystem::path folder;

    void SetUp() override
    {
        auto pattern = (std::filesystem::temp_directory_path() / "bench-XXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
    }

    void TearDown() override { std::filesystem::remove_all(folder); }

    bool sees(const std::string& stream, const std::string& text)
    {
        return journal.waitFor(0, Clock::now() + 5s, isEvent(stream, text)).has_value();
    }
};

TEST_F(Devices, videoDecoderHasRegistersAndASignal)
{
    using Packet = std::vector<std::uint8_t>;
    VideoDecoder decoder(journal);
    const auto path = (folder / "i2c").string();
    ASSERT_EQ(decoder.start(path), "");
    const BusClient poll(path), writer(path);
    EXPECT_EQ(writer.ask({ 0x88, 0, 0x02, 0x44 }), (Packet { 0, 0, 0, 0 }));
    EXPECT_EQ(poll.ask({ 0x88, 1, 0x02 }), (Packet { 0, 0, 0, 0, 0x44 })) << "both connections see one device";
    EXPECT_EQ(poll.ask({ 0x88, 1, 0x01 }), (Packet { 0, 0, 0, 0, 0 }));
    decoder.setSignal(true);
    EXPECT_EQ(poll.ask({ 0x88, 1, 0x01 }), (Packet { 0, 0, 0, 0, 0x48 }));
    const Packet refused { 0xFF, 0xFF, 0xFF, 0xFF, 0 };
    EXPECT_EQ(poll.ask({ 0x40, 1, 0x01 }), refused) << "nobody at that address";
    decoder.setFailing(true);
    EXPECT_EQ(poll.ask({ 0x88, 1, 0x01 }), refused);
    EXPECT_TRUE(sees("i2c", "02=44"));
}

TEST_F(Devices, linesRememberFunctionAndLevel)
{
    GpioLines lines(journal);
    const auto path = (folder / "gpio").string();
    ASSERT_EQ(lines.start(path), "");
    const BusClient client(path);
    const auto ask = [&](std::uint32_t line, std::uint32_t operation, std::uint32_t value)
    {
        std::vector<std::uint8_t> request;
        for (const auto each : { line, operation, value })
            appendValue(request, each);
        const auto reply = client.ask(request);
        EXPECT_EQ(reply.size(), 8u);
        return std::pair(valueAt<std::int32_t>(reply, 0), valueAt<std::uint32_t>(reply, 4));
    };
    EXPECT_EQ(ask(32856, 0, 32).first, 0);
    EXPECT_EQ(ask(32856, 1, 1).first, 0);
    EXPECT_EQ(ask(32856, 2, 0), std::pair(0, 1u));
    EXPECT_NE(ask(32856, 7, 0).first, 0);
    EXPECT_EQ(lines.lines().at(32856).function, 32u);
    EXPECT_TRUE(sees("gpio 32856", "1"));
    EXPECT_EQ(client.ask({ 1, 2, 3 }).size(), 8u) << "a short packet is refused, not fatal";
}

// A program reports what happens to it and takes orders; when it dies, the bench knows at once.
TEST_F(Devices, programsReportAndTakeOrders)
{
    Programs programs(journal);
    const auto path = (folder / "control").string();
    ASSERT_EQ(programs.start(path), "");
    std::promise<json> taken;
    BenchProgram::ControlChannel channel;
    ASSERT_TRUE(channel.open(
        path, [&](const json& order) { taken.set_value(order); }, [] {}));
    channel.report({ { "event", "hello" }, { "app", Pubhead::AppRadio }, { "commandLine", "" } });
    ASSERT_TRUE(sees("program AppRadio", "running"));
    EXPECT_EQ(programs.running().at(Pubhead::AppRadio).pid, ::getpid()) << "as the socket says, not the program";
    EXPECT_NE(programs.requestPage(Pubhead::mbEQ), "") << "not connected to the engine yet";

    channel.report({ { "event", "connected" } });
    channel.report({ { "event", "shown" }, { "page", Pubhead::mbFM } });
    ASSERT_TRUE(sees("front", "mbFM"));
    EXPECT_EQ(programs.requestPage(Pubhead::mbEQ), "") << "the program in front carries the request";
    const auto order = taken.get_future().get();
    EXPECT_EQ(order.value("order", ""), "send");
    EXPECT_EQ(order.value("what", 0), 1766);
    EXPECT_FALSE(programs.crash(Pubhead::AppUSB));

    channel.close();
    EXPECT_TRUE(sees("program AppRadio", "gone"));
    EXPECT_TRUE(sees("front", "none"));
}

// Whatever comes over the control socket, the bench goes on.
TEST_F(Devices, programsSurviveStrangePackets)
{
    Programs programs(journal);
    const auto path = (folder / "control").string();
    ASSERT_EQ(programs.start(path), "");
    BenchProgram::ControlChannel channel;
    ASSERT_TRUE(channel.open(
        path, [](const json&) {}, [] {}));
    for (const auto& packet :
         { json("text"), json { { "event", 7 } }, json { { "event", "shown" }, { "page", "x" } },
           json { { "event", "hello" }, { "app", 99 } }, json { { "event", "hello" }, { "app", "radio" } } })
        channel.report(packet);
    channel.report({ { "event", "hello" }, { "app", Pubhead::AppEQ } });
    EXPECT_TRUE(sees("program AppEQ", "running"));
    EXPECT_EQ(programs.running().size(), 1u);
}

} // namespace
