#include "EngineLayer/hostlink/HostDataFormat.h"

#include "platform/base/Pool.h"

#include <algorithm>
#include <numeric>

namespace EngineLayer
{

std::uint16_t HostFrame::checksum(const std::uint8_t* bytes, int count)
{
    return static_cast<std::uint16_t>(std::accumulate(bytes, bytes + count, 0u));
}

int HostFrame::command(const std::uint8_t* frame)
{
    return (frame[commandHighAt] & 0x7f) << 8 | frame[commandLowAt];
}

namespace
{

/** Never destroyed: frames come back until the last thread is gone. */
Platform::Pool<HostDataFormat>& pool()
{
    static auto& only = *new Platform::Pool<HostDataFormat>("frames");
    return only;
}

std::uint8_t lowByte(int value)
{
    return static_cast<std::uint8_t>(value & 0xff);
}

} // namespace

HostDataFormat::Ptr HostDataFormat::obtainFrame()
{
    if (auto frame = pool().take(); frame != nullptr)
        return frame;
    return new HostDataFormat();
}

void HostDataFormat::releaseFrame(HostDataFormat& frame)
{
    pool().give(frame);
}

bool HostDataFormat::build(int command, std::span<const std::uint8_t> data)
{
    if (data.size() > static_cast<std::size_t>(HostFrame::maxDataLength))
        return false;
    const auto needed = data.size() + HostFrame::overhead;
    if (buffer.size() < needed)
        buffer = std::vector<std::uint8_t>(needed);
    frameLength = static_cast<int>(needed);
    buffer[0] = HostFrame::sync1;
    buffer[1] = HostFrame::sync2;
    buffer[HostFrame::sequenceAt] = 0;
    buffer[HostFrame::lengthAt] = lowByte(frameLength);
    buffer[HostFrame::commandHighAt] = 0;
    buffer[HostFrame::commandLowAt] = lowByte(command);
    std::copy(data.begin(), data.end(), buffer.begin() + HostFrame::dataAt);
    return true;
}

void HostDataFormat::setSequence(int sequence)
{
    if (frameLength < HostFrame::overhead)
        return;
    buffer[HostFrame::sequenceAt] = lowByte(sequence);
    const int covered = frameLength - HostFrame::checksumLength;
    const int sum = HostFrame::checksum(buffer.data(), covered);
    buffer[static_cast<std::size_t>(covered)] = lowByte(sum >> 8);
    buffer[static_cast<std::size_t>(covered) + 1] = lowByte(sum);
}

} // namespace EngineLayer
