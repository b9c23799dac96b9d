#pragma once

#include "bench/mcu/Mcu.h"

#include <gmock/gmock.h>

namespace Bench
{

/** A line in memory: what the device writes is kept for the test, which plays the unit. */
class MemoryLine : public SerialLine
{
public:
    Bytes written;
    bool isPlugged = false;

    std::string open() override { return isPlugged = true, ""; }
    void close() override { isPlugged = false; }
    bool isOpen() const override { return isPlugged; }
    void setReading(bool) override {}
    void flush() override { written.clear(); }
    bool write(std::span<const std::uint8_t> bytes) override
    {
        written.insert(written.end(), bytes.begin(), bytes.end());
        return true;
    }
};

/** The unit's end of the link, played by the test, which also brings the time. */
class McuDevice : public testing::Test
{
protected:
    Journal journal;
    MemoryLine line;
    Mcu mcu { journal, line };
    McuFrameReader reader;
    std::deque<McuFrame> pending;
    Clock::time_point time {};

    void put(const McuFrame& frame)
    {
        line.received(encode(frame));
        pass();
    }

    void pass(std::chrono::milliseconds duration = {}) { mcu.advance(time += duration); }

    /** The next frame that has reached the unit, or one with command 0xFFFF. */
    McuFrame get()
    {
        pass();
        reader.push(std::exchange(line.written, {}), [&](auto& frame) { pending.push_back(frame); });
        if (pending.empty())
            return { 0, 0xFFFF, {} };
        const auto frame = pending.front();
        pending.pop_front();
        return frame;
    }

    McuFrame getAndAcknowledge()
    {
        const auto frame = get();
        put(McuFrame::ack(frame.sequence));
        return frame;
    }

    bool sees(const std::string& stream, const std::string& text) const
    {
        return !journal.find({}, 1, isEvent(stream, text)).empty();
    }
};

} // namespace Bench
