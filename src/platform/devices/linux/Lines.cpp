#include "platform/devices/Lines.h"

#include "platform/base/Threads.h"
#include "platform/config/Configuration.h"
#include "platform/devices/LineDevices.h"
#include "platform/devices/linux/FailureLog.h"
#include "platform/devices/socket/SocketDevice.h"
#include "platform/record/Recorder.h"

#include <map>
#include <mutex>

namespace Platform
{

namespace
{

constexpr const char* i2cBus1 = "I2C1:";

std::unique_ptr<GpioChip> chipOf(const juce::String& configured)
{
    const auto socketPath = SocketDevice::pathOf(configured);
    return socketPath.isEmpty() ? makeGpioChip(configured) : makeSocketGpioChip(socketPath);
}

std::unique_ptr<I2CBus> busOf(const juce::String& configured, int timeoutMs, juce::String& error)
{
    const auto socketPath = SocketDevice::pathOf(configured);
    return socketPath.isEmpty() ? openI2cBus(configured, timeoutMs, error)
                                : openSocketI2cBus(socketPath, timeoutMs, error);
}

/** The process's one chip. It stays open, so that outputs keep their levels. */
class GpioLines
{
public:
    static GpioLines& get()
    {
        static GpioLines instance;
        return instance;
    }

    /** The operation on the chip line that stands for the unit line. */
    template <typename Operation>
    bool use(int line, Operation operation)
    {
        const std::scoped_lock guard(lock);
        makeChip();
        const int chipLine = Configuration::get().chipLine(line);
        return failures.check(line, path + " line " + juce::String(chipLine), operation(*chip, chipLine));
    }

    juce::Result look(int line)
    {
        const std::scoped_lock guard(lock);
        makeChip();
        return chip->look(Configuration::get().chipLine(line));
    }

private:
    void makeChip()
    {
        const auto& configured = Configuration::get().gpio;
        if (chip != nullptr && path == configured)
            return;
        path = configured;
        chip = chipOf(path);
    }

    Mutex lock { Mutex::Guards::outside };
    juce::String path;
    std::unique_ptr<GpioChip> chip;
    FailureLog failures { Log("platform/Lines", "GpioFunc") };
};

juce::String nameOf(int address)
{
    return "I2C address 0x" + juce::String::toHexString(address);
}

/** A camera is asked every second: a bus or device that is not there is reported once. */
struct I2cFailures
{
    static bool check(int thing, const juce::String& name, const juce::Result& result)
    {
        static FailureLog failures { Log("platform/Lines", "I2CDevice") };
        return failures.check(thing, name, result);
    }

    static constexpr int bus = -1; ///< any other number is the address of a device
};

} // namespace

bool GpioFunc::setPinFunc(int line, int function)
{
    const auto operation = [function](GpioChip& chip, int chipLine) { return chip.setFunction(chipLine, function); };
    return recorded(
        Step::lineFunction, [&] { return GpioLines::get().use(line, operation); }, line, function);
}

juce::Result GpioFunc::look(int line)
{
    return GpioLines::get().look(line);
}

bool GpioFunc::writePin(int line, int level)
{
    const auto operation = [level](GpioChip& chip, int chipLine) { return chip.write(chipLine, level); };
    return recorded(
        Step::lineLevel, [&] { return GpioLines::get().use(line, operation); }, line, level);
}

void endDeviceWaits()
{
    SocketDevice::endAll();
}

struct I2CDevice::Backend
{
    std::unique_ptr<I2CBus> bus;
};

I2CDevice::I2CDevice()
    : backend(std::make_unique<Backend>())
{
}

I2CDevice::~I2CDevice() = default;

bool I2CDevice::open(const juce::String& bus, int timeoutMs)
{
    close();
    juce::String error = "there is no such bus";
    if (bus == i2cBus1)
        backend->bus = busOf(Configuration::get().i2c1, timeoutMs, error);
    const auto result = backend->bus != nullptr ? juce::Result::ok() : juce::Result::fail(error);
    return recorded(
        Step::i2cOpen, [&] { return I2cFailures::check(I2cFailures::bus, bus, result); }, bus);
}

void I2CDevice::close()
{
    backend->bus.reset();
}

bool I2CDevice::writeRegister(int address, int registerNumber, std::uint8_t value)
{
    const auto write = [&]
    { return I2cFailures::check(address, nameOf(address), backend->bus->write(address, registerNumber, value)); };
    return backend->bus != nullptr && recorded(Step::i2cWrite, write, address, registerNumber, value);
}

bool I2CDevice::readRegister(int address, int registerNumber, std::uint8_t& value)
{
    if (backend->bus == nullptr)
        return false;
    constexpr int none = -1;
    const auto read = [&]
    {
        const auto result = backend->bus->read(address, registerNumber, value);
        return I2cFailures::check(address, nameOf(address), result) ? value : none;
    };
    return recorded(Step::i2cRead, read, address, registerNumber) != none;
}

} // namespace Platform
