#pragma once

#include "EngineApi/ScheduleRecords.h"
#include "EngineLayer/schedule/Verdict.h"

namespace EngineLayer
{

/**
    The orders of one schedule in their order (stops, changes, runs), and how far they are carried out. The owner posts
    what `sendNext` hands out and passes the pages' reports to `markPage`. Used on one thread at a time.
*/
class SwitchAction : public juce::ReferenceCountedObject
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<SwitchAction>;
    using Orders = std::vector<EngineApi::AppStateSwitch::Ptr>;

    Orders orders;
    EngineApi::AppResourceSwitch::Ptr resourceSwitch; ///< the channel change of the schedule, or null
    std::int32_t requestPage = Pubhead::NUM_OF_PAGES; ///< receives the result
    std::vector<Verdict> verdicts;                    ///< which rules have decided, in their order

    bool hasAction() const { return !orders.empty() || resourceSwitch != nullptr; }

    /**
        Marks and returns the orders that are to be posted now: the stops and changes that were not sent; when there are
        none, everything that was not sent. The caller posts them.
    */
    Orders sendNext();

    /**
        Takes a page's report: the order that was sent to it is finished. NUM_OF_PAGES reports the resource switch.
        Without a sent order of that page nothing changes; a second report changes nothing.
    */
    void markPage(int page, bool ok);

    /** An absent resource switch counts as sent, finished and succeeded. */
    bool allSent() const;
    bool allFinished() const;
    bool allSucceeded() const;

    /** The pages that an order was sent to, in order: those that hear of a failure. */
    std::vector<int> sentPages() const;

    /** Log lines: a heading, two lines an order, five more with a resource switch. */
    std::vector<juce::String> describe() const;
};

} // namespace EngineLayer
