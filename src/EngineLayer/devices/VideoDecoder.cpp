#include "EngineLayer/devices/VideoDecoder.h"

#include "platform/base/Logger.h"
#include "platform/devices/Lines.h"
#include "platform/devices/UnitLines.h"

namespace EngineLayer
{

namespace
{

constexpr Platform::Log logger { "EngineLayer/VideoDecoder", "DeviceStatusManager" };

constexpr const char* busName = "I2C1:";
constexpr int setUpTimeoutMs = 1000;
constexpr int pollTimeoutMs = 250;
/**
    So often a decoder that does not answer may hold up what else waits for the thread. One slow answer must not take
    the picture of the camera away for long.
*/
constexpr std::chrono::seconds restAfterFailure { 1 };
constexpr int deviceAddress = 0x88; ///< 8-bit form
constexpr int statusRegister = 0x01;
constexpr int signalBits = 0x48; ///< horizontal and vertical lock

struct RegisterValue
{
    std::uint8_t number;
    std::uint8_t value;
};

constexpr RegisterValue registerTable[] = {
    { 0x02, 0x44 }, { 0x03, 0xA2 }, { 0x04, 0x00 }, { 0x05, 0x00 }, { 0x06, 0x02 }, { 0x07, 0x02 }, { 0x08, 0x12 },
    { 0x09, 0xF0 }, { 0x0A, 0x13 }, { 0x0B, 0xD0 }, { 0x0C, 0x4C }, { 0x0D, 0x34 }, { 0x0E, 0x11 }, { 0x0F, 0x01 },
    { 0x10, 0xE6 }, { 0x11, 0x66 }, { 0x12, 0x70 }, { 0x13, 0x80 }, { 0x14, 0x80 }, { 0x15, 0x00 }, { 0x16, 0x00 },
    { 0x17, 0x10 }, { 0x18, 0x44 }, { 0x19, 0x58 }, { 0x1A, 0x0A }, { 0x1B, 0x00 }, { 0x1C, 0x27 }, { 0x1D, 0x7F },
    { 0x1E, 0x08 }, { 0x1F, 0x00 }, { 0x20, 0xA0 }, { 0x21, 0x42 }, { 0x22, 0xF0 }, { 0x23, 0xD8 }, { 0x24, 0xBC },
    { 0x25, 0xB8 }, { 0x26, 0x44 }, { 0x27, 0x2A }, { 0x28, 0x00 }, { 0x29, 0x00 }, { 0x2A, 0x78 }, { 0x2B, 0x00 },
    { 0x2C, 0x00 }, { 0x2D, 0x14 }, { 0x2E, 0xA6 }, { 0x2F, 0xE0 },
};
static_assert(std::size(registerTable) == 46);

} // namespace

void VideoDecoder::initialise()
{
    if (initialised)
        return;
    initialised = true;
    Platform::drive(Platform::videoDecoderLine, true);
    Platform::I2CDevice device;
    if (!device.open(busName, setUpTimeoutMs))
        return;
    for (const auto& entry : registerTable)
        if (!device.writeRegister(deviceAddress, entry.number, entry.value))
        {
            logger().error("the video decoder does not take register 0x%02X and is not set up", entry.number);
            return;
        }
}

VideoDecoder::Probe VideoDecoder::probe()
{
    Platform::I2CDevice device;
    std::uint8_t status = 0;
    if (!device.open(busName, pollTimeoutMs))
        return Probe::noBus;
    return device.readRegister(deviceAddress, statusRegister, status) ? Probe::answers : Probe::silent;
}

bool VideoDecoder::hasSignal()
{
    if (!Platform::hasCome(leftAloneUntil))
        return false;
    Platform::I2CDevice device;
    std::uint8_t status = 0;
    if (device.open(busName, pollTimeoutMs) && device.readRegister(deviceAddress, statusRegister, status))
        return (status & signalBits) == signalBits;
    leftAloneUntil = Clock::now() + restAfterFailure;
    return false;
}

} // namespace EngineLayer
