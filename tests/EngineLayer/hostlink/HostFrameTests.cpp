#include "EngineLayer/hostlink/HostDataFormat.h"
#include "EngineLayer/hostlink/HostFrameParser.h"
#include "support/McuLink.h"

#include <rapidcheck/gtest.h>

using namespace EngineLayer;
using Bytes = McuLink::Bytes;
using Frame = McuLink::Frame;

namespace
{

struct Received : HostFrameParser::Sink
{
    void onAcknowledgement(int sequence, int value) override
    {
        frames.push_back({ sequence, 0, { static_cast<std::uint8_t>(value) } });
    }
    void onFrame(const std::uint8_t* frame, int length) override
    {
        frames.push_back({ frame[2], HostFrame::command(frame), Bytes(frame + 6, frame + length - 2) });
    }
    void onChecksumError() override { ++errors; }

    std::vector<Frame> frames;
    int errors = 0;
};

class HostFrameTest : public testing::Test
{
protected:
    void feed(const Bytes& bytes) { parser.appendReceived(bytes.data(), static_cast<int>(bytes.size()), received); }

    HostFrameParser parser;
    Received received;
};

Bytes operator+(Bytes left, const Bytes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes builtBytes(const HostDataFormat& frame)
{
    return { frame.getBytes(), frame.getBytes() + frame.getFrameLength() };
}

const Frame key { 9, 5, Bytes(32, 0x11) };
const Frame radio { 10, 17, { 1, 2, 3 } };

} // namespace

TEST_F(HostFrameTest, BuildersGiveTheDocumentedBytes)
{
    auto frame = HostDataFormat::obtainFrame();
    frame->build(0x17);
    frame->setSequence(3);
    EXPECT_EQ(builtBytes(*frame), (Bytes { 0xA0, 0x55, 0x03, 0x08, 0x00, 0x17, 0x01, 0x17 }));
    EXPECT_EQ(frame->commandOf(), 0x17);

    const Bytes block(102, 0xff);
    EXPECT_TRUE(frame->build(7, block));
    frame->setSequence(255);
    EXPECT_EQ(builtBytes(*frame), McuLink::bytesOf({ 255, 7, block }));

    // A buffer that was larger before, and numbered before, leaves nothing behind.
    frame->build(18, Bytes { 0xff, 2, 3 });
    frame->setSequence(0x105);
    EXPECT_EQ(builtBytes(*frame), McuLink::bytesOf({ 5, 18, { 0xff, 2, 3 } }));

    frame->build(0, Bytes { 0 });
    frame->setSequence(7);
    EXPECT_EQ(builtBytes(*frame), (Bytes { 0xA0, 0x55, 0x07, 0x09, 0x00, 0x00, 0x00, 0x01, 0x05 }));

    EXPECT_FALSE(frame->build(7, Bytes(103)));
}

TEST_F(HostFrameTest, DamageCostsNoMoreThanItMust)
{
    const auto good = McuLink::bytesOf(radio);
    auto corrupt = McuLink::bytesOf(key);
    corrupt[10] ^= 1;
    struct Case
    {
        const char* what;
        Bytes bytes;
        std::vector<Frame> frames;
        int errors;
        int held;
    };
    const Case cases[] = {
        { "garbage in front", Bytes { 1, 0xA0, 2, 0xA0, 0xA0 } + good, { radio }, 0, 0 },
        { "garbage behind stays for the next pass", good + Bytes { 1, 2, 3 }, { radio }, 0, 3 },
        { "a corrupt frame is skipped whole", corrupt + good, { radio }, 1, 0 },
        { "length 0 ends the pass", Bytes { 0xA0, 0x55, 1, 0 } + good, {}, 0, static_cast<int>(good.size()) },
        { "length 111 ends the pass", Bytes { 0xA0, 0x55, 1, 111 } + good, {}, 0, static_cast<int>(good.size()) },
        { "length 1 reads nothing in front of the buffer", Bytes { 0xA0, 0x55, 1, 1 } + good, { radio }, 1, 0 },
        { "a high command byte with bit 7", McuLink::bytesOf({ 1, 0x8011, {} }), { { 1, 0x11, {} } }, 0, 0 },
        { "an acknowledgement", McuLink::bytesOf({ 7, 0, { 3 } }), { { 7, 0, { 3 } } }, 0, 0 },
        { "fewer than 8 bytes wait", Bytes(good.begin(), good.begin() + 7), {}, 0, 7 },
    };
    for (const auto& each : cases)
    {
        SCOPED_TRACE(each.what);
        parser.reset();
        received = {};
        feed(each.bytes);
        EXPECT_EQ(received.frames, each.frames);
        EXPECT_EQ(received.errors, each.errors);
        EXPECT_EQ(parser.held(), each.held);
    }
}

// Every broken header ends a pass, so that a line full of them fills the buffer faster than passes empty it. The link
// has to come back once good frames arrive.
TEST_F(HostFrameTest, AStreamOfBrokenHeadersDoesNotBlockTheLink)
{
    Bytes broken;
    for (int i = 0; i < 8; ++i)
        broken = broken + Bytes { 0xA0, 0x55, 1, 0 };
    for (int i = 0; i < 200; ++i)
    {
        feed(broken);
        ASSERT_LE(parser.held(), HostFrameParser::capacity);
    }
    EXPECT_GT(parser.lostChunks(), 0);
    // What is still held is skipped one header a pass at the latest.
    const auto good = McuLink::bytesOf(radio);
    for (int i = 0; i < 300 && received.frames.empty(); ++i)
        feed(good);
    EXPECT_FALSE(received.frames.empty());
}

RC_GTEST_PROP(HostFramePropertyTest, FramesCutAnywhereComeOutWholeAndInOrder, ())
{
    const auto genFrame =
        rc::gen::construct<Frame>(rc::gen::inRange(0, 256), rc::gen::inRange(1, 0x8000),
                                  rc::gen::resize(102, rc::gen::container<Bytes>(rc::gen::arbitrary<std::uint8_t>())));
    const auto frames = *rc::gen::container<std::vector<Frame>>(genFrame);
    Bytes stream;
    for (const auto& frame : frames)
        stream = stream + McuLink::bytesOf(frame);

    HostFrameParser parser;
    Received received;
    for (std::size_t at = 0; at < stream.size();)
    {
        const auto chunk =
            std::min<std::size_t>(static_cast<std::size_t>(*rc::gen::inRange(1, 33)), stream.size() - at);
        parser.appendReceived(stream.data() + at, static_cast<int>(chunk), received);
        at += chunk;
    }
    RC_ASSERT(received.frames == frames);
    RC_ASSERT(received.errors == 0);
    RC_ASSERT(parser.held() == 0);
    RC_ASSERT(parser.lostChunks() == 0);
}
