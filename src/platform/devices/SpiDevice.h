#pragma once

#include <array>
#include <cstdint>
#include <juce_core/juce_core.h>
#include <memory>
#include <span>

namespace Platform
{

/** An open bus behind SpiDevice: spidev on this machine, a simulated device behind a socket. A failure says why. */
class SpiBus
{
public:
    virtual ~SpiBus() = default;
    /** Clock in Hz, bits per word, and eight values that the driver takes as they are. */
    virtual juce::Result configure(const std::array<std::uint32_t, 10>& record) = 0;
    /** True keeps the chip's select line low, from the next byte at the latest, until false. */
    virtual juce::Result select(bool on) = 0;
    virtual juce::Result write(std::span<const std::uint8_t> data) = 0;
    /** Sends the prefix, at most 4 bytes, and then fills the buffer. */
    virtual juce::Result read(std::span<const std::uint8_t> prefix, std::span<std::uint8_t> buffer) = 0;
};

/** Null, with the reason, when the bus cannot be opened. */
std::unique_ptr<SpiBus> openSpiBus(const juce::String& path, juce::String& error);
std::unique_ptr<SpiBus> openSocketSpiBus(const juce::String& socketPath, juce::String& error);

/**
    The unit's SPI driver. One thread at a time. A failure is logged with its reason, again only after the same step has
    succeeded, on this or another object. What is not open fails in silence.
*/
class SpiDevice
{
public:
    SpiDevice();
    ~SpiDevice(); ///< closes

    /** "SPI2:" is the only bus. False when it cannot be opened. */
    bool open(const juce::String& name);
    bool isOpen() const;
    void close();
    bool configure(const std::array<std::uint32_t, 10>& record);
    bool select(bool on);
    bool write(std::span<const std::uint8_t> data);
    bool read(std::span<const std::uint8_t> prefix, std::span<std::uint8_t> buffer);

private:
    std::unique_ptr<SpiBus> bus;
    JUCE_DECLARE_NON_COPYABLE(SpiDevice)
};

} // namespace Platform
