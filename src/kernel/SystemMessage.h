#pragma once

#include "kernel/Actor.h"
#include "kernel/Cause.h"
#include "kernel/ComponentIds.h"
#include "kernel/Trace.h"

#include <juce_core/juce_core.h>

namespace Kernel
{

using Payload = juce::ReferenceCountedObjectPtr<juce::ReferenceCountedObject>;

/** A message between components. Pooled: obtain one, fill it, post it, recycle it. */
class SystemMessage : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<SystemMessage>;

    juce::int32 id = -1;
    juce::int32 arg1 = -1;
    juce::int32 arg2 = -1;
    ComponentId receiver = 0;
    /** To an application task: 0 to 55 is the page whose handler gets it, any other value means the task itself. */
    juce::int32 handlerIndex = -1;
    /** Receivers recover the type by a checked cast and ignore what they do not expect. */
    Payload payload;
    Cause cause;          ///< of what its poster did
    Actor poster;         ///< in whose handler it was posted
    Trace::Origin origin; ///< when it was posted, in a trace; what it was before when there is none
};

/**
    The spare messages of the process, last in, first out. Each thread keeps up to 16 of its own and exchanges eight at
    a time with the common store. Any thread.
*/
class MessagePool
{
public:
    /** Of the common store. */
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
