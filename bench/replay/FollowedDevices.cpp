// Ports, buses, lines and the loudspeaker: what the engine asks of them is compared, and answered as it was.
#include "bench/replay/Follower.h"
#include "platform/devices/Lines.h"
#include "platform/devices/SpiDevice.h"
#include "platform/sound/Sound.h"

namespace Platform
{

using Replay::Follower;

namespace
{

/** The recorded answer. */
constexpr auto no = [] { return false; };
constexpr auto zero = [] { return 0; };

} // namespace

struct SerialPort::Backend
{
    SerialCallBack& receiver;
    std::string name; ///< empty while it is closed
};

SerialPort::SerialPort(SerialCallBack& receiver)
    : backend(new Backend { receiver, {} })
{
}

SerialPort::~SerialPort()
{
    close();
}

bool SerialPort::open(const juce::String& name, int baudRate, bool awaitDevice)
{
    close();
    // Bytes may come before the answer does.
    auto& ports = Follower::get().reached.ports;
    ports[name.toStdString()] = &backend->receiver;
    const bool opened = recorded(Step::portOpen, no, name, baudRate, awaitDevice);
    if (opened || awaitDevice)
        backend->name = name.toStdString();
    else
        ports.erase(name.toStdString());
    return opened;
}

void SerialPort::close()
{
    if (!isOpen())
        return;
    recordStep(Step::portClose, backend->name, true);
    Follower::get().reached.ports.erase(std::exchange(backend->name, {}));
}

bool SerialPort::isOpen() const
{
    return !backend->name.empty();
}

bool SerialPort::isConnected() const
{
    return recorded(Step::portConnected, no, backend->name);
}

int SerialPort::write(const void* data, int length)
{
    return recorded(Step::portWrite, zero, backend->name,
                    std::string_view(static_cast<const char*>(data), static_cast<std::size_t>(std::max(0, length))));
}

bool GpioFunc::setPinFunc(int line, int function)
{
    return recorded(Step::lineFunction, no, line, function);
}

bool GpioFunc::writePin(int line, int level)
{
    return recorded(Step::lineLevel, no, line, level);
}

void endDeviceWaits() {}

struct I2CDevice::Backend
{
    bool open = false;
};

I2CDevice::I2CDevice()
    : backend(std::make_unique<Backend>())
{
}

I2CDevice::~I2CDevice() = default;

bool I2CDevice::open(const juce::String& bus, int)
{
    return backend->open = recorded(Step::i2cOpen, no, bus);
}

void I2CDevice::close()
{
    backend->open = false;
}

bool I2CDevice::writeRegister(int address, int registerNumber, std::uint8_t value)
{
    return backend->open && recorded(Step::i2cWrite, no, address, registerNumber, value);
}

bool I2CDevice::readRegister(int address, int registerNumber, std::uint8_t& value)
{
    if (!backend->open)
        return false;
    const int answer = recorded(Step::i2cRead, zero, address, registerNumber);
    if (answer >= 0)
        value = static_cast<std::uint8_t>(answer);
    return answer >= 0;
}

namespace
{

/** Stands for an open bus, which nothing is asked of. */
class FollowedBus : public SpiBus
{
    juce::Result configure(const std::array<std::uint32_t, 10>&) override { return juce::Result::ok(); }
    juce::Result select(bool) override { return juce::Result::ok(); }
    juce::Result write(std::span<const std::uint8_t>) override { return juce::Result::ok(); }
    juce::Result read(std::span<const std::uint8_t>, std::span<std::uint8_t>) override { return juce::Result::ok(); }
};

} // namespace

SpiDevice::SpiDevice() = default;
SpiDevice::~SpiDevice() = default;

bool SpiDevice::open(const juce::String& name)
{
    close();
    if (recorded(Step::spiOpen, no, name))
        bus = std::make_unique<FollowedBus>();
    return isOpen();
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
    return isOpen() && recorded(Step::spiConfigure, no, std::as_bytes(std::span(record)));
}

bool SpiDevice::select(bool on)
{
    return isOpen() && recorded(Step::spiSelect, no, on);
}

bool SpiDevice::write(std::span<const std::uint8_t> data)
{
    return isOpen() && recorded(Step::spiWrite, no, data);
}

bool SpiDevice::read(std::span<const std::uint8_t> prefix, std::span<std::uint8_t> buffer)
{
    if (!isOpen())
        return false;
    const auto bytes = recorded(
        Step::spiRead, [] { return std::string(); }, prefix, buffer.size());
    if (bytes.size() == buffer.size())
        std::copy(bytes.begin(), bytes.end(), buffer.begin());
    return bytes.size() == buffer.size();
}

bool PlaySound(const juce::String& file)
{
    return recorded(Step::sound, no, file);
}

void releaseSound() {}

} // namespace Platform
