#include "McuDevice.h"

namespace
{

using namespace Bench;
using namespace std::chrono_literals;

class McuKeys : public McuDevice
{
protected:
    /** The data of the next key, each taken once and acknowledged. */
    Bytes nextKey()
    {
        for (;;)
        {
            const auto frame = getAndAcknowledge();
            if (frame.command == 0xFFFF)
                return {};
            if (frame.command == 5 && std::exchange(lastSequence, frame.sequence) != frame.sequence)
                return frame.data;
        }
    }

    /** "N sent, M skipped" of the stream, when it has come. */
    std::pair<int, int> counts(const std::string& stream, std::uint64_t from = 0) const
    {
        std::pair<int, int> result { -1, -1 };
        if (const auto event = journal.waitFor(from, Clock::now() + 3s, isIn(stream)))
            std::sscanf(event->text.c_str(), "%d sent, %d skipped", &result.first, &result.second);
        return result;
    }

private:
    int lastSequence = -1;
};

TEST_F(McuKeys, repeatAHeldKeyThenReleaseIt)
{
    const auto start = Clock::now();
    mcu.hold(12, 1, 250ms);
    int presses = 0;
    Bytes key;
    while ((key = nextKey()) == Bytes { 1, 12 })
        ++presses;
    EXPECT_EQ(key, (Bytes { 255, 12 }));
    EXPECT_GE(Clock::now() - start, 250ms);
    const auto [sent, skipped] = counts("mcu hold");
    EXPECT_EQ(sent, presses);
    EXPECT_EQ(sent + skipped, 3);

    mcu.hold(42, 0, 0ms);
    EXPECT_EQ(nextKey(), (Bytes { 0, 42 })) << "a hold of no time is a press and a release";
    EXPECT_EQ(nextKey(), (Bytes { 255, 42 }));
}

// Two holds at once are one finger that slides: the first key is released before the second is pressed.
TEST_F(McuKeys, releaseTheKeyHeldBefore)
{
    mcu.hold(12, 0, 1h);
    EXPECT_EQ(nextKey(), (Bytes { 0, 12 }));
    mcu.hold(13, 0, 0ms);
    Bytes key;
    while ((key = nextKey()) == Bytes { 0, 12 })
        ;
    EXPECT_EQ(key, (Bytes { 255, 12 }));
    EXPECT_EQ(nextKey(), (Bytes { 0, 13 }));
    EXPECT_EQ(nextKey(), (Bytes { 255, 13 }));
}

TEST_F(McuKeys, floodInTurnAsFastAsTheLinkGoes)
{
    mcu.flood({ 3, 4, 42 }, 200, 300ms);
    const int order[] = { 3, 4, 42 };
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(nextKey(), (Bytes { 0, static_cast<std::uint8_t>(order[i % 3]) })) << i;
    while (journal.find(0, 1, isIn("mcu flood")).empty())
        if (const auto frame = get(20ms); frame.command == 5)
            put(McuFrame::ack(frame.sequence));
    const auto [sent, skipped] = counts("mcu flood");
    EXPECT_EQ(sent + skipped, 60);
}

// The unit acknowledges nothing: one key is under way, the others are counted, and nothing piles up behind it.
TEST_F(McuKeys, floodADeadLinkWithoutPilingUp)
{
    mcu.flood({ 3 }, Mcu::mostPerSecond, 300ms);
    EXPECT_EQ(counts("mcu flood"), (std::pair { 1, 299 }));
    mcu.requestDeviceStatus();
    EXPECT_EQ(nextKey(), (Bytes { 0, 3 }));
    McuFrame frame;
    while ((frame = getAndAcknowledge()).command == 5)
        EXPECT_EQ(frame.sequence, 1);
    EXPECT_EQ(frame, (McuFrame { 2, 4, {} }));

    const auto before = journal.end();
    mcu.flood({ 3 }, 1, 1h);
    EXPECT_EQ(nextKey(), (Bytes { 0, 3 }));
    mcu.unitRestarts();
    EXPECT_EQ(counts("mcu flood", before), (std::pair { 1, 0 })) << "ends with the unit";
}

TEST_F(McuKeys, answerARequestForPower)
{
    put({ 1, 5, { 0, 8, 0 } });
    EXPECT_EQ(get(), McuFrame::ack(1));
    EXPECT_EQ(nextKey(), (Bytes { 0, 8 }));
    EXPECT_TRUE(sees("mcu power", "off"));
    EXPECT_FALSE(mcu.state().powered);
    put({ 2, 5, { 0, 7, 0 } });
    EXPECT_EQ(get(), McuFrame::ack(2));
    EXPECT_EQ(nextKey(), (Bytes { 0, 7 }));
    EXPECT_TRUE(mcu.state().powered);

    put({ 3, 5, { 0, 42, 0 } });
    EXPECT_EQ(get(), McuFrame::ack(3));
    mcu.pressKey(8, 255);
    EXPECT_EQ(nextKey(), (Bytes { 255, 8 })) << "another key is not answered";
    EXPECT_TRUE(mcu.state().powered) << "letting go switches nothing";
    mcu.pressKey(8, 0);
    EXPECT_EQ(nextKey(), (Bytes { 0, 8 }));
    EXPECT_FALSE(mcu.state().powered);
    mcu.unitRestarts();
    EXPECT_TRUE(mcu.state().powered);
}

TEST_F(McuKeys, keepTheDeviceId)
{
    put({ 1, 26, { 0x12, 0x34, 0x56 } });
    EXPECT_EQ(get(), McuFrame::ack(1));
    EXPECT_TRUE(sees("mcu device-id", "12 34 56"));
    put({ 2, 26, { 0x99 } });
    EXPECT_EQ(get(), McuFrame::ack(2));
    EXPECT_TRUE(sees("mcu link", "a device id of 1 bytes, not taken"));
    mcu.unitRestarts();
    put({ 3, 27, {} });
    EXPECT_EQ(get(), McuFrame::ack(3));
    EXPECT_EQ(getAndAcknowledge(), (McuFrame { 1, 27, { 0x12, 0x34, 0x56 } }));
}

} // namespace
