#include "platform/devices/socket/SocketDevice.h"

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

constexpr const char* prefix = "socket:";
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

juce::String SocketDevice::pathOf(const juce::String& configured)
{
    return configured.startsWith(prefix) ? configured.fromFirstOccurrenceOf(prefix, false, false) : juce::String();
}

juce::Result SocketDevice::connect(const juce::String& path, int timeoutMs)
{
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (path.getNumBytesAsUTF8() >= sizeof(address.sun_path))
        return fail(path + ": the path is too long for a socket");
    path.copyToUTF8(address.sun_path, sizeof(address.sun_path));

    socket.reset(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    if (!socket)
        return failStep("socket");
    const timeval limit { timeoutMs / millisecondsPerSecond,
                          timeoutMs % millisecondsPerSecond * microsecondsPerMillisecond };
    replyLimitMs = timeoutMs;
    if (setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit)) < 0)
        return failStep("time-out");
    if (uninterrupted(
            [&] { return ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)); }) < 0)
        return failStep(path.toRawUTF8());
    return juce::Result::ok();
}

juce::Result SocketDevice::exchange(std::span<const std::uint8_t> request, std::span<std::uint8_t> reply,
                                    size_t& length)
{
    if (!isConnected())
        return fail("not connected");
    if (uninterrupted([&] { return send(socket.get(), request.data(), request.size(), MSG_NOSIGNAL); }) < 0)
        return failStep("request");
    if (auto result = waitForReply(); result.failed())
        return result;
    // MSG_TRUNC answers the whole length of a packet that does not fit.
    const ssize_t received = uninterrupted([&] { return recv(socket.get(), reply.data(), reply.size(), MSG_TRUNC); });
    if (received < 0)
        return failStep("reply");
    if (received == 0)
        return fail("the simulated device has closed the connection");
    if (static_cast<size_t>(received) > reply.size())
        return fail("a reply of " + juce::String(static_cast<int>(received)) + " bytes is too long");
    length = static_cast<size_t>(received);
    return juce::Result::ok();
}

juce::Result SocketDevice::waitForReply()
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(replyLimitMs);
    std::array waits { pollfd { socket.get(), POLLIN, 0 }, pollfd { ending().getDescriptor(), POLLIN, 0 } };
    const int ready = static_cast<int>(uninterrupted(
        [&]
        {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
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

juce::Result SocketDevice::operate(std::span<const std::uint8_t> request, std::span<std::uint8_t> reply, size_t size)
{
    size_t length = 0;
    if (auto result = exchange(request, reply, length); result.failed())
        return result;
    if (length < statusSize)
        return juce::Result::fail("a reply of " + juce::String(static_cast<int>(length)) + " bytes is too short");
    if (const auto status = static_cast<juce::int32>(juce::ByteOrder::littleEndianInt(reply.data())); status != 0)
        return juce::Result::fail("the device answers " + juce::String(status));
    if (length < size)
        return juce::Result::fail("the reply lacks the value");
    return juce::Result::ok();
}

juce::Result SocketDevice::fail(const juce::String& reason)
{
    close();
    return juce::Result::fail(reason);
}

juce::Result SocketDevice::failStep(const char* step)
{
    // A socket's time-out is reported as "try again".
    const auto reason = errno == EAGAIN ? std::string("timed out") : std::generic_category().message(errno);
    return fail(juce::String::fromUTF8(step) + ": " + reason);
}

} // namespace Platform
