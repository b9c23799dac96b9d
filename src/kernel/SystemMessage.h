#pragma once

#include "kernel/ComponentIds.h"

#include <juce_core/juce_core.h>

namespace Kernel
{

using Payload = juce::ReferenceCountedObjectPtr<juce::ReferenceCountedObject>;

/** What components say to each other. Pooled: obtain one, fill it, post it, recycle it. */
class SystemMessage : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<SystemMessage>;

    juce::int32 id = -1;
    juce::int32 arg1 = -1;
    juce::int32 arg2 = -1;
    ComponentId receiver = 0;
    /** Of messages to an application task: 0 to 55 selects the handler of that page, any other the task itself. */
    juce::int32 handlerIndex = -1;
    /** Receivers recover the type by a checked cast and ignore what they do not expect. */
    Payload payload;
};

/**
    The process-wide stack of spare messages, last in, first out. Each thread has up to 16 of them at hand and exchanges
    them with the others by eights. Any thread.
*/
class MessagePool
{
public:
    /** As one thread sees it: what all share and what the thread has at hand. */
    static constexpr int capacity = 50;

    static SystemMessage::Ptr obtain();
    /** Takes the message back when the caller's is the last reference and the pool has room; else nothing happens. */
    static void recycle(SystemMessage::Ptr& message);
    static int size();
    static void clear();
};

/** The payload as a T, or null when it is something else. */
template <typename T>
T* payloadAs(const Payload& payload)
{
    return dynamic_cast<T*>(payload.get());
}

} // namespace Kernel
