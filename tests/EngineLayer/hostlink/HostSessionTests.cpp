#include "EngineLayer/hostlink/MonitorSendThread.h"
#include "kernel/MessageIds.h"
#include "support/KernelFixture.h"
#include "support/LogCapture.h"
#include "support/WithMcu.h"

#include <chrono>

using namespace EngineApi;
using namespace EngineLayer;
using Bytes = McuLink::Bytes;
using Frame = McuLink::Frame;
using Frames = std::vector<Frame>;
using Session = HostSessionManager;

namespace
{

class HostSessionTest : public WithMcu<KernelFixture>
{
protected:
    void mcuSends(const Frame& frame)
    {
        mcu.send(frame);
        run();
    }
    void mcuAcknowledges(int sequence) { mcuSends(McuLink::acknowledgementOf(sequence)); }
    void toSession(SessionMessage id, int sequence) { send(Kernel::hostSessionManagerId, id, sequence); }
    Frames written()
    {
        run();
        return mcu.takeWritten();
    }
};

const Frame lastMemory { 1, EVENT_GET_LAST_MEMORY, {} };

} // namespace

TEST_F(HostSessionTest, FramesGoOutOneAtATimeAndInOrder)
{
    sendCommand(EVENT_GET_LAST_MEMORY);
    sendCommand(EVENT_SRC_SWITCH, { 10, 3 });
    sendCommand(EVENT_KEY, { 1, 2, 3 });
    EXPECT_EQ(written(), Frames { lastMemory });
    mcuAcknowledges(9);
    EXPECT_EQ(written(), Frames {}) << "somebody else's acknowledgement";
    mcuAcknowledges(1);
    EXPECT_EQ(written(), (Frames { { 2, EVENT_SRC_SWITCH, { 10, 3 } } }));
    mcuAcknowledges(1);
    EXPECT_EQ(written(), Frames {}) << "a repeated acknowledgement";
    mcuAcknowledges(2);
    EXPECT_EQ(written(), (Frames { { 3, EVENT_KEY, { 1, 2, 3 } } }));
    mcuAcknowledges(3);
    sendData(EVENT_MEDIA_INFO, nullptr, 5);
    EXPECT_EQ(written(), (Frames { { 4, EVENT_MEDIA_INFO, {} } }));
}

TEST_F(HostSessionTest, TheSequenceCounterWraps)
{
    for (int count = 1; count <= 257; ++count)
    {
        sendCommand(EVENT_HEAT_BEAT, { 0 });
        ASSERT_EQ(written(), (Frames { { count % 256, EVENT_HEAT_BEAT, { 0 } } }));
        mcuAcknowledges(count % 256);
    }
}

// A silent microcontroller gets the frame again, then the next one. The monitor may also time out at the moment at which
// the acknowledgement arrives: its message stands in the queue behind it, when the next frame is in flight already. That
// frame must be neither repeated nor lost.
TEST_F(HostSessionTest, ATimeOutRepeatsTheFrameInFlightAndNoOther)
{
    const LogCapture log;
    sendCommand(EVENT_GET_LAST_MEMORY);
    sendCommand(EVENT_HEAT_BEAT, { 0 });
    EXPECT_EQ(written(), Frames { lastMemory });
    toSession(msgResend, 1);
    toSession(msgResend, 1);
    EXPECT_EQ(written(), (Frames { lastMemory, lastMemory }));
    EXPECT_EQ(log.count("MCU ReSend ID! EVENT_GET_LAST_MEMORY"), 2);
    toSession(msgSendFailed, 1);
    EXPECT_EQ(log.count("MCU Send Error ID! EVENT_GET_LAST_MEMORY"), 1);
    EXPECT_EQ(written(), (Frames { { 2, EVENT_HEAT_BEAT, { 0 } } }));

    toSession(msgResend, 1);
    toSession(msgSendFailed, 1);
    EXPECT_EQ(written(), Frames {});
    sendCommand(EVENT_MUTE_STATE, { 1 });
    EXPECT_EQ(written(), Frames {}) << "the heartbeat is still in flight";
    mcuAcknowledges(2);
    EXPECT_EQ(written(), (Frames { { 3, EVENT_MUTE_STATE, { 1 } } }));
}

TEST_F(HostSessionTest, WhatAFrameCannotCarryIsRefused)
{
    const LogCapture log;
    const Bytes data(103, 7);
    sendData(EVENT_PGN_SEND_CAN, data.data(), 103);
    sendDataUrgent(EVENT_PGN_SEND_CAN, data.data(), 103);
    EXPECT_EQ(written(), Frames {});
    EXPECT_EQ(log.take().size(), 2u);
    EXPECT_EQ(Session::getInstance()->getRefusedSends(), 2);
    sendData(EVENT_PGN_SEND_CAN, data.data(), 102);
    EXPECT_EQ(written(), (Frames { { 1, EVENT_PGN_SEND_CAN, Bytes(102, 7) } }));
}

// A device on the network asks for something new with each answer. The heartbeat goes out all the same.
TEST_F(HostSessionTest, ABusyNetworkHoldsNoNormalFrameUp)
{
    std::uint8_t answer = 0;
    const auto answerTwice = [&answer]
    {
        for (int each = 0; each < 2; ++each)
            sendDataUrgent(EVENT_PGN_SEND_CAN, &++answer, 1);
    };
    answerTwice();
    sendCommand(EVENT_HEAT_BEAT, { 0 });
    sendCommand(EVENT_MUTE_STATE, { 1 });
    std::vector<int> order;
    for (int sequence = 1; sequence <= 11; ++sequence)
    {
        order.push_back(written().at(0).command);
        answerTwice();
        mcuAcknowledges(sequence);
    }
    std::vector<int> expected(11, EVENT_PGN_SEND_CAN);
    expected[SendQueue::urgentInARow] = EVENT_HEAT_BEAT;
    expected[2 * SendQueue::urgentInARow + 1] = EVENT_MUTE_STATE;
    EXPECT_EQ(order, expected);
}

TEST_F(HostSessionTest, ADeadLinkDoesNotFillTheMemoryAndLosesNoHeartbeat)
{
    const LogCapture log;
    const auto& session = *Session::getInstance();
    for (int i = 0; i < SendQueue::maxNormal + 10; ++i)
        sendCommand(EVENT_MUTE_STATE, { 0 });
    EXPECT_EQ(session.getRefusedSends(), 10);
    sendCommand(EVENT_HEAT_BEAT, { 0 });
    EXPECT_EQ(session.getRefusedSends(), 11) << "the last that is no heartbeat goes in its place";
    for (std::uint8_t i = 1; i <= SendQueue::maxUrgent + 5; ++i)
        sendDataUrgent(EVENT_PGN_SEND_CAN, &i, 1);
    EXPECT_EQ(session.getRefusedSends(), 16) << "neither kind pushes the other out";
    EXPECT_EQ(log.take().size(), 1u) << "logged once";

    const auto said = McuLink::converse([this] { run(); });
    std::map<int, int> sent;
    for (const auto& frame : said)
        ++sent[frame.command];
    EXPECT_EQ(sent, (std::map<int, int> { { EVENT_HEAT_BEAT, 1 },
                                          { EVENT_MUTE_STATE, SendQueue::maxNormal - 1 },
                                          { EVENT_PGN_SEND_CAN, SendQueue::maxUrgent } }));
    EXPECT_EQ(said.front().data, Bytes { SendQueue::maxUrgent + 5 }) << "the oldest are given up";
    EXPECT_EQ(said.back().command, EVENT_HEAT_BEAT);
}

TEST_F(HostSessionTest, AReceiverThatDoesNotKeepUpLosesFramesAndNoMemoryIsLost)
{
    synchronise();
    takePosted();
    const LogCapture log;
    for (std::size_t i = 0; i < Session::maxWaitingEvents + 10; ++i)
        mcuSends({ static_cast<int>(i % 200), EVENT_KEY, { 1, 2, 3 } });
    EXPECT_EQ(Session::getInstance()->getDroppedEvents(), 10);
    EXPECT_EQ(log.count("1024 messages wait for component 23, IND_KEY and what follows is dropped"), 1);
    EXPECT_EQ(takePosted().size(), Session::maxWaitingEvents);
    mcuSends({ 201, EVENT_KEY, { 1, 2, 3 } });
    EXPECT_EQ(takePosted().size(), 1u);
}

TEST_F(HostSessionTest, NothingIsDispatchedBeforeTheLastMemoryAnswer)
{
    mcuSends({ 1, EVENT_KEY, { 1, 2, 3 } });
    EXPECT_EQ(written(), Frames { McuLink::acknowledgementOf(1) });
    expectNothingPosted();
    mcuSends({ 2, EVENT_GET_LAST_MEMORY, {} });
    expectPosted(Kernel::deviceStatusManagerId, Kernel::MSG_HOST_EVENT, EVENT_GET_LAST_MEMORY, 0);
    mcuSends({ 3, EVENT_KEY, { 1, 2, 3 } });
    const auto posted = takePosted();
    ASSERT_EQ(posted.size(), 1u);
    EXPECT_EQ(posted[0].receiver, Kernel::keyManagerId);
    EXPECT_EQ(posted[0].arg1, EVENT_KEY);
    EXPECT_EQ(posted[0].arg2, 3);
    const auto* data = Kernel::payloadAs<LowLayer::BytePool>(posted[0].payload);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(Bytes(data->dataPointer(), data->dataPointer() + data->length()), (Bytes { 1, 2, 3 }));
}

TEST_F(HostSessionTest, RepeatsAreIgnoredUntilTwoOthersHaveCome)
{
    synchronise();
    takePosted();
    const auto numbered = [](int sequence) { return Frame { sequence, EVENT_DEVICE_STATUS, {} }; };
    for (const int sequence : { 5, 5, 6, 5, 7, 5 })
        mcuSends(numbered(sequence));
    EXPECT_EQ(written(), (Frames { McuLink::acknowledgementOf(5), McuLink::acknowledgementOf(6),
                                   McuLink::acknowledgementOf(7), McuLink::acknowledgementOf(5) }));
    EXPECT_EQ(takePosted().size(), 4u);
}

TEST_F(HostSessionTest, WhatNobodyWantsIsAcknowledgedAllTheSame)
{
    synchronise();
    takePosted();
    mcuSends({ 1, EVENT_MUTE_STATE, {} });
    EXPECT_EQ(written(), Frames { McuLink::acknowledgementOf(1) });
    for (const auto& each : takePosted())
        EXPECT_EQ(each.receiver, Kernel::noComponent);
    mcuSends({ 2, 0x8000, { 1 } });
    expectPosted(Kernel::generalApplicationId, Kernel::MSG_HOST_EVENT, 0, 1);
    const LogCapture log;
    for (const int command : { 99, 28, 99 })
        mcuSends({ command + static_cast<int>(mcu.takeWritten().size()), command, {} });
    EXPECT_EQ(log.count("frames of command 99 are not known and are ignored"), 1) << "once a kind";
    EXPECT_EQ(log.count("frames of command 28 are not known and are ignored"), 1);
}

namespace
{

/** The monitor alone, run on the test's thread; the session is a recorder. */
class MonitorTest : public KernelFixture
{
protected:
    using Told = std::vector<std::pair<int, int>>;

    /** What a run for this frame tells the session. */
    Told runWatch(int sequence)
    {
        Kernel::SystemMessage message;
        message.id = Kernel::SingalTask::runMessage;
        message.arg1 = sequence;
        monitor->dispatchMessage(message);
        Told told;
        for (const auto& each : takePosted())
            if (each.receiver == Kernel::hostSessionManagerId)
                told.emplace_back(each.id, each.arg1);
        return told;
    }

    MonitorSendThread::Ptr monitor = new MonitorSendThread();
};

} // namespace

TEST_F(MonitorTest, AsksForTwoResendsAndThenGivesUp)
{
    monitor->watch(7);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(runWatch(7), (Told { { msgResend, 7 }, { msgResend, 7 }, { msgSendFailed, 7 } }));
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(seconds.count(), 1.35) << "four, eight and sixteen slices of 50 ms";
}

TEST_F(MonitorTest, AWatchThatWasEndedBeforeItBeganDoesNothing)
{
    monitor->watch(1);
    monitor->stopWatching();
    EXPECT_EQ(runWatch(1), (Told { { msgSendNext, 0 } }));
    monitor->watch(2);
    monitor->watch(3);
    EXPECT_EQ(runWatch(2), (Told { { msgSendNext, 0 } })) << "the run for 2 must not watch over 3";
}

// Session and monitor on their own threads, an MCU that acknowledges at once, and one that then falls silent.
TEST_F(HostSessionTest, WithItsMonitorEveryFrameGoesOutInOrder)
{
    constexpr int count = 50;
    engine().findGroup("MonitorSendThread")->start();
    for (int i = 0; i < count; ++i)
        sendCommand(EVENT_HEAT_BEAT, { i });
    Frames seen;
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    const auto stepUntil = [&](auto done)
    {
        while (!done() && std::chrono::steady_clock::now() < limit)
            for (const auto& frame : written())
            {
                if (seen.empty() || seen.back() != frame)
                    seen.push_back(frame);
                if (frame.sequence < count)
                    mcu.send(McuLink::acknowledgementOf(frame.sequence));
            }
    };
    stepUntil([&] { return seen.size() == count; });
    ASSERT_EQ(seen.size(), static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        EXPECT_EQ(seen[static_cast<std::size_t>(i)],
                  (Frame { i + 1, EVENT_HEAT_BEAT, { static_cast<std::uint8_t>(i) } }));
    sendCommand(EVENT_MUTE_STATE, { 1 });
    stepUntil([&] { return seen.size() == count + 1; });
    EXPECT_EQ(seen.back(), (Frame { count + 1, EVENT_MUTE_STATE, { 1 } })) << "the unanswered frame was given up";
}
