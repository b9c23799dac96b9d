#include "EngineLayer/schedule/RequestLog.h"

#include <algorithm>

namespace EngineLayer
{

namespace
{

using Status = RequestRecord::Status;

void noteOrders(RequestRecord& record, const SwitchAction& action)
{
    record.orders.clear();
    for (const auto& order : action.orders)
        record.orders.push_back({ order->page, order->switchType, order->progress == EngineApi::OrderProgress::finished,
                                  order->succeeded });
}

} // namespace

int RequestRecord::missingPage() const
{
    const auto found = std::ranges::find_if(orders, [](const auto& order) { return !order.finished; });
    return found == orders.end() ? static_cast<int>(Pubhead::NUM_OF_PAGES) : found->page;
}

std::uint32_t RequestLog::add(const EngineApi::RequestInfo& request, const Kernel::Actor& asker, int state)
{
    const std::lock_guard guard(lock);
    RequestRecord record;
    record.number = ++last;
    record.request = request;
    record.asker = asker;
    record.state = state;
    record.asked = Platform::Clock::now();
    records.push_back(std::move(record));
    if (records.size() > capacity)
        records.pop_front();
    return last;
}

template <typename Change>
void RequestLog::change(std::uint32_t number, Change&& change)
{
    const std::lock_guard guard(lock);
    const auto found = std::ranges::find(records, number, &RequestRecord::number);
    if (found != records.end())
        change(*found);
}

void RequestLog::wait(std::uint32_t number)
{
    change(number, [](auto& record) { record.reason = RequestReason::waitsForSwitch; });
}

void RequestLog::schedule(std::uint32_t number)
{
    change(number,
           [](auto& record)
           {
               record.status = Status::scheduling;
               record.reason = RequestReason::none;
           });
}

void RequestLog::decide(std::uint32_t number, const SwitchAction& action)
{
    change(number,
           [&](auto& record)
           {
               record.scheduled = Platform::Clock::now();
               record.verdicts = action.verdicts;
               noteOrders(record, action);
           });
}

void RequestLog::order(std::uint32_t number)
{
    change(number,
           [](auto& record)
           {
               record.status = Status::switching;
               record.ordered = Platform::Clock::now();
           });
}

void RequestLog::finish(std::uint32_t number, Status status, RequestReason reason, const SwitchAction* action)
{
    change(number,
           [=](auto& record)
           {
               record.status = status;
               record.reason = reason;
               record.finished = Platform::Clock::now();
               if (action != nullptr)
                   noteOrders(record, *action);
           });
}

void RequestLog::settle(std::uint32_t number)
{
    change(number,
           [](auto& record)
           {
               if (record.status != Status::waiting || record.reason != RequestReason::none)
                   return;
               record.status = Status::refused;
               record.reason = RequestReason::stateRefuses;
               record.finished = Platform::Clock::now();
           });
}

void RequestLog::cut()
{
    const std::lock_guard guard(lock);
    for (auto& record : records)
        if (!record.isOver())
        {
            record.status = Status::failed;
            record.reason = RequestReason::cutShort;
            record.finished = Platform::Clock::now();
        }
}

std::vector<RequestRecord> RequestLog::all() const
{
    const std::lock_guard guard(lock);
    return { records.begin(), records.end() };
}

} // namespace EngineLayer
