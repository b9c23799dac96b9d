#include "bench/buses/VideoDecoder.h"

#include "bench/mcu/McuFrame.h"
#include "bench/network/WireValues.h"

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

VideoDecoder::VideoDecoder(Journal& journalToUse)
    : journal(journalToUse)
{
}

std::string VideoDecoder::start(const std::string& path)
{
    return server.listen(path, { {},
                                 [this](int connection, PacketServer::Packet request)
                                 {
                                     slowness.wait();
                                     server.send(connection, answer(request));
                                 },
                                 {} });
}

void VideoDecoder::stop()
{
    slowBy(std::chrono::milliseconds(0));
    server.close();
}

std::vector<std::uint8_t> VideoDecoder::answer(PacketServer::Packet request)
{
    std::vector<std::uint8_t> reply;
    const std::scoped_lock guard(lock);
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
    const std::scoped_lock guard(lock);
    registers[statusRegister] = present ? signalLocked : 0;
}

bool VideoDecoder::hasSignal() const
{
    return readRegister(statusRegister) == signalLocked;
}

std::uint8_t VideoDecoder::readRegister(std::uint8_t number) const
{
    const std::scoped_lock guard(lock);
    return registers[number];
}

void VideoDecoder::setFailing(bool shouldFail)
{
    const std::scoped_lock guard(lock);
    failing = shouldFail;
}

unsigned VideoDecoder::writes() const
{
    const std::scoped_lock guard(lock);
    return writeCount;
}

unsigned VideoDecoder::reads() const
{
    const std::scoped_lock guard(lock);
    return readCount;
}

} // namespace Bench
