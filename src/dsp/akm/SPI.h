#pragma once

#include "platform/devices/SpiDevice.h"

namespace Dsp
{

/** One conversation with the DSP over the SPI driver, from open to close. */
class SPI
{
public:
    ~SPI() { close(); }

    /** Opens and configures the driver and releases the chip. False when it cannot be opened. */
    bool open(const juce::String& name);
    /** Holds the chip selected over all of it. False when a transfer fails: the rest is not sent. */
    bool write(std::span<const std::uint8_t> data);
    /** Sends the command, at most 4 bytes, and fills the buffer. */
    bool read(std::span<std::uint8_t> buffer, std::span<const std::uint8_t> command);
    void close() { device.close(); }

    static constexpr std::size_t longestTransfer = 123;

private:
    Platform::SpiDevice device;
};

} // namespace Dsp
