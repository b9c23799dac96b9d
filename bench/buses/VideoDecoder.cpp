#include "bench/buses/VideoDecoder.h"

#include "bench/buses/WireValues.h"

namespace Bench
{

namespace
{

constexpr std::uint8_t deviceAddress = 0x88;
constexpr std::uint8_t statusRegister = 0x01;
constexpr std::uint8_t signalLocked = 0x48;
constexpr std::int32_t done = 0;
constexpr std::int32_t notAcknowledged = -1;

} // namespace

std::optional<Bytes> VideoDecoder::answer(int, Packet request)
{
    Bytes reply;
    const bool isRead = request.size() == 3 && request[1] == 1;
    const bool isWrite = request.size() == 4 && request[1] == 0;
    if (failing || !(isRead || isWrite) || request[0] != deviceAddress)
    {
        appendValue(reply, notAcknowledged);
        if (isRead)
            reply.push_back(0);
        return reply;
    }
    appendValue(reply, done);
    if (isRead)
    {
        ++readCount;
        reply.push_back(registers[request[2]]);
    }
    else
    {
        ++writeCount;
        if (request[2] != statusRegister) // the status is the device's own
            registers[request[2]] = request[3];
        journal.add("i2c", hex(request.subspan(2, 1)) + "=" + hex(request.subspan(3, 1)));
    }
    return reply;
}

void VideoDecoder::setSignal(bool present)
{
    registers[statusRegister] = present ? signalLocked : 0;
    journal.add("camera", present ? "signal" : "no signal");
}

bool VideoDecoder::hasSignal() const
{
    return readRegister(statusRegister) == signalLocked;
}

} // namespace Bench
