#include "EngineLayer/hostlink/HostDataFormat.h"

#include <algorithm>
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
