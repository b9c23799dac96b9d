#pragma once

#include "bench/buses/BusDevice.h"

#include <array>

namespace Bench
{

/**
    The camera's video decoder on the I2C bus: 256 registers at address 0x88, and a camera that gives a picture or not.
    Journal streams: "i2c" ("02=44" for each register written), "camera" ("signal", "no signal").
*/
class VideoDecoder : public BusDevice
{
public:
    using BusDevice::BusDevice;

    /** Camera signal on: the status register 0x01 says that it is locked on a signal (bits 6 and 3). */
    void setSignal(bool present);
    bool hasSignal() const;
    std::uint8_t readRegister(std::uint8_t number) const { return registers[number]; }
    /** Transfers fail from now on, as with a decoder that does not answer. */
    void setFailing(bool shouldFail) { failing = shouldFail; }
    bool isFailing() const { return failing; }
    unsigned writes() const { return writeCount; }
    unsigned reads() const { return readCount; }

private:
    std::array<std::uint8_t, 256> registers {};
    bool failing = false;
    unsigned writeCount = 0, readCount = 0;

    std::optional<Bytes> answer(int connection, Packet request) override;
};

} // namespace Bench
