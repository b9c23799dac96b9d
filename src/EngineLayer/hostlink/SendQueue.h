#pragma once

#include "EngineLayer/hostlink/HostDataFormat.h"
#include "kernel/Cause.h"
#include "kernel/Trace.h"
#include "platform/base/Threads.h"

#include <deque>

namespace EngineLayer
{

/** One frame that waits or is in flight; it goes back to its pool with it. */
struct SendItem : public juce::ReferenceCountedObject
{
    using Ptr = juce::ReferenceCountedObjectPtr<SendItem>;

    SendItem(HostDataFormat::Ptr frameToSend, int subjectOfFrame)
        : frame(std::move(frameToSend))
        , subject(subjectOfFrame)
    {
    }
    ~SendItem() override { HostDataFormat::releaseFrame(*frame); }

    HostDataFormat::Ptr frame;
    int subject;
    const Kernel::Cause cause = Kernel::Cause::current();
    const Kernel::Trace::Origin origin = Kernel::Trace::here();
};

/**
    The frames that wait for the link. Urgent frames go first, the newest in front, and of one subject only the newest
    waits; after four of them a waiting normal frame goes. Each kind has its own bound, so that neither displaces the
    other. Any thread.
*/
class SendQueue
{
public:
    /** Far more than a link that works ever holds. */
    static constexpr int maxNormal = 1024;
    static constexpr int maxUrgent = 64;
    /** A report on both zones is four frames, which stay together. */
    static constexpr int urgentInARow = 4;

    /**
        Appends a normal frame. Returns the one that is given up if too many wait, else null: the frame itself or, for a
        heartbeat, the last that is no heartbeat.
    */
    SendItem::Ptr append(const SendItem::Ptr& item);
    /**
        Puts an urgent frame in front, in place of a waiting one about the same subject. Returns the oldest urgent frame
        if too many wait, or null.
    */
    SendItem::Ptr appendUrgent(const SendItem::Ptr& item);
    /** The next to go; null when none waits. */
    SendItem::Ptr takeNext();
    void clear();
    std::size_t size() const;

private:
    Platform::Mutex lock;
    std::deque<SendItem::Ptr> normal;
    std::deque<SendItem::Ptr> urgent;
    int overtaken = 0; ///< urgent frames that went before a normal one that waits
};

} // namespace EngineLayer
