#pragma once

#include <cstdint>
#include <juce_core/juce_core.h>
#include <memory>

namespace Platform
{

/** The unit's GPIO lines, by their unit numbers; `gpio_lines` maps them to lines of the chip. Any thread. */
struct GpioFunc
{
    /** Function 32 is output, any other input. False when the line cannot be had (logged once per line). */
    static bool setPinFunc(int line, int function);
    static bool writePin(int line, int level);
    /** Whether the line can be had; leaves it as it is. Not logged, and no step of a recording. */
    static juce::Result look(int line);
};

/** Ends the calls that wait for a simulated device, now and from now on: the process ends. Any thread. */
void endDeviceWaits();

/** A device on an I2C bus. Addresses are in the 8-bit form (0x88 is 0x44 on the wire). */
class I2CDevice
{
public:
    I2CDevice();
    ~I2CDevice(); ///< closes

    /** "I2C1:" is the only bus. False when it cannot be opened. Time-out in milliseconds. */
    bool open(const juce::String& bus, int timeoutMs);
    void close();
    bool writeRegister(int address, int registerNumber, std::uint8_t value);
    /** False when the device does not answer. */
    bool readRegister(int address, int registerNumber, std::uint8_t& value);

private:
    struct Backend;
    std::unique_ptr<Backend> backend;
    JUCE_DECLARE_NON_COPYABLE(I2CDevice)
};

} // namespace Platform
