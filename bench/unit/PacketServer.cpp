#include "bench/unit/PacketServer.h"

#include "bench/unit/Sharing.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace Bench
{

std::string PacketServer::open()
{
    sockaddr_un address {};
    if (path.size() >= sizeof address.sun_path)
        return "the socket path is too long: " + path;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    ::unlink(path.c_str());
    listener.descriptor = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    constexpr int backlog = 16;
    if (listener.descriptor < 0 ||
        ::bind(listener.descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener.descriptor, backlog) != 0)
        return path + ": " + std::strerror(errno);
    if (auto error = shareWith(std::filesystem::path(path).parent_path(), path); !error.empty())
        return error;
    listener.watch = std::make_unique<Watch>(loop, listener.descriptor, [this] { accept(); });
    return {};
}

void PacketServer::close()
{
    if (listener.descriptor >= 0)
        ::unlink(path.c_str());
    close(listener);
    for (auto& [connection, socket] : connections)
        close(socket);
    connections.clear();
}

void PacketServer::close(Socket& socket)
{
    socket.watch.reset();
    if (socket.descriptor >= 0)
        ::close(std::exchange(socket.descriptor, -1));
}

bool PacketServer::send(int connection, Packet packet)
{
    const auto found = connections.find(connection);
    return found != connections.end() && ::send(found->second.descriptor, packet.data(), packet.size(),
                                                MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(packet.size());
}

void PacketServer::drop(int connection)
{
    if (const auto found = connections.find(connection); found != connections.end())
        ::shutdown(found->second.descriptor, SHUT_RDWR);
}

void PacketServer::accept()
{
    const auto descriptor = ::accept4(listener.descriptor, nullptr, nullptr, SOCK_CLOEXEC);
    if (descriptor < 0)
        return;
    ucred peer {};
    socklen_t size = sizeof peer;
    const auto known = ::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
    const auto connection = nextConnection++;
    connected(connection, known ? peer.pid : -1);
    connections[connection] = { descriptor, std::make_unique<Watch>(loop, descriptor,
                                                                    [this, connection] { receive(connection); }) };
}

void PacketServer::receive(int connection)
{
    std::vector<std::uint8_t> buffer(maxPacket);
    const auto count = ::recv(connections.at(connection).descriptor, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (count > 0)
        return received(connection, { buffer.data(), static_cast<std::size_t>(count) });
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    auto socket = std::move(connections.extract(connection).mapped());
    close(socket);
    closed(connection);
}

} // namespace Bench
