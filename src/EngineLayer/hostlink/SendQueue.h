#pragma once

#include "EngineLayer/hostlink/HostDataFormat.h"

#include <deque>
#include <mutex>

namespace EngineLayer
{

/** One frame that waits or is in flight. */
struct SendItem : public juce::ReferenceCountedObject
{
    using Ptr = juce::ReferenceCountedObjectPtr<SendItem>;

    SendItem(HostDataFormat::Ptr frameToSend, int subjectOfFrame)
        : frame(std::move(frameToSend))
        , subject(subjectOfFrame)
    {
    }

    HostDataFormat::Ptr frame;
    int subject;
};

/**
    The frames that wait for the link. Urgent ones go first, the newest in front, and of one subject only the newest
    waits; a normal frame that waits goes after four of them at the latest. Each kind has room of its own, so that
    neither pushes the other out. Any thread.
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
        Behind the others. Answers what is given up because too many wait: the frame itself, or, as a heartbeat always
        finds room, the last that is none.
    */
    SendItem::Ptr append(const SendItem::Ptr& item);
    /**
        In front, and in place of what waits about the same subject. Answers the oldest urgent frame if too many wait.
    */
    SendItem::Ptr appendUrgent(const SendItem::Ptr& item);
    /** The next to go; null when none waits. */
    SendItem::Ptr takeNext();
    void clear();

private:
    std::mutex lock;
    std::deque<SendItem::Ptr> normal;
    std::deque<SendItem::Ptr> urgent;
    int overtaken = 0; ///< urgent frames that went before a normal one that waits
};

} // namespace EngineLayer
