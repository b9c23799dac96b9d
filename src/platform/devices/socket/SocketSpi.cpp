#include "platform/devices/SpiDevice.h"
#include "platform/devices/socket/SocketDevice.h"

#include <algorithm>
#include <vector>

namespace Platform
{

namespace
{

constexpr int timeoutMs = 1000;
constexpr size_t longestPrefix = 4;

/** The control codes of the unit's driver. */
enum class Control : std::uint32_t { configure = 0x1B0004, write = 0x1B000C, read = 0x1B0010, select = 0x1B0024 };

constexpr int selectLine = 0;
constexpr int releaseLine = 1;

class SocketSpiBus : public SpiBus
{
public:
    explicit SocketSpiBus(SocketDevice connected)
        : device(std::move(connected))
    {
    }

    juce::Result configure(const std::array<std::uint32_t, 10>& record) override
    {
        juce::MemoryOutputStream request;
        putCode(request, Control::configure);
        for (const auto word : record)
            request.writeInt(static_cast<int>(word));
        return operate(request, {});
    }

    juce::Result select(bool on) override
    {
        juce::MemoryOutputStream request;
        putCode(request, Control::select);
        request.writeInt(on ? selectLine : releaseLine);
        return operate(request, {});
    }

    juce::Result write(std::span<const std::uint8_t> data) override
    {
        juce::MemoryOutputStream request;
        putCode(request, Control::write);
        request.writeByte(0);
        request.write(data.data(), data.size());
        return operate(request, {});
    }

    juce::Result read(std::span<const std::uint8_t> prefix, std::span<std::uint8_t> buffer) override
    {
        if (prefix.size() > longestPrefix)
            return juce::Result::fail("the prefix is longer than 4 bytes");
        juce::MemoryOutputStream request;
        putCode(request, Control::read);
        request.writeByte(static_cast<char>(prefix.size()));
        request.write(prefix.data(), prefix.size());
        request.writeInt(static_cast<int>(buffer.size()));
        return operate(request, buffer);
    }

private:
    static void putCode(juce::MemoryOutputStream& request, Control code) { request.writeInt(static_cast<int>(code)); }

    /** A failure leaves the buffer as it was. */
    juce::Result operate(const juce::MemoryOutputStream& request, std::span<std::uint8_t> buffer)
    {
        std::vector<std::uint8_t> reply(SocketDevice::statusSize + buffer.size());
        const std::span packet(static_cast<const std::uint8_t*>(request.getData()), request.getDataSize());
        auto result = device.operate(packet, reply, reply.size());
        if (result.wasOk())
            std::copy(reply.begin() + SocketDevice::statusSize, reply.end(), buffer.begin());
        return result;
    }

    SocketDevice device;
};

} // namespace

std::unique_ptr<SpiBus> openSocketSpiBus(const juce::String& socketPath, juce::String& error)
{
    SocketDevice device;
    if (const auto result = device.connect(socketPath, timeoutMs); result.failed())
    {
        error = result.getErrorMessage();
        return nullptr;
    }
    return std::make_unique<SocketSpiBus>(std::move(device));
}

} // namespace Platform
