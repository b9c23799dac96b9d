#include "EngineLayer/hostlink/SendQueue.h"

#include "EngineApi/HostLink.h"

#include <algorithm>

namespace EngineLayer
{

namespace
{

bool isHeartbeat(const SendItem::Ptr& item)
{
    return item->frame->commandOf() == EngineApi::EVENT_HEAT_BEAT;
}

} // namespace

SendItem::Ptr SendQueue::append(const SendItem::Ptr& item)
{
    const std::lock_guard guard(lock);
    SendItem::Ptr lost;
    if (normal.size() >= maxNormal)
    {
        const auto last =
            isHeartbeat(item) ? std::find_if_not(normal.rbegin(), normal.rend(), isHeartbeat) : normal.rend();
        if (last == normal.rend())
            return item;
        lost = *last;
        normal.erase(std::next(last).base());
    }
    normal.push_back(item);
    return lost;
}

SendItem::Ptr SendQueue::appendUrgent(const SendItem::Ptr& item)
{
    const std::lock_guard guard(lock);
    if (item->subject != EngineApi::noSubject)
        std::erase_if(urgent, [&item](const auto& waiting) { return waiting->subject == item->subject; });
    SendItem::Ptr lost;
    if (urgent.size() >= maxUrgent)
    {
        lost = urgent.back();
        urgent.pop_back();
    }
    urgent.push_front(item);
    return lost;
}

SendItem::Ptr SendQueue::takeNext()
{
    const std::lock_guard guard(lock);
    const bool normalIsDue = !normal.empty() && (urgent.empty() || overtaken >= urgentInARow);
    overtaken = normalIsDue || normal.empty() ? 0 : overtaken + 1;
    auto& queue = normalIsDue ? normal : urgent;
    if (queue.empty())
        return nullptr;
    auto item = queue.front();
    queue.pop_front();
    return item;
}

void SendQueue::clear()
{
    const std::lock_guard guard(lock);
    normal.clear();
    urgent.clear();
}

std::size_t SendQueue::size() const
{
    const std::lock_guard guard(lock);
    return normal.size() + urgent.size();
}

} // namespace EngineLayer
