#include "EngineLayer/autotest/CATestSessionManager.h"
#include "support/Eventually.h"
#include "support/KernelFixture.h"
#include "support/LogCapture.h"
#include "support/WithMcu.h"

using namespace EngineLayer;
using Bytes = AutoTestFrame::Bytes;

namespace
{

constexpr int acknowledged = 0xFF;
constexpr int sendAgain = 0xFC;

Bytes closed(Bytes frame)
{
    frame.push_back(static_cast<std::uint8_t>(std::accumulate(frame.begin(), frame.end(), 0u)));
    return frame;
}

/** The session and the way to the microcontroller; the test is the microcontroller and the equipment behind it. */
class AutoTestSessionTest : public WithMcu<KernelFixture>
{
protected:
    ~AutoTestSessionTest() override { session.stop(); }

    void queue(const Bytes& message) { session.addMsgToBuffer({ message.data(), message.size() }); }

    /** The next frame that reaches the equipment; empty when none comes. */
    Bytes received()
    {
        std::vector<McuLink::Frame> frames;
        EXPECT_TRUE(eventually(
            [&]
            {
                run();
                frames = mcu.takeWritten();
                return !frames.empty();
            }));
        if (frames.size() != 1 || frames[0].command != EngineApi::EVENT_AUTOTEST_INFO)
            return {};
        mcu.send(McuLink::acknowledgementOf(frames[0].sequence));
        run();
        return frames[0].data;
    }

    CATestSessionManager& session = *CATestSessionManager::getInstance();
};

} // namespace

TEST(AutoTestFrameTest, Builds)
{
    EXPECT_EQ(AutoTestFrame::build(0, Bytes { 0x82, 0x01 }), (Bytes { 0xAA, 0xEE, 0, 7, 0x82, 0x01, 0x22 }));
    EXPECT_EQ(AutoTestFrame::build(0x1FF, Bytes { 5 }), closed({ 0xAA, 0xEE, 0xFF, 6, 5 }));
    EXPECT_EQ(AutoTestFrame::build(1, Bytes(97, 0x11)).size(), 102u);
}

TEST(AutoTestFrameTest, AcceptsWholeFramesOnly)
{
    const auto good = closed({ 0xFF, 0xAA, 9, 9, 0x00, 3, 0, 20 });
    const auto request = AutoTestFrame::parse(good);
    ASSERT_TRUE(request);
    EXPECT_EQ(request->command(), 0);
    EXPECT_EQ(Bytes(request->parameters().begin(), request->parameters().end()), (Bytes { 0x00, 3, 0, 20 }));
    EXPECT_EQ(request->at(2), 9);
    EXPECT_EQ(request->at(7), 20);
    for (const int outside : { -1, 8, 9, 1000 })
        EXPECT_EQ(request->at(outside), 0) << outside;

    for (std::size_t at = 0; at < good.size(); ++at)
    {
        auto damaged = good;
        damaged[at] ^= 0x40;
        EXPECT_FALSE(AutoTestFrame::parse(damaged)) << at;
        EXPECT_FALSE(AutoTestFrame::parse(Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(at)))) << at;
    }
    EXPECT_FALSE(AutoTestFrame::parse(closed({ 0xFE, 0xAB, 9, 9, 0x00, 3, 0, 20 }))) << "a right checksum alone";
    EXPECT_FALSE(AutoTestFrame::parse(closed({ 0xFF, 0xAA, 9, 8, 0x00, 3, 0, 20 })));
    EXPECT_FALSE(AutoTestFrame::parse(closed({ 0xFF, 0xAA, 4 }))) << "its checksum is no length";

    const auto empty = closed({ 0xFF, 0xAA, 0, 5 });
    const auto noCommand = AutoTestFrame::parse(empty);
    ASSERT_TRUE(noCommand);
    EXPECT_EQ(noCommand->command(), -1) << "not the checksum";
    EXPECT_EQ(noCommand->at(4), 0);
    EXPECT_TRUE(noCommand->parameters().empty());
}

/** One message is in flight; the equipment asks for it again, then for the next. */
TEST_F(AutoTestSessionTest, TheEquipmentPacesTheMessages)
{
    session.start();
    session.start();
    EXPECT_TRUE(session.isRunning());
    session.setPeerState(true, sendAgain);
    queue({ 0x82, 0x01 });
    queue({});
    queue({ 0x82, 0x02 });
    const auto first = AutoTestFrame::build(0, Bytes { 0x82, 0x01 });
    EXPECT_EQ(received(), first);
    for (int again = 0; again < 2; ++again)
    {
        session.setPeerState(true, sendAgain);
        EXPECT_EQ(received(), first);
    }
    session.setPeerState(true, 0x55); // No answer that the session knows: the next one counts.
    session.setPeerState(false, acknowledged);
    session.setPeerState(true, acknowledged);
    EXPECT_EQ(received(), AutoTestFrame::build(1, Bytes { 0x82, 0x02 }));
    queue({ 1 });
    queue({ 2 });
    session.clearBuffer();
    queue({ 3 });
    session.setPeerState(true, acknowledged);
    EXPECT_EQ(received(), AutoTestFrame::build(2, Bytes { 3 }));
}

TEST_F(AutoTestSessionTest, TheSequenceWrapsAndNoWakeUpIsMissed)
{
    session.start();
    for (std::uint32_t count = 0; count <= 256; ++count)
    {
        queue({ 1 });
        ASSERT_EQ(received(), AutoTestFrame::build(count % 256, Bytes { 1 })) << count;
        session.setPeerState(true, acknowledged);
    }
}

TEST_F(AutoTestSessionTest, WhatIsTooLongOrTooMuchIsReported)
{
    const LogCapture log;
    queue(Bytes(97, 1));
    queue(Bytes(98, 2));
    EXPECT_EQ(log.take().size(), 1u) << "one was cut";
    for (int count = 2; count < CATestSessionManager::maxWaitingMessages + 3; ++count)
        queue({ 3 });
    EXPECT_EQ(session.getRefusedMessages(), 3);
    EXPECT_EQ(log.take().size(), 1u) << "once";
    session.start();
    EXPECT_EQ(received(), AutoTestFrame::build(0, Bytes(97, 1)));
    session.setPeerState(true, acknowledged);
    EXPECT_EQ(received(), AutoTestFrame::build(1, Bytes(97, 2)));
    for (int count = 0; count < 3; ++count)
        queue({ 4 });
    EXPECT_EQ(session.getRefusedMessages(), 4) << "two had left";
    EXPECT_EQ(log.count("64 messages wait, what follows is not sent"), 1) << "anew";
    EXPECT_EQ(log.count("sendMsg3"), 2);
    EXPECT_EQ(log.count("sendMsgSuccess"), 2);
}

/** Engine threads queue while the equipment answers. Every message arrives once, those of a thread in their order. */
TEST_F(AutoTestSessionTest, MessagesOfSeveralThreadsAllArrive)
{
    constexpr std::uint8_t threadCount = 3;
    constexpr std::uint8_t each = 15;
    session.start();
    std::vector<std::thread> threads;
    for (std::uint8_t thread = 0; thread < threadCount; ++thread)
        threads.emplace_back(
            [this, thread]
            {
                for (std::uint8_t number = 0; number < each; ++number)
                    queue({ thread, number });
            });
    std::vector<int> next(threadCount);
    for (int count = 0; count < threadCount * each; ++count)
    {
        const auto frame = received();
        if (frame.size() != 7)
        {
            ADD_FAILURE() << "not one frame";
            break;
        }
        EXPECT_EQ(frame[5], next[frame[4]]++);
        session.setPeerState(true, acknowledged);
    }
    for (auto& thread : threads)
        thread.join();
    session.stop();
    EXPECT_FALSE(session.isRunning());
}
