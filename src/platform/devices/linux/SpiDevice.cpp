#include "platform/devices/SpiDevice.h"

#include "platform/config/Configuration.h"
#include "platform/devices/linux/FailureLog.h"
#include "platform/devices/socket/SocketDevice.h"

namespace Platform
{

namespace
{

constexpr const char* spiBus2 = "SPI2:";

enum class Step { open, configure, select, write, read };
constexpr const char* stepNames[] { "open", "configure", "select", "write", "read" };

std::unique_ptr<SpiBus> busOf(const juce::String& configured, juce::String& error)
{
    const auto socketPath = SocketDevice::pathOf(configured);
    return socketPath.isEmpty() ? openSpiBus(configured, error) : openSocketSpiBus(socketPath, error);
}

/** The device is opened for each block that is sent: every step has its own failure, which its own success ends. */
bool check(Step step, const juce::Result& result)
{
    static FailureLog failures { Log("platform/SpiDevice", "SpiDevice") };
    const auto index = static_cast<int>(step);
    return failures.check(index, juce::String(spiBus2) + " " + stepNames[index], result);
}

} // namespace

SpiDevice::SpiDevice() = default;

SpiDevice::~SpiDevice() = default;

bool SpiDevice::open(const juce::String& name)
{
    close();
    juce::String error = "there is no bus " + name;
    if (name == spiBus2)
        bus = busOf(Configuration::get().spi2, error);
    return check(Step::open, bus != nullptr ? juce::Result::ok() : juce::Result::fail(error));
}

bool SpiDevice::isOpen() const
{
    return bus != nullptr;
}

void SpiDevice::close()
{
    bus.reset();
}

bool SpiDevice::configure(const std::array<std::uint32_t, 10>& record)
{
    return bus != nullptr && check(Step::configure, bus->configure(record));
}

bool SpiDevice::select(bool on)
{
    return bus != nullptr && check(Step::select, bus->select(on));
}

bool SpiDevice::write(std::span<const std::uint8_t> data)
{
    return bus != nullptr && check(Step::write, bus->write(data));
}

bool SpiDevice::read(std::span<const std::uint8_t> prefix, std::span<std::uint8_t> buffer)
{
    return bus != nullptr && check(Step::read, bus->read(prefix, buffer));
}

} // namespace Platform
