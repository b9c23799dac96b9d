#include "EngineLayer/hostlink/HostFrameParser.h"

#include "EngineLayer/hostlink/HostDataFormat.h"
#include "platform/base/Counter.h"

#include <cstring>

namespace EngineLayer
{

namespace
{

Platform::Counter chunksLost { "link.chunks-lost", "pieces of the link that found no room behind a broken frame" };

using namespace HostFrame;

constexpr int headerSkip = 4; ///< sync, sequence and the length byte that was broken

inline void handOn(const std::uint8_t* frame, int length, HostFrameParser::Sink& sink)
{
    // Below dataAt there is no command, and no such sum can be right. At dataAt the command bytes are the checksum,
    // which is never 0, so that an acknowledgement always has its value byte.
    const int covered = length - checksumLength;
    if (length < dataAt || checksum(frame, covered) != (frame[covered] << 8 | frame[covered + 1]))
        sink.onChecksumError();
    else if (frame[commandHighAt] == 0 && frame[commandLowAt] == 0)
        sink.onAcknowledgement(frame[sequenceAt], frame[dataAt]);
    else
        sink.onFrame(frame, length);
}

} // namespace

void HostFrameParser::appendReceived(const void* bytes, int n, Sink& sink)
{
    if (blocked)
    {
        blocked = false;
        for (int before = count + 1; count < before && count >= overhead;)
        {
            before = count;
            parseHeld(sink);
        }
    }
    if (bytes == nullptr || n < 0)
        return;
    if (n > capacity - count)
    {
        ++lost;
        ++chunksLost;
        blocked = true;
        return;
    }
    if (count == 0)
        first = 0;
    else if (n > static_cast<int>(buffer.size()) - first - count)
    {
        std::memmove(buffer.data(), buffer.data() + first, static_cast<std::size_t>(count));
        first = 0;
    }
    std::memcpy(buffer.data() + first + count, bytes, static_cast<std::size_t>(n));
    count += n;
    if (count >= overhead)
        parseHeld(sink);
}

void HostFrameParser::parseHeld(Sink& sink)
{
    const int keep = parseFrames(buffer.data() + first, count, sink);
    first += count - keep;
    count = keep;
}

int HostFrameParser::parseFrames(const std::uint8_t* buffer, int count, Sink& sink)
{
    int at = 0;
    while (at < count)
    {
        if (buffer[at] == sync1)
        {
            if (at + 2 > count)
                break;
            if (buffer[at + 1] == sync2)
            {
                if (at + headerSkip > count)
                    break;
                const int length = buffer[at + lengthAt];
                if (length == 0 || length > maxLength)
                {
                    at += headerSkip;
                    break;
                }
                if (at + length > count)
                    break;
                handOn(buffer + at, length, sink);
                at += length;
                if (at + overhead > count)
                    break;
                continue;
            }
        }
        ++at;
        if (at + overhead > count)
            break;
    }
    return count - at;
}

void HostFrameParser::reset()
{
    first = 0;
    count = 0;
    lost = 0;
    blocked = false;
}

} // namespace EngineLayer
