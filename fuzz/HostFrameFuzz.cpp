#include "EngineLayer/hostlink/HostDataFormat.h"
#include "EngineLayer/hostlink/HostFrameParser.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

using namespace EngineLayer;

namespace
{

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/** Every frame handed on must be one that the stream really holds. */
class CheckingSink : public HostFrameParser::Sink
{
public:
    void onAcknowledgement(int sequence, int value) override
    {
        require(sequence >= 0 && sequence <= 0xff && value >= 0 && value <= 0xff);
    }

    void onFrame(const std::uint8_t* frame, int length) override
    {
        require(length >= HostFrame::dataAt && length <= HostFrame::maxLength);
        require(frame[0] == HostFrame::sync1 && frame[1] == HostFrame::sync2 && frame[HostFrame::lengthAt] == length);
        unsigned sum = 0;
        for (int at = 0; at < length - HostFrame::checksumLength; ++at)
            sum += frame[at];
        require(frame[length - 2] == (sum >> 8 & 0xff) && frame[length - 1] == (sum & 0xff));
        require(HostFrame::command(frame) <= 0x7fff);
        delivered += static_cast<std::size_t>(length);
    }

    void onChecksumError() override {}

    std::size_t delivered = 0;
};

/** Makes the checksum of every frame right whose sequence is even, so that the input gets past it. */
void closeFrames(std::vector<std::uint8_t>& stream)
{
    for (std::size_t at = 0; at + HostFrame::overhead <= stream.size(); ++at)
    {
        auto* frame = stream.data() + at;
        const std::size_t length = frame[HostFrame::lengthAt];
        if (frame[0] != HostFrame::sync1 || frame[1] != HostFrame::sync2 || frame[HostFrame::sequenceAt] % 2 != 0 ||
            length < HostFrame::overhead || at + length > stream.size())
            continue;
        const auto sum = HostFrame::checksum(frame, static_cast<int>(length) - HostFrame::checksumLength);
        frame[length - 2] = static_cast<std::uint8_t>(sum >> 8);
        frame[length - 1] = static_cast<std::uint8_t>(sum & 0xff);
        at += length - 1;
    }
}

} // namespace

/** First byte: size of the chunks that follow. The rest is the received stream. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::size_t chunk = 1 + data[0] % 64;
    std::vector<std::uint8_t> stream(data + 1, data + size);
    closeFrames(stream);

    HostFrameParser parser;
    CheckingSink sink;
    for (std::size_t at = 0; at < stream.size(); at += chunk)
    {
        // A copy of its own, so that a read past the chunk is seen.
        const std::vector<std::uint8_t> piece(stream.begin() + static_cast<std::ptrdiff_t>(at),
                                              stream.begin() +
                                                  static_cast<std::ptrdiff_t>(std::min(at + chunk, stream.size())));
        parser.appendReceived(piece.data(), static_cast<int>(piece.size()), sink);
        require(parser.held() >= 0 && parser.held() <= HostFrameParser::capacity);
    }
    require(sink.delivered <= stream.size());
    return 0;
}
