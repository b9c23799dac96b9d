#include "platform/devices/Lines.h"

#include "doubles/LinesDouble.h"

#include <map>
#include <mutex>
#include <set>

namespace Platform
{

struct I2CDevice::Backend
{
    bool open = false;
};

namespace
{

using doubles::LinesDouble;

/** What a reset forgets. */
struct Recorded
{
    std::vector<LinesDouble::PinCall> pinCalls;
    std::map<int, int> levels;
    std::set<int> failingDevices;
    std::map<std::pair<int, int>, std::uint8_t> registers;
    std::vector<LinesDouble::RegisterWrite> registerWrites;
};

std::mutex lock;
Recorded recorded;
int openDevices = 0;

constexpr const char* onlyBus = "I2C1:";

} // namespace

bool GpioFunc::setPinFunc(int line, int function)
{
    const std::lock_guard guard(lock);
    recorded.pinCalls.push_back({ line, LinesDouble::Operation::function, function });
    return true;
}

bool GpioFunc::writePin(int line, int level)
{
    const std::lock_guard guard(lock);
    recorded.levels[line] = level;
    recorded.pinCalls.push_back({ line, LinesDouble::Operation::write, level });
    return true;
}

void endDeviceWaits() {}

I2CDevice::I2CDevice()
    : backend(std::make_unique<Backend>())
{
}

I2CDevice::~I2CDevice()
{
    close();
}

bool I2CDevice::open(const juce::String& bus, int)
{
    close();
    const std::lock_guard guard(lock);
    if (bus != onlyBus)
        return false;
    backend->open = true;
    ++openDevices;
    return true;
}

void I2CDevice::close()
{
    const std::lock_guard guard(lock);
    if (std::exchange(backend->open, false))
        --openDevices;
}

bool I2CDevice::writeRegister(int address, int registerNumber, std::uint8_t value)
{
    const std::lock_guard guard(lock);
    if (!backend->open || recorded.failingDevices.contains(address))
        return false;
    recorded.registers[{ address, registerNumber }] = value;
    recorded.registerWrites.push_back({ address, registerNumber, value });
    return true;
}

bool I2CDevice::readRegister(int address, int registerNumber, std::uint8_t& value)
{
    const std::lock_guard guard(lock);
    if (!backend->open || recorded.failingDevices.contains(address))
        return false;
    value = recorded.registers[{ address, registerNumber }];
    return true;
}

namespace doubles
{

void LinesDouble::reset()
{
    const std::lock_guard guard(lock);
    recorded = {};
}

std::vector<LinesDouble::PinCall> LinesDouble::takePinCalls()
{
    const std::lock_guard guard(lock);
    return std::exchange(recorded.pinCalls, {});
}

int LinesDouble::getPin(int line)
{
    const std::lock_guard guard(lock);
    return recorded.levels[line];
}

void LinesDouble::failI2cDevice(int address, bool fails)
{
    const std::lock_guard guard(lock);
    if (fails)
        recorded.failingDevices.insert(address);
    else
        recorded.failingDevices.erase(address);
}

void LinesDouble::setRegister(int address, int registerNumber, std::uint8_t value)
{
    const std::lock_guard guard(lock);
    recorded.registers[{ address, registerNumber }] = value;
}

std::vector<LinesDouble::RegisterWrite> LinesDouble::takeRegisterWrites()
{
    const std::lock_guard guard(lock);
    return std::exchange(recorded.registerWrites, {});
}

int LinesDouble::getOpenI2cDevices()
{
    const std::lock_guard guard(lock);
    return openDevices;
}

} // namespace doubles

} // namespace Platform
