#include "bench/simulation/SimulatedLines.h"
#include "platform/devices/socket/SocketDevice.h"

#include <algorithm>

namespace Platform
{

using Simulation::SimulatedPackets;

namespace
{

bool ending = false;

} // namespace

struct SocketDevice::Backend
{
    std::string path;
    int connection = 0;
    int replyLimitMs = 0;

    /** Null when the device has gone. */
    SimulatedPackets* line() const
    {
        auto* found = SimulatedPackets::find(path);
        return found != nullptr && found->isConnected(connection) ? found : nullptr;
    }
};

SocketDevice::SocketDevice()
    : backend(std::make_unique<Backend>())
{
}

SocketDevice::~SocketDevice()
{
    if (backend != nullptr)
        close();
}

SocketDevice::SocketDevice(SocketDevice&&) noexcept = default;

juce::Result SocketDevice::connect(const juce::String& path, int timeoutMs)
{
    close();
    backend->path = path.toStdString();
    backend->replyLimitMs = timeoutMs;
    auto* line = SimulatedPackets::find(backend->path);
    backend->connection = line == nullptr ? 0 : line->connect();
    return backend->connection != 0 ? juce::Result::ok() : juce::Result::fail(path + ": Connection refused");
}

void SocketDevice::close()
{
    if (auto* line = backend->line())
        line->disconnect(backend->connection);
    backend->connection = 0;
}

bool SocketDevice::isConnected() const
{
    return backend->connection != 0;
}

juce::Result SocketDevice::exchange(std::span<const std::uint8_t> request, std::span<std::uint8_t> reply,
                                    size_t& length)
{
    auto* line = ending ? nullptr : backend->line();
    const auto answer =
        line == nullptr ? std::nullopt : line->exchange(backend->connection, request, backend->replyLimitMs);
    if (!answer || answer->size() > reply.size())
    {
        close();
        return juce::Result::fail(answer ? "a reply is too long" : "reply: timed out");
    }
    std::ranges::copy(*answer, reply.begin());
    length = answer->size();
    return juce::Result::ok();
}

void SocketDevice::endAll()
{
    ending = true;
}

} // namespace Platform
