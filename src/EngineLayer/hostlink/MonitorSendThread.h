#pragma once

#include "kernel/SystemTask.h"
#include "platform/base/Shared.h"

namespace EngineLayer
{

/**
    Messages that the session and its monitor send to the session, component 19. Resend and failure name the frame's
    sequence in arg1.
*/
enum SessionMessage : juce::int32 {
    msgFrameReceived = 1,
    msgAcknowledged = 2,
    msgSendNext = 3,
    msgSendNow = 4,
    msgResend = 11,
    msgSendFailed = 12
};

/**
    Times the acknowledgement of the frame in flight: asks the session to send it again after about 200 ms and 600 ms,
    and to give it up after about 1400 ms. Speaks to the session by messages only.
*/
class MonitorSendThread : public Kernel::SingalTask
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<MonitorSendThread>;

    void initialize() override;

    /** Ends the watch, if any, and starts one over the frame of this sequence. Session's thread. */
    void watch(int sequence);
    /**
        Ends the watch, also one that has not begun yet. Session's thread; at the end of the process, the message
        thread.
    */
    void stopWatching();

protected:
    void runTask(const Kernel::SystemMessage& message) override;

private:
    static constexpr int nothing = -1;

    bool isWatching(int sequence) const { return !isStopRequested() && watched == sequence; }
    /** False when the frame is to be given up. */
    bool tick(int sequence);

    Platform::Shared<int> watched { nothing };
    int retriesLeft = 0;
    int ticksLeft = 0;
};

} // namespace EngineLayer
