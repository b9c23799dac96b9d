#pragma once

#include "bench/buses/PacketServer.h"
#include "bench/buses/Slowness.h"
#include "bench/unit/Journal.h"

#include <array>

namespace Bench
{

/**
    The camera's video decoder on the I2C bus: 256 registers at address 0x88, and a camera that gives a picture or not.
    Journal stream "i2c": "02=44" for each register written. Any thread.
*/
class VideoDecoder
{
public:
    explicit VideoDecoder(Journal& journalToUse);
    ~VideoDecoder() { stop(); }

    /** Serves the bus at this socket. Empty on success, else what failed. */
    std::string start(const std::string& path);
    /** The bus is no longer slow then. */
    void stop();
    /** Each transfer takes so much longer; 0 ends it at once. */
    void slowBy(std::chrono::milliseconds delay) { slowness.set(delay); }

    /** Camera signal on: the status register 0x01 says that it is locked on a signal (bits 6 and 3). */
    void setSignal(bool present);
    bool hasSignal() const;
    std::uint8_t readRegister(std::uint8_t number) const;
    /** Transfers fail from now on, as with a decoder that does not answer. */
    void setFailing(bool shouldFail);
    unsigned writes() const;
    unsigned reads() const;

private:
    Journal& journal;
    Slowness slowness;
    mutable std::mutex lock;
    std::array<std::uint8_t, 256> registers {};
    bool failing = false;
    unsigned writeCount = 0, readCount = 0;
    PacketServer server; // last: its thread ends before what it uses

    std::vector<std::uint8_t> answer(PacketServer::Packet request);
};

} // namespace Bench
