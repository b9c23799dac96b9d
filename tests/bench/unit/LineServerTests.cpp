#include "bench/unit/LineServer.h"

#include <array>
#include <asio/connect.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <gtest/gtest.h>

namespace
{

using namespace Bench;
using namespace std::chrono_literals;

TEST(LineServer, dropsAReaderThatDoesNotRead)
{
    Loop loop;
    LineServer server(loop);
    ASSERT_EQ(server.listen(0, { {}, [](const std::string&) {} }), "");
    asio::io_context context;
    asio::ip::tcp::socket reader(context);
    reader.connect({ asio::ip::address_v4::loopback(), static_cast<std::uint16_t>(server.port()) });
    const auto deadline = std::chrono::steady_clock::now() + 60s;
    while (server.dropped() == 0 && std::chrono::steady_clock::now() < deadline)
    {
        server.send(std::string(10'000, 'x'));
        loop.context().poll();
    }
    EXPECT_EQ(server.dropped(), 1u);
    EXPECT_EQ(server.readers(), 0u);
}

/** What a line is answered goes to the one that sent it. One that asks and does not read is dropped, and nobody else. */
TEST(LineServer, answersTheReaderThatAsks)
{
    Loop loop;
    LineServer server(loop);
    const auto answer = [](const std::string& line) { return line == "quiet" ? "" : line + std::string(10'000, '!'); };
    ASSERT_EQ(server.listen(0, { answer, [](const std::string&) {} }), "");
    const asio::ip::tcp::endpoint where(asio::ip::address_v4::loopback(), static_cast<std::uint16_t>(server.port()));
    asio::io_context context;
    asio::ip::tcp::socket asking(context), listening(context);
    asking.connect(where);
    listening.connect(where);
    const auto deadline = std::chrono::steady_clock::now() + 60s;
    while (server.readers() < 2 && std::chrono::steady_clock::now() < deadline)
        loop.context().run_one_for(1s);
    asio::error_code error;
    asio::write(asking, asio::buffer(std::string("quiet\nwhat\n")));
    while (server.dropped() == 0 && std::chrono::steady_clock::now() < deadline)
    {
        asio::write(asking, asio::buffer(std::string("again\n")), error);
        loop.context().poll();
    }
    EXPECT_EQ(server.dropped(), 1u);
    EXPECT_EQ(server.readers(), 1u);
    std::array<char, 5> begin {};
    asio::read(asking, asio::buffer(begin));
    EXPECT_EQ(std::string(begin.data(), begin.size()), "what!");
    EXPECT_EQ(listening.available(), 0u);
}

} // namespace
