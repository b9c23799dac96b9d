#pragma once

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

/** One connection of the unit's to a simulated bus. */
class BusClient
{
public:
    explicit BusClient(const std::string& path)
    {
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        descriptor = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
        connected = ::connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    }
    ~BusClient() { ::close(descriptor); }
    BusClient(const BusClient&) = delete;
    BusClient& operator=(const BusClient&) = delete;

    bool isConnected() const { return connected; }

    /** Empty when the connection was closed. */
    std::vector<std::uint8_t> ask(const std::vector<std::uint8_t>& request) const
    {
        EXPECT_EQ(::send(descriptor, request.data(), request.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(request.size()));
        std::vector<std::uint8_t> reply(256);
        const auto count = ::recv(descriptor, reply.data(), reply.size(), 0);
        reply.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        return reply;
    }

private:
    int descriptor;
    bool connected = false;
};
