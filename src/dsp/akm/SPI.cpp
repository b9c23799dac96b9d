#include "dsp/akm/SPI.h"

#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"

#include <algorithm>

namespace Dsp
{

namespace
{

/** 1 MHz, 8 bits a word; the rest belongs to the driver. */
constexpr std::array<std::uint32_t, 10> driverConfiguration { 1'000'000, 8, 10, 100, 0, 0, 1, 1, 1, 0 };
constexpr Platform::Log logger { "DSP\\AKM\\SPI", "SPI" };

juce::String hex(std::span<const std::uint8_t> bytes)
{
    return Platform::hexPairs(bytes.data(), static_cast<int>(bytes.size()));
}

bool isDumped(std::span<const std::uint8_t> bytes)
{
    return Platform::CorvaneConfig::isSystemDebug() && bytes.size() < SPI::longestTransfer;
}

} // namespace

bool SPI::open(const juce::String& name)
{
    if (!device.open(name))
        Platform::debugPrint("Set SWSPI: Open failed!\r\n");
    else if (!device.configure(driverConfiguration))
        Platform::debugPrint("Set SWSPI: dcb failed!\r\n");
    if (device.isOpen())
        device.select(false);
    return device.isOpen();
}

bool SPI::write(std::span<const std::uint8_t> data)
{
    device.select(true);
    for (auto rest = data; !rest.empty();)
    {
        const auto chunk = rest.first(std::min(rest.size(), longestTransfer));
        if (!device.write(chunk))
        {
            device.select(false);
            if (data.size() < longestTransfer)
                logger().error("write failure:" + hex(data));
            return false;
        }
        rest = rest.subspan(chunk.size());
    }
    device.select(false);
    if (isDumped(data))
        logger().debug("write:" + hex(data) + "\r\n");
    return true;
}

bool SPI::read(std::span<std::uint8_t> buffer, std::span<const std::uint8_t> command)
{
    device.select(true);
    bool done = true;
    auto prefix = command;
    for (auto rest = buffer; done && !rest.empty();)
    {
        const auto chunk = rest.first(std::min(rest.size(), longestTransfer));
        done = device.read(prefix, chunk);
        prefix = {};
        rest = rest.subspan(chunk.size());
    }
    device.select(false);
    if (done && isDumped(buffer))
        logger().debug("Read:" + hex(buffer));
    return done;
}

} // namespace Dsp
