#pragma once

#include <array>
#include <cstdint>

namespace EngineLayer
{

/** Cuts the received byte stream back into frames. Knows no device, thread or clock. */
class HostFrameParser
{
public:
    class Sink
    {
    public:
        virtual ~Sink() = default;
        /** An intact acknowledgement frame: the acknowledged sequence and its value byte. */
        virtual void onAcknowledgement(int sequence, int value) = 0;
        /** Any other intact frame, sync to checksum, 6 to 110 bytes; valid during the call. */
        virtual void onFrame(const std::uint8_t* frame, int length) = 0;
        /** A frame of plausible length whose checksum is wrong; it is skipped whole. */
        virtual void onChecksumError() = 0;
    };

    static constexpr int capacity = 1024;

    /**
        Takes one chunk and hands complete frames to the sink. A chunk that does not fit is lost and counted; before the
        next chunk the held bytes are searched for frames, so that a stream of broken headers cannot block the link.
    */
    void appendReceived(const void* bytes, int n, Sink& sink);

    /** One pass over the bytes. Returns how many of the last bytes are to be kept for the next pass. */
    static int parseFrames(const std::uint8_t* buffer, int count, Sink& sink);

    void reset();
    /** Bytes that wait for the rest of their frame. */
    int held() const { return count; }
    int lostChunks() const { return lost; }

private:
    void parseHeld(Sink& sink);

    // What is held moves through twice the room, so that it is copied to the front once in a while and not per chunk.
    std::array<std::uint8_t, std::size_t { 2 } * capacity> buffer {};
    int first = 0; ///< where the held bytes begin
    int count = 0;
    int lost = 0;
    bool blocked = false;
};

} // namespace EngineLayer
