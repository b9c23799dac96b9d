#include "platform/devices/SpiDevice.h"

#include "platform/config/Configuration.h"
#include "platform/devices/linux/FailureLog.h"
#include "platform/devices/socket/SocketDevice.h"
#include "platform/record/Recorder.h"

namespace Platform
{

namespace
{

constexpr const char* spiBus2 = "SPI2:";

enum class Part { open, configure, select, write, read };
constexpr const char* partNames[] { "open", "configure", "select", "write", "read" };

std::unique_ptr<SpiBus> busOf(const juce::String& configured, juce::String& error)
{
    const auto socketPath = SocketDevice::pathOf(configured);
    return socketPath.isEmpty() ? openSpiBus(configured, error) : openSocketSpiBus(socketPath, error);
}

/** The device is opened for each block that is sent: every part has its own failure, which its own success ends. */
bool check(Part part, const juce::Result& result)
{
    static FailureLog failures { Log("platform/SpiDevice", "SpiDevice") };
    const auto index = static_cast<int>(part);
    return failures.check(index, juce::String(spiBus2) + " " + partNames[index], result);
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
    return recorded(
        Step::spiOpen,
        [&] { return check(Part::open, bus != nullptr ? juce::Result::ok() : juce::Result::fail(error)); }, name);
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
    return bus != nullptr && recorded(
                                 Step::spiConfigure, [&] { return check(Part::configure, bus->configure(record)); },
                                 std::as_bytes(std::span(record)));
}

bool SpiDevice::select(bool on)
{
    return bus != nullptr && recorded(
                                 Step::spiSelect, [&] { return check(Part::select, bus->select(on)); }, on);
}

bool SpiDevice::write(std::span<const std::uint8_t> data)
{
    return bus != nullptr && recorded(
                                 Step::spiWrite, [&] { return check(Part::write, bus->write(data)); }, data);
}

bool SpiDevice::read(std::span<const std::uint8_t> prefix, std::span<std::uint8_t> buffer)
{
    if (bus == nullptr)
        return false;
    const bool succeeded = check(Part::read, bus->read(prefix, buffer));
    recordStep(Step::spiRead, prefix, buffer.size(), succeeded ? buffer : std::span<std::uint8_t>());
    return succeeded;
}

} // namespace Platform
