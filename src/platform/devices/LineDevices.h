#pragma once

#include <cstdint>
#include <juce_core/juce_core.h>
#include <memory>

/** What stands behind Lines.h: the GPIO chip and the I2C bus of this machine, or simulated ones. */
namespace Platform
{

/** Lines by their numbers on the chip. Called by one thread at a time. A failure says why. */
class GpioChip
{
public:
    virtual ~GpioChip() = default;
    /** `outputFunction` makes an output that keeps its level, any other number an input. */
    virtual juce::Result setFunction(int line, int function) = 0;
    virtual juce::Result write(int line, int level) = 0;
    /** Whether the line is there, and no other program has it. Leaves it as it is. */
    virtual juce::Result look(int line) = 0;

    static constexpr int outputFunction = 32;
};

/** An open I2C bus; addresses in the 8-bit form. Called by one thread at a time. A failure says why. */
class I2CBus
{
public:
    virtual ~I2CBus() = default;
    virtual juce::Result write(int address, int registerNumber, std::uint8_t value) = 0;
    virtual juce::Result read(int address, int registerNumber, std::uint8_t& value) = 0;
};

/** The chip of a character device, which is opened when a line is first used and tried again after a failure. */
std::unique_ptr<GpioChip> makeGpioChip(const juce::String& path);
/** Null, with the reason, when the bus cannot be opened. */
std::unique_ptr<I2CBus> openI2cBus(const juce::String& path, int timeoutMs, juce::String& error);

/** The same behind a socket: connected when a line is first used, and again after a failure. */
std::unique_ptr<GpioChip> makeSocketGpioChip(const juce::String& socketPath);
std::unique_ptr<I2CBus> openSocketI2cBus(const juce::String& socketPath, int timeoutMs, juce::String& error);

} // namespace Platform
