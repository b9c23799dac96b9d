#pragma once

#include "bench/mcu/Mcu.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <unistd.h>

namespace Bench
{

/** The unit's end of the link, played by the test. */
class McuDevice : public testing::Test
{
protected:
    /** Only bounds a hang. */
    static constexpr std::chrono::seconds patience { 60 };

    Journal journal;
    Mcu mcu { journal };
    int port = -1;
    McuFrameReader reader;
    std::deque<McuFrame> pending;
    std::optional<McuFrame> last;

    void SetUp() override
    {
        ASSERT_EQ(mcu.start(), "");
        port = ::open(mcu.portPath().c_str(), O_RDWR | O_NOCTTY);
        ASSERT_GE(port, 0);
    }

    void TearDown() override
    {
        mcu.stop();
        ::close(port);
    }

    void put(const McuFrame& frame) const
    {
        const auto bytes = encode(frame);
        ASSERT_EQ(::write(port, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    /**
        The next frame that reaches the unit whole, or one with command 0xFFFF when none does in time. As the unit does,
        it takes one once that comes again because the acknowledgement was slow.
    */
    McuFrame get(std::chrono::milliseconds limit = patience)
    {
        const auto deadline = Clock::now() + limit;
        while (pending.empty() && Clock::now() < deadline)
        {
            pollfd wait { port, POLLIN, 0 };
            ::poll(&wait, 1,
                   static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count()));
            std::uint8_t buffer[64];
            if ((wait.revents & POLLIN) != 0)
                if (const auto count = ::read(port, buffer, sizeof buffer); count > 0)
                    reader.push({ buffer, static_cast<std::size_t>(count) },
                                [&](auto& frame)
                                {
                                    if (frame.isAck() || frame != last)
                                        pending.push_back(frame);
                                    if (!frame.isAck())
                                        last = frame;
                                });
        }
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

    bool sees(const std::string& stream, const std::string& text)
    {
        return journal.waitFor({}, Clock::now() + patience, isEvent(stream, text)).has_value();
    }
};

} // namespace Bench
