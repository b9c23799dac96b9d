#pragma once

#include "EngineApi/AutoTestSession.h"
#include "EngineLayer/autotest/AutoTestFrame.h"
#include "kernel/Singleton.h"
#include "platform/base/Threads.h"

#include <atomic>
#include <deque>

namespace EngineLayer
{

/**
    Sends the messages for the factory's test equipment through the microcontroller, from a thread of its own: one is in
    flight at a time, the equipment's answer releases the next one or has the last one sent again.
*/
class CATestSessionManager : public Platform::Thread,
                             public EngineApi::AutoTestSession,
                             public Kernel::Singleton<CATestSessionManager>
{
public:
    /** Messages that may wait. One more is refused and counted; equipment that is not there acknowledges none. */
    static constexpr int maxWaitingMessages = 64;

    ~CATestSessionManager() override;

    void start() override;
    bool isRunning() const override { return isThreadRunning(); }
    void addMsgToBuffer(const juce::MemoryBlock& message) override;
    void clearBuffer() override;
    void setPeerState(bool ready, int state) override;

    /**
        Asks the thread to end and waits at most 200 ms; one that still runs is logged and left alone. Message thread.
    */
    void stop();
    /** Messages that were refused because too many wait. Any thread. */
    int getRefusedMessages() const { return refusedMessages; }

private:
    friend class Kernel::Singleton<CATestSessionManager>;
    CATestSessionManager();

    /** What the equipment said last. */
    enum PeerState { nothingSaid = 0, sendAgain = 0xFC, acknowledged = 0xFF };

    void run() override;
    void sendNext();
    void sendCurrent();

    Platform::Mutex lock; ///< guards everything below
    bool readyToSend = true;
    int peerState = acknowledged;
    std::deque<AutoTestFrame::Bytes> queue; ///< messages
    AutoTestFrame::Bytes current;           ///< the frame that was sent last
    std::uint32_t sequence = 0;
    bool queueFull = false; ///< reported, until a message leaves
    std::atomic<int> refusedMessages { 0 };
};

} // namespace EngineLayer
