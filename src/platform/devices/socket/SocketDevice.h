#pragma once

#include <cstdint>
#include <juce_core/juce_core.h>
#include <memory>
#include <span>

namespace Platform
{

/**
    Connection to a simulated device: a Unix socket of packets, one request packet and one reply packet at a time. Used
    by one thread at a time. After any failure the connection is closed, so that no late reply is taken for another's.
*/
class SocketDevice
{
public:
    SocketDevice();
    ~SocketDevice();
    SocketDevice(SocketDevice&&) noexcept;

    /** PATH of "socket:PATH"; "" when the configured path is a device of this machine. */
    static juce::String pathOf(const juce::String& configured);

    /** The time-out, in milliseconds, holds for connecting and for each reply. */
    juce::Result connect(const juce::String& path, int timeoutMs);
    void close();
    bool isConnected() const;

    /** `reply` is the room for the answer; `length` the bytes of it that came. A longer answer is a failure. */
    juce::Result exchange(std::span<const std::uint8_t> request, std::span<std::uint8_t> reply, size_t& length);
    /** One exchange whose reply begins with a status, 0 = done, and has at least `size` bytes when it is. */
    juce::Result operate(std::span<const std::uint8_t> request, std::span<std::uint8_t> reply, size_t size);

    /** From here on every exchange fails at once, those under way included. Any thread. */
    static void endAll();

    /** Bytes of the status. */
    static constexpr size_t statusSize = 4;

private:
    struct Backend;

    std::unique_ptr<Backend> backend;
};

} // namespace Platform
