#include "bench/unit/LineServer.h"

#include <asio/connect.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
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

} // namespace
