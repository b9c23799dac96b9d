#include "platform/devices/LineDevices.h"
#include "platform/devices/socket/SocketDevice.h"

#include <array>

namespace Platform
{

namespace
{

/** The lines are set on threads that have other work: a simulated chip answers at once or is not there. */
constexpr int gpioTimeoutMs = 1000;

enum GpioOperation { function = 0, write = 1, read = 2 };
enum I2cDirection { writing = 0, reading = 1 };

constexpr size_t statusSize = SocketDevice::statusSize;
constexpr size_t gpioReplySize = 8;
constexpr size_t i2cReadReplySize = 5;

class SocketGpioChip : public GpioChip
{
public:
    explicit SocketGpioChip(const juce::String& socketPath)
        : path(socketPath)
    {
    }

    juce::Result setFunction(int line, int number) override { return operate(line, GpioOperation::function, number); }

    juce::Result write(int line, int level) override { return operate(line, GpioOperation::write, level); }

    juce::Result look(int line) override { return operate(line, GpioOperation::read, 0); }

private:
    juce::Result operate(int line, GpioOperation operation, int value)
    {
        juce::MemoryOutputStream words;
        words.writeInt(line);
        words.writeInt(operation);
        words.writeInt(value);
        const std::span request(static_cast<const std::uint8_t*>(words.getData()), words.getDataSize());

        std::array<std::uint8_t, gpioReplySize> reply {};
        const bool kept = device.isConnected();
        auto result = kept ? juce::Result::ok() : device.connect(path, gpioTimeoutMs);
        if (result.wasOk())
            result = device.operate(request, reply, gpioReplySize);
        // A connection kept from before may belong to a simulated chip that has been restarted since.
        if (kept && !device.isConnected())
        {
            result = device.connect(path, gpioTimeoutMs);
            if (result.wasOk())
                result = device.operate(request, reply, gpioReplySize);
        }
        return result;
    }

    juce::String path;
    SocketDevice device;
};

class SocketI2cBus : public I2CBus
{
public:
    explicit SocketI2cBus(SocketDevice connected)
        : device(std::move(connected))
    {
    }

    juce::Result write(int address, int registerNumber, std::uint8_t value) override
    {
        const std::array request { byte(address), byte(I2cDirection::writing), byte(registerNumber), value };
        std::array<std::uint8_t, i2cReadReplySize> reply {};
        return device.operate(request, reply, statusSize);
    }

    juce::Result read(int address, int registerNumber, std::uint8_t& value) override
    {
        const std::array request { byte(address), byte(I2cDirection::reading), byte(registerNumber) };
        std::array<std::uint8_t, i2cReadReplySize> reply {};
        auto result = device.operate(request, reply, i2cReadReplySize);
        if (result.wasOk())
            value = reply[statusSize];
        return result;
    }

private:
    static std::uint8_t byte(int value) { return static_cast<std::uint8_t>(value); }

    SocketDevice device;
};

} // namespace

std::unique_ptr<GpioChip> makeSocketGpioChip(const juce::String& socketPath)
{
    return std::make_unique<SocketGpioChip>(socketPath);
}

std::unique_ptr<I2CBus> openSocketI2cBus(const juce::String& socketPath, int timeoutMs, juce::String& error)
{
    SocketDevice device;
    if (const auto result = device.connect(socketPath, timeoutMs); result.failed())
    {
        error = result.getErrorMessage();
        return nullptr;
    }
    return std::make_unique<SocketI2cBus>(std::move(device));
}

} // namespace Platform
