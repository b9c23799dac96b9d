#pragma once

#include "EngineLayer/HostDataFormat.h"
#include "EngineLayer/HostFrameParser.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "lowlayer/BytePool.h"
#include "lowlayer/ClientCallBack.h"

#include <atomic>
#include <deque>

namespace EngineLayer
{

/**
    The only user of the microcontroller link. Outgoing frames are numbered, sent one at a time and resent twice before
    they are given up; incoming ones are acknowledged, freed of repeats and posted to the component that the command
    belongs to. Runs on the group thread of the link; the send operations may be called from any thread.
*/
class HostSessionManager : public Kernel::ComponentTask,
                           public LowLayer::ClientCallBack,
                           public Kernel::Singleton<HostSessionManager>,
                           private HostFrameParser::Sink
{
public:
    /** One frame that waits or is in flight. */
    struct SendItem : public juce::ReferenceCountedObject
    {
        using Ptr = juce::ReferenceCountedObjectPtr<SendItem>;
        HostDataFormat::Ptr frame;
    };

    class MonitorSendThread;

    /** Messages that the session and its monitor send to the session. Resend and failure name the frame's sequence in
     * arg1. */
    enum PrivateMessage : juce::int32 {
        msgFrameReceived = 1,
        msgAcknowledged = 2,
        msgSendNext = 3,
        msgSendNow = 4,
        msgResend = 11,
        msgSendFailed = 12
    };

    /** Frames that may wait; far more than a link that works ever holds. One more is refused and counted. */
    static constexpr int maxWaitingFrames = 1024;

    ~HostSessionManager() override;

    void initialize() override;
    void onStop() override;
    void onRelease() override;
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;
    void onData(int kind, int length, juce::ReferenceCountedObject* data) override;

    /** Any thread; none waits. Of every value the low byte is sent. */
    void sendCommand(int command);
    void sendCommand(int command, int b1);
    void sendCommand(int command, int b1, int b2);
    void sendCommand(int command, int b1, int b2, int b3);
    /** At most 102 bytes, else the call is refused with one error line and counted. Without data a command alone. */
    void sendData(int command, const void* data, int n);
    /** The same in front of everything that waits, though never of the frame in flight. */
    void sendDataUrgent(int command, const void* data, int n);

    /** Sends that were refused: oversize, or with too many frames waiting. Any thread. */
    int getRefusedSends() const { return refusedSends; }

private:
    friend class Kernel::Singleton<HostSessionManager>;
    HostSessionManager();

    void sendBlock(int command, const void* data, int n, bool urgent);
    void queue(HostDataFormat::Ptr frame, bool urgent);
    bool append(const SendItem::Ptr& item, bool urgent);
    SendItem::Ptr takeFront();

    void onAcknowledgement(int sequence, int value) override;
    void onFrame(const std::uint8_t* frame, int length) override;
    void onChecksumError() override;

    void frameReceived(int length, const Kernel::Payload& payload);
    void acknowledge(int sequence);
    void dispatch(const std::uint8_t* frame, int length);
    void acknowledged(int sequence, int value);
    void sendNext();
    void sendNow(const Kernel::Payload& payload);
    void resend(int sequence);
    void sendFailed(int sequence);
    void transmit(const HostDataFormat& frame);
    void releaseInFlight();
    bool isStale(int sequence) const { return waitingForAcknowledgement && sequence != sequenceCounter; }

    juce::ReferenceCountedObjectPtr<MonitorSendThread> monitor;
    std::deque<SendItem::Ptr> sendQueue;
    SendItem::Ptr inFlight;
    std::uint8_t sequenceCounter = 0;
    int lastSequence;
    int previousSequence;
    bool waitingForAcknowledgement = false;
    HostFrameParser parser;
    LowLayer::BytePoolStore frameBuffers { HostFrame::maxLength };
    bool queueFull = false; ///< refusals since then were logged
    juce::CriticalSection queueLock;
    bool synchronised = false;
    std::atomic<int> refusedSends { 0 };
};

} // namespace EngineLayer
