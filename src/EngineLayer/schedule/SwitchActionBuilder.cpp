#include "EngineLayer/schedule/Scheduler.h"

#include <algorithm>

namespace EngineLayer
{

namespace
{

using Platform::AppCommandLine;

EngineApi::AppStateSwitch::Ptr makeOrder(const EngineApi::ScheduleInfo& info, EngineApi::SwitchType type,
                                         AppCommandLine::Ptr commandLine)
{
    EngineApi::AppStateSwitch::Ptr order = new EngineApi::AppStateSwitch();
    order->page = info.page;
    order->switchType = type;
    if (type != EngineApi::SwitchType::ToStop)
        order->states = info.states;
    order->commandLine = std::move(commandLine);
    return order;
}

EngineApi::ScheduleInfo::Ptr findPage(const ScheduleState::List& list, std::int32_t page)
{
    const auto found = std::ranges::find_if(list, [page](const auto& info) { return info->page == page; });
    return found == list.end() ? nullptr : *found;
}

bool onTop(const EngineApi::ScheduleInfo& info)
{
    return info.states.showState == 1;
}

/** A page that starts: its source is entered when it is a new one, else it is shown when it comes on top. */
EngineApi::AppStateSwitch::Ptr makeRun(const EngineApi::ScheduleInfo& info, bool entersSource, bool deviceFlag)
{
    AppCommandLine::Ptr commandLine;
    if (entersSource)
        commandLine = AppCommandLine::genCmdSourceEnter(info.page, deviceFlag, onTop(info));
    else if (onTop(info))
        commandLine = AppCommandLine::genCmdPageShow(info.page, deviceFlag);
    return makeOrder(info, EngineApi::SwitchType::ToRun, commandLine);
}

} // namespace

SwitchAction::Ptr Scheduler::buildSwitchAction(int requestPage, bool deviceFlag)
{
    state.stopList.clear();
    state.changeList.clear();
    state.runList.clear();
    orderStops();
    orderFrontPages(requestPage, deviceFlag);
    orderRearPage(deviceFlag);

    SwitchAction::Ptr action = new SwitchAction();
    action->requestPage = requestPage;
    action->verdicts = state.verdicts;
    for (const auto* list : { &state.stopList, &state.changeList, &state.runList })
        action->orders.insert(action->orders.end(), list->begin(), list->end());
    return action;
}

void Scheduler::orderStops()
{
    for (const auto& info : state.currentFront)
    {
        if (findPage(state.nextFront, info->page) != nullptr)
            continue;
        state.stopList.push_back(makeOrder(*info, EngineApi::SwitchType::ToStop,
                                           info->isNormalSource
                                               ? AppCommandLine::genCmdSourceExit(info->page, state.lastNormalSource)
                                               : AppCommandLine::genCmdPageHide(info->page, state.frontShowPage)));
    }
    const auto& rear = state.currentRear;
    if (rear != nullptr && (state.nextRear == nullptr || state.nextRear->page != rear->page))
        state.stopList.insert(
            state.stopList.begin(),
            makeOrder(*rear, EngineApi::SwitchType::ToStop,
                      rear->isRear ? AppCommandLine::genCmdSourceExit(rear->page, state.rearPage) : nullptr));
}

void Scheduler::orderFrontPages(int requestPage, bool deviceFlag)
{
    // What comes to the top goes last, so that the page under it has left before.
    ScheduleState::Orders raised;
    for (const auto& next : state.nextFront)
    {
        const auto current = findPage(state.currentFront, next->page);
        if (current == nullptr)
            state.runList.push_back(makeRun(*next, next->isNormalSource && state.normalSourceChanged, deviceFlag));
        else if (current->states != next->states)
        {
            if (auto held = orderChange(*current, *next, deviceFlag))
                raised.push_back(held);
        }
        else if (next->page == requestPage && onTop(*next))
            raised.push_back(makeOrder(*next, EngineApi::SwitchType::ToShowTopLevel,
                                       AppCommandLine::genCmdPageShow(next->page, deviceFlag)));
    }
    state.changeList.insert(state.changeList.end(), raised.begin(), raised.end());
}

void Scheduler::orderRearPage(bool deviceFlag)
{
    const auto& next = state.nextRear;
    const auto& current = state.currentRear;
    if (next == nullptr)
        return;
    if (current == nullptr || current->page != next->page)
        state.runList.push_back(makeRun(*next, next->isRear && state.rearChanged, deviceFlag));
    else if (current->states != next->states)
        if (auto held = orderChange(*current, *next, deviceFlag))
            state.changeList.push_back(held);
}

EngineApi::AppStateSwitch::Ptr Scheduler::orderChange(const EngineApi::ScheduleInfo& current,
                                                      const EngineApi::ScheduleInfo& next, bool deviceFlag)
{
    if (!onTop(current) && onTop(next))
        return makeOrder(next, EngineApi::SwitchType::ToChange, AppCommandLine::genCmdPageShow(next.page, deviceFlag));
    AppCommandLine::Ptr commandLine;
    if (onTop(current) && !onTop(next))
        commandLine = AppCommandLine::genCmdPageHide(next.page, state.frontShowPage);
    state.changeList.push_back(makeOrder(next, EngineApi::SwitchType::ToChange, commandLine));
    return nullptr;
}

} // namespace EngineLayer
