#include "EngineApi/ScheduleRecords.h"
#include "EngineApi/SystemState.h"
#include "EngineLayer/system/SystemState.h"
#include "EngineLayer/system/SystemStateManager.h"
#include "bench/simulation/Promises.h"
#include "bench/text/Names.h"
#include "kernel/MessageIds.h"

#include <map>

namespace Simulation
{

namespace
{

using namespace std::chrono_literals;

/** The engine's time-out, and what its threads may take until they have handled it. */
constexpr auto longestSwitch = 3100ms;

/** The requests of all pages, as the messages between the engine's parts tell. */
class Requests
{
public:
    void watch(SimulatedUnit& unit)
    {
        unit.lookout.messages.add([this](Kernel::SystemTask&, const Kernel::SystemMessage& message)
                                  { onMessage(message); });
    }

    std::string wrong()
    {
        checkSwitch();
        return broken;
    }

    std::string unanswered() const
    {
        for (const auto& [page, each] : pages)
            if (each.requests != each.answers)
                return std::string(Pubhead::pageName(page)) + " has asked " + std::to_string(each.requests) +
                       " times, and was answered " + std::to_string(each.answers) + " times";
        return {};
    }

private:
    struct Page
    {
        int requests = 0;
        int answers = 0;
        int failures = 0; ///< it may hear of: orders that were sent to it in another page's switch
    };

    std::map<int, Page> pages;
    std::optional<Clock::time_point> switchBegin;
    int switchPage = Pubhead::NUM_OF_PAGES; ///< whose request is carried out
    std::string broken;

    void onMessage(const Kernel::SystemMessage& message)
    {
        if (message.receiver == Kernel::systemStateManagerId)
            return onStateMessage(message);
        if (message.id == Kernel::MSG_APP_SWITCH && message.handlerIndex != switchPage)
            ++pages[message.handlerIndex].failures;
        else if (message.id == Kernel::MSG_SCHEDULE_RESULT)
            onResult(message.handlerIndex, message.arg1);
    }

    void onStateMessage(const Kernel::SystemMessage& message)
    {
        checkSwitch();
        switch (message.id)
        {
        case Kernel::MSG_SCHEDULE_REQUEST:
            ++pages[message.arg1].requests;
            break;
        case EngineLayer::stateSchedule:
            switchPage = message.arg1;
            break;
        case EngineLayer::stateSwitch:
            switchBegin = Clock::now();
            break;
        case Kernel::MSG_SYS_TIMER:
            // Every page reports at once, or when the view manager has no longer waited for it.
            if (message.arg1 == EngineLayer::SystemStateManager::timerId &&
                EngineApi::getSystemSubState() == EngineApi::kSwitch)
                breaks(std::string("the switch of ") + Pubhead::pageName(switchPage) + " is given up");
            break;
        default:
            break;
        }
    }

    void onResult(int page, int status)
    {
        auto& told = pages[page];
        if (status == EngineApi::scheduleQueued)
            return;
        if (status == EngineApi::scheduleFailed && page != switchPage && told.failures > 0)
            --told.failures;
        else if (++told.answers > told.requests)
            breaks(std::string(Pubhead::pageName(page)) + " was answered (" + std::to_string(status) +
                   ") more often than it has asked");
    }

    void breaks(const std::string& what)
    {
        if (broken.empty())
            broken = what;
    }

    void checkSwitch()
    {
        if (EngineApi::getSystemSubState() != EngineApi::kSwitch)
            switchBegin.reset();
        else if (switchBegin && Clock::now() - *switchBegin > longestSwitch)
            breaks(std::string("the switch of ") + Pubhead::pageName(switchPage) + " does not end");
    }
};

std::string answeredOnce(SimulatedUnit&, const Since&)
{
    return only<Requests>().wrong();
}

std::string allAnswered(SimulatedUnit&, const Since&)
{
    return only<Requests>().unanswered();
}

constexpr Promise all[] {
    { "a request has one answer, and a switch its time", answeredOnce, false, watchWith<Requests> },
    { "every request is answered", allAnswered, true },
};

} // namespace

std::span<const Promise> requestPromises()
{
    return all;
}

} // namespace Simulation
