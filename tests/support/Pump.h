#pragma once

#include <juce_events/juce_events.h>

/** Runs the message loop until the condition holds, and gives up after a time that a loaded machine does not need. */
template <typename Condition>
bool pumpUntil(Condition condition, int limitMs = 60000)
{
    const auto end = juce::Time::getMillisecondCounter() + static_cast<juce::uint32>(limitMs);
    while (!condition())
    {
        if (juce::Time::getMillisecondCounter() > end)
            return false;
        juce::MessageManager::getInstance()->runDispatchLoopUntil(5);
    }
    return true;
}

/** Runs the message loop until everything that waits in it now has been handled. */
inline void pump()
{
    bool passed = false;
    juce::MessageManager::callAsync([&passed] { passed = true; });
    pumpUntil([&passed] { return passed; });
}
