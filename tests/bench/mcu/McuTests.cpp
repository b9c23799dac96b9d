#include "bench/mcu/McuFrame.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

namespace
{

using namespace Bench;

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
        { "noise in front, a false sync in it", { Bytes { 0x00, 0xA0, 0x55, 0xA0 } + one }, { first } },
        { "a damaged one in front does not take the next with it", { damaged + two }, { second } },
        { "a length that cannot be", { badLength + two }, { second } },
        { "the command's top bit does not count",
          { Bytes { 0xA0, 0x55, 9, 8, 0x80, 0x17, 0x01, 0x9D } },
          { McuFrame { 9, 0x17, {} } } }
    };
    for (const auto& each : cases)
    {
        McuFrameReader reader;
        std::vector<McuFrame> frames;
        for (const auto& chunk : each.chunks)
            reader.push(chunk, [&](const McuFrame& frame) { frames.push_back(frame); });
        EXPECT_EQ(frames, each.expected) << each.story;
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

} // namespace
