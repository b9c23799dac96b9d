#pragma once

#include "EngineApi/HostLink.h"
#include "EngineLayer/hostlink/HostDataFormat.h"
#include "EngineLayer/hostlink/HostFrameParser.h"
#include "EngineLayer/hostlink/MonitorSendThread.h"
#include "EngineLayer/hostlink/SendQueue.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "lowlayer/BytePool.h"
#include "lowlayer/ClientCallBack.h"

#include <atomic>
#include <bitset>
#include <set>

namespace EngineLayer
{

/**
    The only user of the microcontroller link. Outgoing frames are numbered, sent one at a time, and sent again twice
    before they are given up. Incoming frames are acknowledged, repeats are dropped, and the rest is posted to the
    component that the command belongs to. Runs on the group thread of the link; any thread may send.
*/
class HostSessionManager : public Kernel::ComponentTask,
                           public LowLayer::ClientCallBack,
                           public Kernel::Singleton<HostSessionManager>,
                           private HostFrameParser::Sink
{
public:
    using SendItem = EngineLayer::SendItem;

    /** When so many messages wait for a receiver, a frame for it is acknowledged and dropped. */
    static constexpr std::size_t maxWaitingEvents = 1024;

    ~HostSessionManager() override;

    void initialize() override;
    void onStop() override;
    void onRelease() override;
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;
    void onData(int kind, int length, juce::ReferenceCountedObject* data) override;

    /** Sends the low byte of each value. Any thread, as the next two; no call waits. */
    void sendCommand(int command, std::initializer_list<int> values = {});
    /** Sends at most 102 bytes; more are refused, logged and counted. Without data, sends the command alone. */
    void sendData(int command, const void* data, int n);
    /**
        The same, in front of all frames that wait (not of the one in flight) and in place of a waiting one about the
        same subject.
    */
    void sendDataUrgent(int command, const void* data, int n, int subject = EngineApi::noSubject);

    struct Status
    {
        std::uint64_t sent = 0, received = 0; ///< frames; one that comes or goes again does not count again
        std::uint64_t resent = 0, givenUp = 0, damaged = 0, repeated = 0;
        std::size_t waiting = 0;
        Platform::Clock::time_point lastReceived; ///< also an acknowledgement; the clock's beginning for never

        /** The unit's heartbeat, which comes every three seconds, is acknowledged. */
        bool isConnected() const
        {
            constexpr std::chrono::seconds longestSilence { 7 };
            return lastReceived != Platform::Clock::time_point() &&
                   Platform::Clock::now() - lastReceived < longestSilence;
        }
    };
    /** Any thread. */
    Status getStatus() const;
    /** From a frame's first writing to its acknowledgement. */
    const Platform::Histogram& roundTrips() const { return roundTripTimes; }

    /** Frames that were not sent: oversize, or with too many frames waiting. Any thread. */
    int getRefusedSends() const { return refusedSends; }
    /** Received frames that were dropped because their receiver does not keep up. Any thread. */
    int getDroppedEvents() const { return droppedEvents; }

private:
    friend class Kernel::Singleton<HostSessionManager>;
    HostSessionManager();

    /** Null when it is refused. */
    HostDataFormat::Ptr blockFrame(int command, const void* data, int n);
    void queue(HostDataFormat::Ptr frame);
    void noteLoss(const SendItem& lost, int limit);

    void onAcknowledgement(int sequence, int value) override;
    void onFrame(const std::uint8_t* frame, int length) override;
    void onChecksumError() override;

    void frameReceived(int length, const Kernel::Payload& payload);
    void acknowledge(int sequence);
    void dispatch(const std::uint8_t* frame, int length);
    void noteIfUnknown(int command);
    bool hasRoom(Kernel::ComponentId receiver, int command);
    void acknowledged(int sequence, int value);
    void sendNext();
    void sendNow(const Kernel::Payload& payload);
    void resend(int sequence);
    void sendFailed(int sequence);
    void transmit(const HostDataFormat& frame);
    void releaseInFlight();
    bool isStale(int sequence) const { return waitingForAcknowledgement && sequence != sequenceCounter; }

    juce::ReferenceCountedObjectPtr<MonitorSendThread> monitor;
    SendQueue sendQueue;
    SendItem::Ptr inFlight;
    std::uint8_t sequenceCounter = 0;
    int lastSequence;
    int previousSequence;
    bool waitingForAcknowledgement = false;
    HostFrameParser parser;
    LowLayer::BytePoolStore frameBuffers { "received frames", HostFrame::maxLength };
    bool synchronised = false;
    std::atomic<std::uint64_t> sent { 0 }, received { 0 }, resent { 0 }, damaged { 0 }, repeated { 0 };
    std::atomic<Platform::Clock::time_point> lastReceived {};
    Platform::Histogram roundTripTimes;
    Platform::Clock::time_point sentAt; ///< of the frame in flight, the first time
    std::atomic<int> refusedSends { 0 };
    std::atomic<bool> lossLogged { false }; ///< until nothing waits
    std::atomic<int> droppedEvents { 0 };
    std::set<Kernel::ComponentId> overrun;                   ///< logged, until nothing waits for them
    std::bitset<HostFrame::commandCount> unknownCommands {}; ///< logged
};

} // namespace EngineLayer
