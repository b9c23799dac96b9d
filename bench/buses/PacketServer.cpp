#include "bench/buses/PacketServer.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace Bench
{

PacketServer::~PacketServer()
{
    close();
}

std::string PacketServer::listen(const std::string& pathToUse, Handlers handlersToCall)
{
    sockaddr_un address {};
    if (pathToUse.size() >= sizeof address.sun_path)
        return "the socket path is too long: " + pathToUse;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, pathToUse.c_str(), pathToUse.size() + 1);
    path = pathToUse;
    handlers = std::move(handlersToCall);
    ::unlink(path.c_str());
    listener = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    wakeUp = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    constexpr int backlog = 16;
    if (listener < 0 || wakeUp < 0 || ::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listener, backlog) != 0)
        return path + ": " + std::strerror(errno);
    stopping = false;
    thread = std::thread([this] { run(); });
    return {};
}

void PacketServer::close()
{
    if (thread.joinable())
    {
        stopping = true;
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto written = ::write(wakeUp, &one, sizeof one);
        thread.join();
        ::unlink(path.c_str());
    }
    const std::scoped_lock guard(lock);
    for (const auto& [connection, descriptor] : descriptors)
        ::close(descriptor);
    descriptors.clear();
    for (auto* descriptor : { &listener, &wakeUp })
        if (*descriptor >= 0)
            ::close(std::exchange(*descriptor, -1));
}

bool PacketServer::send(int connection, Packet packet)
{
    const std::scoped_lock guard(lock);
    const auto found = descriptors.find(connection);
    return found != descriptors.end() && ::send(found->second, packet.data(), packet.size(),
                                                MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(packet.size());
}

void PacketServer::drop(int connection)
{
    const std::scoped_lock guard(lock);
    if (const auto found = descriptors.find(connection); found != descriptors.end())
        ::shutdown(found->second, SHUT_RDWR);
}

void PacketServer::run()
{
    while (!stopping)
    {
        std::vector<pollfd> waits { { listener, POLLIN, 0 }, { wakeUp, POLLIN, 0 } };
        std::vector<int> connections;
        {
            const std::scoped_lock guard(lock);
            for (const auto& [connection, descriptor] : descriptors)
            {
                connections.push_back(connection);
                waits.push_back({ descriptor, POLLIN, 0 });
            }
        }
        if (::poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR)
            return;
        if (stopping)
            return;
        if ((waits[0].revents & POLLIN) != 0)
            accept();
        for (std::size_t i = 0; i < connections.size(); ++i)
        {
            const auto& wait = waits[i + 2];
            if (wait.revents == 0 || receive(connections[i], wait.fd))
                continue;
            {
                const std::scoped_lock guard(lock);
                descriptors.erase(connections[i]);
                ::close(wait.fd);
            }
            if (handlers.closed)
                handlers.closed(connections[i]);
        }
    }
}

void PacketServer::accept()
{
    const auto descriptor = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (descriptor < 0)
        return;
    ucred peer {};
    socklen_t size = sizeof peer;
    const auto known = ::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
    int connection = 0;
    {
        const std::scoped_lock guard(lock);
        connection = nextConnection++;
        descriptors[connection] = descriptor;
    }
    if (handlers.connected)
        handlers.connected(connection, known ? peer.pid : -1);
}

bool PacketServer::receive(int connection, int descriptor)
{
    std::vector<std::uint8_t> buffer(maxPacket);
    const auto count = ::recv(descriptor, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (count < 0)
        return errno == EAGAIN || errno == EINTR;
    if (count == 0)
        return false;
    handlers.received(connection, { buffer.data(), static_cast<std::size_t>(count) });
    return true;
}

} // namespace Bench
