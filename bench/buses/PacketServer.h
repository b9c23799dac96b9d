#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <thread>

namespace Bench
{

/**
    A listening SOCK_SEQPACKET socket in the file system with one thread. Several connections may be open at once; each
    has a number that is never used again. Handlers run on the server's thread, `send` on any.
*/
class PacketServer
{
public:
    using Packet = std::span<const std::uint8_t>;

    struct Handlers
    {
        std::function<void(int connection, int pid)> connected;
        std::function<void(int connection, Packet)> received;
        std::function<void(int connection)> closed;
    };

    PacketServer() = default;
    ~PacketServer();
    PacketServer(const PacketServer&) = delete;
    PacketServer& operator=(const PacketServer&) = delete;

    /** Empty on success, else what failed. A socket left over at that path is replaced. */
    std::string listen(const std::string& path, Handlers handlersToCall);
    /** No handler runs after it returns. */
    void close();
    /** False when the connection is gone or its peer does not read. */
    bool send(int connection, Packet packet);
    /** The peer finds its connection closed; `closed` is called soon after, on the server's thread. */
    void drop(int connection);

    static constexpr std::size_t maxPacket = 64 * 1024;

private:
    Handlers handlers;
    std::string path;
    int listener = -1, wakeUp = -1;
    std::thread thread;
    std::atomic<bool> stopping { false };
    std::mutex lock; // guards the two below; a descriptor is closed under it, so a sender never meets a reused one
    std::map<int, int> descriptors;
    int nextConnection = 1;

    void run();
    void accept();
    /** False when the peer has gone. */
    bool receive(int connection, int descriptor);
};

} // namespace Bench
