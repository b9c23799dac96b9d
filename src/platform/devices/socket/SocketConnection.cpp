#include "platform/devices/socket/SocketDevice.h"

#include "platform/base/Descriptor.h"
#include "platform/base/Time.h"
#include "platform/base/WakeUp.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <system_error>

namespace Platform
{

namespace
{

constexpr int millisecondsPerSecond = 1000;
constexpr suseconds_t microsecondsPerMillisecond = 1000;

/** The call's answer, asked again when a signal came between. */
template <typename Call>
ssize_t uninterrupted(Call call)
{
    for (;;)
        if (const ssize_t answer = call(); answer >= 0 || errno != EINTR)
            return answer;
}

/** Set when no device is waited for any more. */
WakeUp& ending()
{
    static WakeUp instance;
    return instance;
}

} // namespace

struct SocketDevice::Backend
{
    Descriptor socket;
    int replyLimitMs = 0;

    juce::Result waitForReply();
    juce::Result fail(const juce::String& reason);
    juce::Result failStep(const char* step);
};

SocketDevice::SocketDevice()
    : backend(std::make_unique<Backend>())
{
}

SocketDevice::~SocketDevice() = default;
SocketDevice::SocketDevice(SocketDevice&&) noexcept = default;

void SocketDevice::close()
{
    backend->socket.reset();
}

bool SocketDevice::isConnected() const
{
    return static_cast<bool>(backend->socket);
}

juce::Result SocketDevice::connect(const juce::String& path, int timeoutMs)
{
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (path.getNumBytesAsUTF8() >= sizeof(address.sun_path))
        return backend->fail(path + ": the path is too long for a socket");
    path.copyToUTF8(address.sun_path, sizeof(address.sun_path));

    backend->socket.reset(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    if (!backend->socket)
        return backend->failStep("socket");
    const timeval limit { timeoutMs / millisecondsPerSecond,
                          timeoutMs % millisecondsPerSecond * microsecondsPerMillisecond };
    backend->replyLimitMs = timeoutMs;
    if (setsockopt(backend->socket.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit)) < 0)
        return backend->failStep("time-out");
    if (uninterrupted(
            [&] {
                return ::connect(backend->socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
            }) < 0)
        return backend->failStep(path.toRawUTF8());
    return juce::Result::ok();
}

juce::Result SocketDevice::exchange(std::span<const std::uint8_t> request, std::span<std::uint8_t> reply,
                                    size_t& length)
{
    if (!isConnected())
        return backend->fail("not connected");
    if (uninterrupted([&] { return send(backend->socket.get(), request.data(), request.size(), MSG_NOSIGNAL); }) < 0)
        return backend->failStep("request");
    if (auto result = backend->waitForReply(); result.failed())
        return result;
    // MSG_TRUNC answers the whole length of a packet that does not fit.
    const ssize_t received =
        uninterrupted([&] { return recv(backend->socket.get(), reply.data(), reply.size(), MSG_TRUNC); });
    if (received < 0)
        return backend->failStep("reply");
    if (received == 0)
        return backend->fail("the simulated device has closed the connection");
    if (static_cast<size_t>(received) > reply.size())
        return backend->fail("a reply of " + juce::String(static_cast<int>(received)) + " bytes is too long");
    length = static_cast<size_t>(received);
    return juce::Result::ok();
}

juce::Result SocketDevice::Backend::waitForReply()
{
    const auto deadline = Clock::now() + std::chrono::milliseconds(replyLimitMs);
    std::array waits { pollfd { socket.get(), POLLIN, 0 }, pollfd { ending().getDescriptor(), POLLIN, 0 } };
    const int ready = static_cast<int>(uninterrupted(
        [&]
        {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
            return ::poll(waits.data(), waits.size(), std::max(0, static_cast<int>(left.count())));
        }));
    if (ready < 0)
        return failStep("reply");
    if (waits[1].revents != 0)
        return fail("reply: the engine ends");
    return ready == 0 ? fail("reply: timed out") : juce::Result::ok();
}

void SocketDevice::endAll()
{
    ending().set();
}

juce::Result SocketDevice::Backend::fail(const juce::String& reason)
{
    socket.reset();
    return juce::Result::fail(reason);
}

juce::Result SocketDevice::Backend::failStep(const char* step)
{
    // A socket's time-out is reported as "try again".
    const auto reason = errno == EAGAIN ? std::string("timed out") : std::generic_category().message(errno);
    return fail(juce::String::fromUTF8(step) + ": " + reason);
}

} // namespace Platform
