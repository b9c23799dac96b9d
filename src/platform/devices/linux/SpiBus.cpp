#include "platform/base/Descriptor.h"
#include "platform/devices/SpiDevice.h"

#include <fcntl.h>
#include <limits>
#include <linux/spi/spidev.h>
#include <sys/ioctl.h>
#include <system_error>

namespace Platform
{

namespace
{

constexpr size_t longestPrefix = 4;

spi_ioc_transfer transferOf(const std::uint8_t* sent, std::uint8_t* filled, size_t length)
{
    spi_ioc_transfer transfer {};
    transfer.tx_buf = reinterpret_cast<std::uintptr_t>(sent);
    transfer.rx_buf = reinterpret_cast<std::uintptr_t>(filled);
    transfer.len = static_cast<__u32>(length);
    return transfer;
}

/**
    A spidev device. The driver has no call for the select line; it lowers it for one message and raises it at the end.
    A last transfer with `cs_change` leaves it low until the next message, so every message between select(true) and
    select(false) ends with that, and select(false) sends an empty transfer without it, which only raises the line. The
    line falls with the first message of the bracket. It stays low between messages only where the chip has its bus for
    itself: a message to another chip of the same bus raises it. A message is at most 4096 bytes, unless the driver was
    loaded with another `bufsiz`.
*/
class LinuxSpiBus : public SpiBus
{
public:
    explicit LinuxSpiBus(Descriptor openDevice)
        : device(std::move(openDevice))
    {
    }

    ~LinuxSpiBus() override { release(); }

    juce::Result configure(const std::array<std::uint32_t, 10>& record) override
    {
        const auto [clockHz, wordBits] = std::pair(record[0], record[1]);
        if (wordBits > std::numeric_limits<std::uint8_t>::max())
            return juce::Result::fail("there are no words of " + juce::String(wordBits) + " bits");
        const auto bits = static_cast<std::uint8_t>(wordBits);
        // The driver takes a new word length or clock only with the line raised.
        auto result = release();
        if (result.wasOk())
            result = control(SPI_IOC_WR_BITS_PER_WORD, &bits, "word length");
        return result.wasOk() ? control(SPI_IOC_WR_MAX_SPEED_HZ, &clockHz, "clock") : result;
    }

    juce::Result select(bool on) override
    {
        selected = on;
        return on ? juce::Result::ok() : release();
    }

    juce::Result write(std::span<const std::uint8_t> data) override
    {
        std::array message { transferOf(data.data(), nullptr, data.size()) };
        return send(message);
    }

    juce::Result read(std::span<const std::uint8_t> prefix, std::span<std::uint8_t> buffer) override
    {
        if (prefix.size() > longestPrefix)
            return juce::Result::fail("the prefix is longer than 4 bytes");
        std::array message { transferOf(prefix.data(), nullptr, prefix.size()),
                             transferOf(nullptr, buffer.data(), buffer.size()) };
        return send(message);
    }

private:
    template <typename Argument>
    juce::Result control(unsigned long request, const Argument* argument, const char* step)
    {
        if (ioctl(device.get(), request, argument) >= 0)
            return juce::Result::ok();
        return juce::Result::fail(juce::String(step) + ": " + std::generic_category().message(errno));
    }

    template <size_t count>
    juce::Result send(std::array<spi_ioc_transfer, count>& message)
    {
        message.back().cs_change = selected ? 1 : 0;
        auto result = control(SPI_IOC_MESSAGE(count), message.data(), "transfer");
        // After a failure the driver itself has raised the line.
        low = selected && result.wasOk();
        return result;
    }

    juce::Result release()
    {
        if (!std::exchange(low, false))
            return juce::Result::ok();
        const spi_ioc_transfer empty {};
        return control(SPI_IOC_MESSAGE(1), &empty, "release");
    }

    Descriptor device;
    bool selected = false;
    bool low = false; ///< the line, since a message between select(true) and select(false)
};

} // namespace

std::unique_ptr<SpiBus> openSpiBus(const juce::String& path, juce::String& error)
{
    Descriptor device { ::open(path.toRawUTF8(), O_RDWR | O_CLOEXEC) };
    // Clock idle low, data taken at its rising edge; how the select line and the wires run is the board's description.
    __u32 mode = 0;
    bool ready = device && ioctl(device.get(), SPI_IOC_RD_MODE32, &mode) >= 0;
    mode &= ~static_cast<__u32>(SPI_CPHA | SPI_CPOL);
    ready = ready && ioctl(device.get(), SPI_IOC_WR_MODE32, &mode) >= 0;
    if (!ready)
    {
        error = path + ": " + std::generic_category().message(errno);
        return nullptr;
    }
    return std::make_unique<LinuxSpiBus>(std::move(device));
}

} // namespace Platform
