#pragma once

#include "EngineApi/ScheduleRecords.h"
#include "EngineLayer/schedule/SwitchAction.h"
#include "kernel/Actor.h"
#include "platform/base/Threads.h"

#include <deque>
#include <optional>

namespace EngineLayer
{

/** Why a request ended as it did, or why it waits, where no rule of the scheduler says it. */
enum class RequestReason {
    none,
    stateRefuses,   ///< the unit's state serves no such request
    waitsForSwitch, ///< another request is carried out
    queueFull,
    noHandler,     ///< nobody has registered the page
    notRunning,    ///< what is to stop does not run
    nothingToDo,   ///< all is as it was asked for already
    ordersRefused, ///< a page could not carry out its order
    cutShort,      ///< the unit goes off
    timeOut        ///< not every page has reported in time
};

/** What has become of one request. */
struct RequestRecord
{
    enum class Status { waiting, scheduling, switching, done, refused, failed };

    struct Order
    {
        int page;
        EngineApi::SwitchType type;
        bool finished, succeeded;
    };

    std::uint32_t number = 0;
    EngineApi::RequestInfo request;
    Kernel::Actor asker;
    Status status = Status::waiting;
    RequestReason reason = RequestReason::none;
    int state = 0; ///< of the unit, when it was asked
    std::vector<Verdict> verdicts;
    std::vector<Order> orders;
    Platform::Clock::time_point asked;
    std::optional<Platform::Clock::time_point> scheduled, ordered, finished;

    bool isOver() const { return finished.has_value(); }
    /** The page of an order that has not been reported; NUM_OF_PAGES for none. */
    int missingPage() const;
};

/** The last 64 requests. The state manager writes, any thread reads. */
class RequestLog
{
public:
    static constexpr std::size_t capacity = 64;

    /** The number of the new one, from 1. */
    std::uint32_t add(const EngineApi::RequestInfo& request, const Kernel::Actor& asker, int state);
    // Of one that is no longer kept nothing is noted.
    void wait(std::uint32_t number);
    void schedule(std::uint32_t number);
    void decide(std::uint32_t number, const SwitchAction& action);
    void order(std::uint32_t number);
    /** `action` where there was one. */
    void finish(std::uint32_t number, RequestRecord::Status status, RequestReason reason,
                const SwitchAction* action = nullptr);
    /** One that nobody has taken up is refused by the unit's state. */
    void settle(std::uint32_t number);

    /** Nobody carries out what is not over yet. */
    void cut();

    /** The newest last. */
    std::vector<RequestRecord> all() const;

private:
    template <typename Change>
    void change(std::uint32_t number, Change&& change);

    Platform::Mutex lock;
    std::deque<RequestRecord> records;
    std::uint32_t last = 0;
};

} // namespace EngineLayer
