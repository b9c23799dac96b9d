#pragma once

#include <cstdint>
#include <juce_core/juce_core.h>
#include <span>

namespace EngineApi
{

/**
    The factory test's way to the test equipment: messages leave one at a time, the next when the last was acknowledged.
    Any thread. Reached through Provided<AutoTestSession>.
*/
class AutoTestSession
{
public:
    virtual ~AutoTestSession() = default;
    virtual void start() = 0; ///< nothing when it runs
    virtual bool isRunning() const = 0;
    /** At most 97 bytes, what a frame carries; longer ones are cut and that is logged. An empty one is not queued. */
    virtual void addMsgToBuffer(const juce::MemoryBlock& message) = 0;
    virtual void clearBuffer() = 0;
    /** What the equipment answered: 0xFF acknowledged, 0xFC send the last message again. */
    virtual void setPeerState(bool ready, int state) = 0;
};

/** Queues a message for the test equipment; nothing without a session. */
void answerAutoTest(std::span<const std::uint8_t> message);
/** Tells the test equipment the normal source, as {0x00, 0x01, type, number}; nothing when it has no name for it. */
void reportSourceToAutoTest();

} // namespace EngineApi
