#pragma once

#include <juce_core/juce_core.h>

namespace EngineApi
{

/** The factory test's session with the test equipment. Reached through Provided<AutoTestSession>. */
class AutoTestSession
{
public:
    virtual ~AutoTestSession() = default;
    virtual void start() = 0; ///< nothing when it runs
    virtual bool isRunning() const = 0;
    virtual void addMsgToBuffer(const juce::MemoryBlock& message) = 0;
};

} // namespace EngineApi
