#pragma once

#include "bench/unit/Loop.h"

#include <map>

namespace Bench
{

/** A listening SOCK_SEQPACKET socket in the file system, on the loop. Several connections may be open at once. */
class PacketServer : public PacketLine
{
public:
    explicit PacketServer(Loop& loopToUse)
        : loop(loopToUse)
    {
    }
    ~PacketServer() override { close(); }
    PacketServer(const PacketServer&) = delete;
    PacketServer& operator=(const PacketServer&) = delete;

    /** A socket left over there is replaced. It is for the group of its folder. Before `open`. */
    void setPath(std::string pathToUse) { path = std::move(pathToUse); }

    std::string open() override;
    void close() override;
    bool send(int connection, Packet packet) override;
    void drop(int connection) override;

    static constexpr std::size_t maxPacket = 64 * 1024;

private:
    struct Socket
    {
        int descriptor;
        std::unique_ptr<Watch> watch;
    };

    Loop& loop;
    std::string path;
    Socket listener { -1, nullptr };
    std::map<int, Socket> connections;
    int nextConnection = 1;

    static void close(Socket& socket);
    void accept();
    void receive(int connection);
};

} // namespace Bench
