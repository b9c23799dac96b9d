#include "platform/devices/LineDevices.h"

#include "platform/base/Descriptor.h"

#include <fcntl.h>
#include <gpiod.h>
#include <linux/i2c-dev.h>
#include <sys/ioctl.h>
#include <system_error>
extern "C"
{
#include <i2c/smbus.h>
}

namespace Platform
{

namespace
{

constexpr const char* consumer = "headunit-engine";
/** The driver counts its time-out in these. */
constexpr int i2cTimeoutUnitMs = 10;

juce::Result failure(const char* step, int error)
{
    return juce::Result::fail(juce::String(step) + ": " + std::generic_category().message(error));
}

juce::Result outcome(int status, const char* step)
{
    return status < 0 ? failure(step, errno) : juce::Result::ok();
}

class LinuxGpioChip : public GpioChip
{
public:
    explicit LinuxGpioChip(const juce::String& devicePath)
        : path(devicePath)
    {
    }

    juce::Result setFunction(int offset, int function) override
    {
        gpiod_line* line = nullptr;
        if (auto result = request(offset, line); result.failed())
            return result;
        if (function != outputFunction)
            return outcome(gpiod_line_set_direction_input(line), "cannot become an input");
        if (gpiod_line_direction(line) == GPIOD_LINE_DIRECTION_OUTPUT)
            return juce::Result::ok();
        // The level that the line has now, so that nothing behind it sees an edge.
        const int level = gpiod_line_get_value(line);
        return outcome(gpiod_line_set_direction_output(line, level > 0 ? 1 : 0), "cannot become an output");
    }

    juce::Result write(int offset, int level) override
    {
        gpiod_line* line = nullptr;
        if (auto result = request(offset, line); result.failed())
            return result;
        return outcome(gpiod_line_set_value(line, level != 0 ? 1 : 0), "cannot be driven");
    }

    juce::Result look(int offset) override
    {
        gpiod_line* line = nullptr;
        if (auto result = find(offset, line); result.failed())
            return result;
        const char* holder = gpiod_line_consumer(line);
        if (!gpiod_line_is_used(line) || (holder != nullptr && std::string_view(holder) == consumer))
            return juce::Result::ok();
        return juce::Result::fail("used by " + juce::String(holder != nullptr ? holder : "the kernel"));
    }

private:
    /** A line is asked for on its first use, as it is, and kept until the process ends. */
    juce::Result request(int offset, gpiod_line*& line)
    {
        if (auto result = find(offset, line); result.failed() || gpiod_line_is_requested(line))
            return result;
        const gpiod_line_request_config asItIs { consumer, GPIOD_LINE_REQUEST_DIRECTION_AS_IS, 0 };
        return outcome(gpiod_line_request(line, &asItIs, 0), "cannot be had");
    }

    juce::Result find(int offset, gpiod_line*& line)
    {
        if (chip == nullptr)
            chip.reset(gpiod_chip_open(path.toRawUTF8()));
        if (chip == nullptr)
            return failure("no GPIO chip", errno);
        line = gpiod_chip_get_line(chip.get(), static_cast<unsigned>(offset));
        return line == nullptr ? failure("no such line", errno) : juce::Result::ok();
    }

    struct Close
    {
        void operator()(gpiod_chip* open) const { gpiod_chip_close(open); }
    };

    juce::String path;
    std::unique_ptr<gpiod_chip, Close> chip;
};

class LinuxI2cBus : public I2CBus
{
public:
    explicit LinuxI2cBus(Descriptor openBus)
        : bus(std::move(openBus))
    {
    }

    juce::Result write(int address, int registerNumber, std::uint8_t value) override
    {
        if (auto result = select(address); result.failed())
            return result;
        return outcome(i2c_smbus_write_byte_data(bus.get(), static_cast<__u8>(registerNumber), value), "write");
    }

    juce::Result read(int address, int registerNumber, std::uint8_t& value) override
    {
        if (auto result = select(address); result.failed())
            return result;
        const int answer = i2c_smbus_read_byte_data(bus.get(), static_cast<__u8>(registerNumber));
        if (answer >= 0)
            value = static_cast<std::uint8_t>(answer);
        return outcome(answer, "read");
    }

private:
    /** The kernel takes the address without the direction bit. */
    juce::Result select(int address)
    {
        return outcome(ioctl(bus.get(), I2C_SLAVE, static_cast<unsigned long>(address >> 1)), "select");
    }

    Descriptor bus;
};

} // namespace

std::unique_ptr<GpioChip> makeGpioChip(const juce::String& path)
{
    return std::make_unique<LinuxGpioChip>(path);
}

std::unique_ptr<I2CBus> openI2cBus(const juce::String& path, int timeoutMs, juce::String& error)
{
    Descriptor bus { ::open(path.toRawUTF8(), O_RDWR | O_CLOEXEC) };
    const auto ticks = static_cast<unsigned long>((timeoutMs + i2cTimeoutUnitMs - 1) / i2cTimeoutUnitMs);
    if (!bus || ioctl(bus.get(), I2C_TIMEOUT, ticks) < 0)
    {
        error = path + ": " + std::generic_category().message(errno);
        return nullptr;
    }
    return std::make_unique<LinuxI2cBus>(std::move(bus));
}

} // namespace Platform
