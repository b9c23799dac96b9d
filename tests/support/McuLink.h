#pragma once

#include "doubles/SerialPortDouble.h"
#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"

#include <gtest/gtest.h>
#include <numeric>
#include <vector>

/** The microcontroller's end of the serial line. Builds and reads frames on its own, without the engine's builders. */
class McuLink
{
public:
    using Bytes = std::vector<std::uint8_t>;

    struct Frame
    {
        int sequence;
        int command;
        Bytes data;
        bool operator==(const Frame&) const = default;
    };

    McuLink() { Platform::doubles::SerialPortDouble::reset(); }

    static Bytes bytesOf(const Frame& frame)
    {
        Bytes bytes;
        bytes.reserve(frame.data.size() + 8);
        for (const int value : { 0xA0, 0x55, frame.sequence, 8 + static_cast<int>(frame.data.size()),
                                 frame.command >> 8, frame.command & 0xff })
            bytes.push_back(static_cast<std::uint8_t>(value));
        for (const auto value : frame.data)
            bytes.push_back(value);
        const auto sum = std::accumulate(bytes.begin(), bytes.end(), 0u);
        bytes.push_back(static_cast<std::uint8_t>(sum >> 8 & 0xff));
        bytes.push_back(static_cast<std::uint8_t>(sum & 0xff));
        return bytes;
    }

    static Frame acknowledgementOf(int sequence) { return { sequence, 0, { 0 } }; }

    static void sendBytes(const Bytes& bytes)
    {
        Platform::doubles::SerialPortDouble::receive(portName(), bytes.data(), static_cast<int>(bytes.size()));
    }
    static void send(const Frame& frame) { sendBytes(bytesOf(frame)); }

    /** The frames written by the unit since the last call; acknowledgements have command 0. */
    static std::vector<Frame> takeWritten()
    {
        const auto written = Platform::doubles::SerialPortDouble::takeWritten(portName());
        const auto* bytes = static_cast<const std::uint8_t*>(written.getData());
        std::vector<Frame> frames;
        for (std::size_t at = 0; at + 8 <= written.getSize(); at += bytes[at + 3])
        {
            const auto* frame = bytes + at;
            frames.push_back({ frame[2], frame[4] << 8 | frame[5], Bytes(frame + 6, frame + frame[3] - 2) });
            EXPECT_EQ(bytesOf(frames.back()), Bytes(frame, frame + frame[3]));
        }
        return frames;
    }

    /**
        Everything that the unit says until it has no more to say, acknowledgements apart; each is acknowledged. `run`
        lets the unit work.
    */
    template <typename Run>
    static std::vector<Frame> converse(const Run& run)
    {
        std::vector<Frame> said;
        for (run();; run())
        {
            const auto frames = takeWritten();
            if (frames.empty())
                return said;
            for (const auto& frame : frames)
            {
                if (frame.command == 0)
                    continue;
                said.push_back(frame);
                send(acknowledgementOf(frame.sequence));
            }
        }
    }

    /** The same as texts, command and data: "15 05 00 22 2E". */
    template <typename Run>
    static std::vector<std::string> hear(const Run& run)
    {
        std::vector<std::string> heard;
        for (const auto& frame : converse(run))
            heard.push_back(std::to_string(frame.command) + " " +
                            Platform::hexPairs(frame.data.data(), static_cast<int>(frame.data.size())).toStdString());
        return heard;
    }

    static juce::String portName() { return Platform::CorvaneConfig::getMcuUartName(); }
};

inline void PrintTo(const McuLink::Frame& frame, std::ostream* out)
{
    *out << "{sequence " << frame.sequence << ", command " << frame.command << ", data "
         << testing::PrintToString(frame.data) << "}";
}
