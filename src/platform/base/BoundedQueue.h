#pragma once

#include "platform/base/Counter.h"

#include <cstdint>
#include <deque>
#include <utility>

namespace Platform
{

/** A queue that keeps the newest: when it is full, the oldest goes and is counted. Its owner locks it. */
template <typename Item, std::size_t capacity>
class BoundedQueue
{
public:
    /** True when something begins to be lost: worth a line in the log, once until the queue has been empty. */
    bool push(Item item)
    {
        items.push_back(std::move(item));
        if (items.size() <= capacity)
            return false;
        items.pop_front();
        ++dropped;
        if (lossCounter != nullptr)
            ++*lossCounter;
        return !std::exchange(overflowing, true);
    }

    /** What is lost is counted there, too. */
    void countLossesIn(Counter& counter) { lossCounter = &counter; }

    bool isEmpty() const { return items.empty(); }
    std::size_t getSize() const { return items.size(); }
    std::uint64_t getDropped() const { return dropped; }
    Item& front() { return items.front(); }

    void pop()
    {
        items.pop_front();
        overflowing = overflowing && !items.empty();
    }
    template <typename Condition>
    void eraseIf(Condition&& condition)
    {
        std::erase_if(items, condition);
        overflowing = overflowing && !items.empty();
    }
    void clear()
    {
        items.clear();
        overflowing = false;
    }

private:
    std::deque<Item> items;
    std::uint64_t dropped = 0;
    Counter* lossCounter = nullptr;
    bool overflowing = false;
};

} // namespace Platform
