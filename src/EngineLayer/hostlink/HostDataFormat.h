#pragma once

#include <cstdint>
#include <juce_core/juce_core.h>
#include <span>
#include <vector>

namespace EngineLayer
{

/**
    One frame of the microcontroller link:

        A0 55  sequence  frame length  command high  command low  data ...  checksum high  checksum low

    The frame length counts every byte from the sync to the checksum. The checksum is the sum of the bytes in front of
    it, modulo 65536.
*/
namespace HostFrame
{
inline constexpr std::uint8_t sync1 = 0xA0;
inline constexpr std::uint8_t sync2 = 0x55;
inline constexpr int sequenceAt = 2;
inline constexpr int lengthAt = 3;
inline constexpr int commandHighAt = 4;
inline constexpr int commandLowAt = 5;
inline constexpr int dataAt = 6;
inline constexpr int checksumLength = 2;
/** Bytes of a frame without data. */
inline constexpr int overhead = dataAt + checksumLength;
inline constexpr int maxLength = 110;
inline constexpr int maxDataLength = maxLength - overhead;

/** The checksum that belongs behind these bytes. */
std::uint16_t checksum(const std::uint8_t* bytes, int count);
inline constexpr std::size_t commandCount = 0x8000;
/** Command code of a received frame: bit 7 of its high part does not count. */
int command(const std::uint8_t* frame);
} // namespace HostFrame

/** A frame that is built, numbered and sent. Pooled: obtain one, build it, send it, release it. */
class HostDataFormat : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<HostDataFormat>;

    /** The frame that came back last, or a new one. Its content is that of its last use. Any thread. */
    static Ptr obtainFrame();
    /** Gives the frame back to the pool when the caller's is the last reference; else nothing happens. Any thread. */
    static void releaseFrame(HostDataFormat& frame);

    /**
        Sequence and checksum are filled in by `setSequence`. False, and nothing built, with more data than a frame
        carries.
    */
    bool build(int command, std::span<const std::uint8_t> data = {});

    /** Numbers the frame and closes it with its checksum; the last step before it is written. */
    void setSequence(int sequence);

    /** Low part of the command code, for log lines. */
    int commandOf() const { return buffer.empty() ? 0 : buffer[HostFrame::commandLowAt]; }
    const std::uint8_t* getBytes() const { return buffer.data(); }
    int getFrameLength() const { return frameLength; }

private:
    int frameLength = 0;
    std::vector<std::uint8_t> buffer; ///< grows to the exact size that a frame needs, never shrinks
};

} // namespace EngineLayer
