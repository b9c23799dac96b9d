#include "McuDevice.h"

#include <rapidcheck.h>

namespace
{

using namespace Bench;
using namespace std::chrono_literals;

std::vector<McuFrame> framesIn(const std::vector<Bytes>& chunks, McuFrameReader& reader)
{
    std::vector<McuFrame> frames;
    for (const auto& chunk : chunks)
        reader.push(chunk, [&](const McuFrame& frame) { frames.push_back(frame); });
    return frames;
}

Bytes operator+(Bytes first, const Bytes& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST(McuFrame, hasTheBytesOfTheLink)
{
    EXPECT_EQ(encode(McuFrame::ack(7)), (Bytes { 0xA0, 0x55, 0x07, 0x09, 0x00, 0x00, 0x00, 0x01, 0x05 }));
    EXPECT_EQ(encode({ 3, 0x17, {} }), (Bytes { 0xA0, 0x55, 0x03, 0x08, 0x00, 0x17, 0x01, 0x17 }));
    EXPECT_EQ(encode({ 1, 2, { 10, 3 } }), (Bytes { 0xA0, 0x55, 0x01, 0x0A, 0x00, 0x02, 0x0A, 0x03, 0x01, 0x0F }));
}

TEST(McuFrame, isFoundAgainInAnyStream)
{
    const McuFrame first { 1, 5, { 1, 0x2A } }, second { 2, 0x17, { 0 } };
    const auto one = encode(first), two = encode(second);
    auto damaged = one;
    damaged[6] ^= 1;
    auto badLength = one;
    badLength[3] = 111;
    struct Case
    {
        const char* story;
        std::vector<Bytes> chunks;
        std::vector<McuFrame> expected;
    };
    const Case cases[] = {
        { "two in one chunk", { one + two }, { first, second } },
        { "cut into three",
          { Bytes(one.begin(), one.begin() + 3), Bytes(one.begin() + 3, one.begin() + 9),
            Bytes(one.begin() + 9, one.end()) },
          { first } },
        { "noise in front, a false sync in it", { Bytes { 0x00, 0xA0, 0x55, 0xA0 } + one }, { first } },
        { "a damaged one in front does not take the next with it", { damaged + two }, { second } },
        { "a length that cannot be", { badLength + two }, { second } },
        { "the command's top bit does not count",
          { []
            {
                Bytes raw { 0xA0, 0x55, 9, 8, 0x80, 0x17, 0x01, 0x9D };
                return raw;
            }() },
          { McuFrame { 9, 0x17, {} } } }
    };
    for (const auto& each : cases)
    {
        McuFrameReader reader;
        EXPECT_EQ(framesIn(each.chunks, reader), each.expected) << each.story;
    }
}

TEST(McuFrame, survivesAnyCut)
{
    rc::check("frames come out whole and in order, however the stream is cut",
              []
              {
                  std::vector<McuFrame> sent;
                  Bytes stream;
                  const auto count = *rc::gen::inRange<int>(1, 6);
                  for (int i = 0; i < count; ++i)
                  {
                      auto data = *rc::gen::container<Bytes>(rc::gen::arbitrary<std::uint8_t>());
                      data.resize(std::min(data.size(), McuFrame::maxData));
                      sent.push_back(
                          { static_cast<std::uint8_t>(i), static_cast<std::uint16_t>(*rc::gen::inRange(1, 30)), data });
                      stream = stream + encode(sent.back());
                  }
                  McuFrameReader reader;
                  std::vector<McuFrame> got;
                  for (std::size_t at = 0; at < stream.size();)
                  {
                      const auto length =
                          std::min<std::size_t>(*rc::gen::inRange<std::size_t>(1, 33), stream.size() - at);
                      reader.push({ stream.data() + at, length }, [&](const McuFrame& frame) { got.push_back(frame); });
                      at += length;
                  }
                  RC_ASSERT(got == sent);
              });
}

// The unit boots: it asks for the last memory, and gets the answer first, then the request for the last source.
TEST_F(McuDevice, answersTheBootAndAgreesOnTheFirstSource)
{
    mcu.setLastMemory({ 5, 0 });
    put({ 1, 1, {} });
    EXPECT_EQ(get(), McuFrame::ack(1));
    EXPECT_EQ(getAndAcknowledge(), (McuFrame { 1, 1, {} }));
    EXPECT_EQ(getAndAcknowledge(), (McuFrame { 2, 2, { 5, 0 } }));
    EXPECT_FALSE(mcu.state().agreed);
    put({ 2, 3, { 5, 0 } });
    EXPECT_TRUE(sees("mcu agreed", "aux"));
    EXPECT_EQ(mcu.state().source, (Source { 5, 0 }));
}

// The unit changes its source by itself; the microcontroller follows, confirms, and keeps it for the next start.
TEST_F(McuDevice, followsTheUnitAndRemembers)
{
    put({ 1, 2, { 10, 2 } });
    EXPECT_EQ(get(), McuFrame::ack(1));
    EXPECT_EQ(getAndAcknowledge(), (McuFrame { 1, 3, { 10, 2 } }));
    EXPECT_TRUE(sees("mcu source", "usb 2"));
    mcu.unitRestarts();
    put({ 1, 1, {} });
    EXPECT_EQ(get(), McuFrame::ack(1));
    EXPECT_EQ(getAndAcknowledge().command, 1);
    EXPECT_EQ(getAndAcknowledge().data, (Bytes { 10, 2 }));
}

// An acknowledgement was lost: the frame comes again, is acknowledged again, and counts once.
TEST_F(McuDevice, takesARepeatedFrameOnce)
{
    for (int i = 0; i < 2; ++i)
    {
        put({ 9, 23, { 0 } });
        EXPECT_EQ(get(), McuFrame::ack(9));
    }
    EXPECT_EQ(mcu.state().heartbeats, 1u);
    EXPECT_EQ(mcu.state().duplicates, 1u);
}

TEST_F(McuDevice, resendsWithTheSameNumberAndGoesOn)
{
    mcu.send(4, {});
    mcu.send(6, {});
    for (int i = 0; i < Mcu::transmissions; ++i)
        EXPECT_EQ(get(), (McuFrame { 1, 4, {} }));
    EXPECT_EQ(get(), (McuFrame { 2, 6, {} }));
    EXPECT_TRUE(sees("mcu link", "gave up EVENT_GET_DEVICE_STATUS"));
}

TEST_F(McuDevice, failsAsToldAndRecovers)
{
    mcu.dropNext(1);
    mcu.corruptNext(1);
    mcu.pressKey(42, 0);
    EXPECT_EQ(getAndAcknowledge(), (McuFrame { 1, 5, { 0, 42 } }))
        << "the third transmission, after a lost and a damaged one";
    EXPECT_TRUE(sees("mcu link", "dropped IND_KEY"));
    EXPECT_EQ(reader.checksumErrors(), 1u);

    mcu.repeatNext(1);
    mcu.requestDeviceStatus();
    EXPECT_EQ(get(), getAndAcknowledge());

    mcu.withholdAcks(1);
    put({ 1, 23, { 0 } });
    EXPECT_TRUE(sees("mcu link", "did not acknowledge EVENT_HEAT_BEAT"));
    put({ 1, 23, { 0 } });
    EXPECT_EQ(get(), McuFrame::ack(1));

    mcu.silence(200ms);
    put({ 2, 23, { 0 } });
    mcu.requestDeviceStatus();
    EXPECT_TRUE(sees("mcu link", "back"));
    EXPECT_EQ(getAndAcknowledge().command, 4) << "what waited goes out; what came meanwhile was not heard";
    EXPECT_EQ(mcu.state().heartbeats, 1u);
}

} // namespace
