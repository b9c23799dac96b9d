#pragma once

#include "platform/base/Threads.h"

#include <juce_core/juce_core.h>

namespace Platform
{

/**
    Listeners that come and go on any thread, also out of a call to one of them. Not owned. Each change waits for the
    calls that are under way on another thread, so that a listener may be deleted once it is removed.
*/
template <typename Listener>
class ListenerList
{
public:
    /** One that is added twice is called twice. */
    void add(Listener* listener) { listeners.add(listener); }
    void addOnce(Listener* listener) { listeners.addIfNotAlreadyThere(listener); }
    /** Takes its first entry. */
    void remove(Listener* listener) { listeners.removeFirstMatchingValue(listener); }

    /** Leaves out who is removed meanwhile, and who is added. */
    template <typename Call>
    void call(Call&& tell)
    {
        const std::lock_guard guard(listeners.getLock());
        const auto current = listeners;
        for (auto* listener : current)
            if (listeners.contains(listener))
                tell(*listener);
    }

private:
    juce::Array<Listener*, Mutex> listeners;
};

} // namespace Platform
