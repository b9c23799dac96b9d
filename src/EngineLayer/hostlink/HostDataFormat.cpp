#include "EngineLayer/hostlink/HostDataFormat.h"

#include <array>
#include <cstring>
#include <mutex>
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

constexpr int acknowledgementContent = 1;

struct FramePool
{
    std::mutex lock;
    std::vector<HostDataFormat::Ptr> spare;
};

/** Never destroyed: frames come back until the last thread is gone. */
FramePool& pool()
{
    static FramePool& instance = *new FramePool;
    return instance;
}

std::uint8_t lowByte(int value)
{
    return static_cast<std::uint8_t>(value & 0xff);
}

} // namespace

HostDataFormat::Ptr HostDataFormat::obtainFrame()
{
    {
        const std::lock_guard guard(pool().lock);
        auto& spare = pool().spare;
        if (!spare.empty())
        {
            auto frame = std::move(spare.back());
            spare.pop_back();
            frame->inPool = false;
            return frame;
        }
    }
    return new HostDataFormat();
}

void HostDataFormat::releaseFrame(HostDataFormat& frame)
{
    const std::lock_guard guard(pool().lock);
    if (frame.inPool || frame.getReferenceCount() >= 2)
        return;
    frame.inPool = true;
    pool().spare.emplace_back(&frame);
}

int HostDataFormat::spareFrames()
{
    const std::lock_guard guard(pool().lock);
    return static_cast<int>(pool().spare.size());
}

void HostDataFormat::build(int command)
{
    fill(command, nullptr, 0);
}

void HostDataFormat::build(int command, int b1)
{
    const std::array data { lowByte(b1) };
    fill(command, data.data(), static_cast<int>(data.size()));
}

void HostDataFormat::build(int command, int b1, int b2)
{
    const std::array data { lowByte(b1), lowByte(b2) };
    fill(command, data.data(), static_cast<int>(data.size()));
}

void HostDataFormat::build(int command, int b1, int b2, int b3)
{
    const std::array data { lowByte(b1), lowByte(b2), lowByte(b3) };
    fill(command, data.data(), static_cast<int>(data.size()));
}

bool HostDataFormat::buildBlock(int command, const void* data, int n)
{
    if (data == nullptr || n < 1 || n > HostFrame::maxDataLength)
        return false;
    fill(command, static_cast<const std::uint8_t*>(data), n);
    return true;
}

void HostDataFormat::buildAcknowledgement(int value)
{
    const auto data = lowByte(value);
    fill(0, &data, 1);
    contentLength = acknowledgementContent;
}

void HostDataFormat::fill(int command, const std::uint8_t* data, int n)
{
    const auto needed = static_cast<std::size_t>(n + HostFrame::overhead);
    if (buffer.size() < needed)
        buffer = std::vector<std::uint8_t>(needed);
    frameLength = static_cast<int>(needed);
    contentLength = n + 2;
    buffer[0] = HostFrame::sync1;
    buffer[1] = HostFrame::sync2;
    buffer[HostFrame::sequenceAt] = 0;
    buffer[HostFrame::lengthAt] = lowByte(frameLength);
    buffer[HostFrame::commandHighAt] = 0;
    buffer[HostFrame::commandLowAt] = lowByte(command);
    if (n > 0)
        std::memcpy(buffer.data() + HostFrame::dataAt, data, static_cast<std::size_t>(n));
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
