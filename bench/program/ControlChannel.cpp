#include "bench/program/ControlChannel.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <nlohmann/json.hpp>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace BenchProgram
{

ControlChannel::~ControlChannel()
{
    close();
}

bool ControlChannel::open(const std::string& path, Order onOrder, Lost onLost)
{
    sockaddr_un address {};
    if (path.empty() || path.size() >= sizeof address.sun_path)
        return false;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    descriptor = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (descriptor < 0 || ::connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
    {
        if (descriptor >= 0)
            ::close(std::exchange(descriptor, -1));
        return false;
    }
    thread = std::thread([this, onOrder = std::move(onOrder), onLost = std::move(onLost)] { run(onOrder, onLost); });
    return true;
}

void ControlChannel::close()
{
    closing = true;
    if (descriptor >= 0)
        ::shutdown(descriptor, SHUT_RDWR);
    if (thread.joinable())
        thread.join();
    if (descriptor >= 0)
        ::close(std::exchange(descriptor, -1));
}

void ControlChannel::report(nlohmann::json event)
{
    // The clock that the bench's journal goes by.
    event["at"] = std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
    const auto text = event.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    if (descriptor >= 0)
        // The bench has gone when this fails, and the reading thread finds that out.
        ::send(descriptor, text.data(), text.size(), MSG_NOSIGNAL);
}

void ControlChannel::run(const Order& onOrder, const Lost& onLost) const
{
    // A line of the console with every letter escaped, and what stands around it.
    std::vector<char> buffer(65536);
    for (;;)
    {
        const auto count = ::recv(descriptor, buffer.data(), buffer.size(), 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        const auto order = nlohmann::json::parse(buffer.data(), buffer.data() + count, nullptr, false);
        if (order.is_object())
            onOrder(order);
    }
    if (!closing)
        onLost();
}

} // namespace BenchProgram
