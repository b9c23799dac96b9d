#include "kernel/SystemMessage.h"

#include <atomic>
#include <iterator>
#include <mutex>
#include <vector>

namespace Kernel
{

namespace
{

using Messages = std::vector<SystemMessage::Ptr>;

void moveLast(Messages& from, Messages& to, std::size_t count)
{
    const auto first = from.end() - static_cast<std::ptrdiff_t>(std::min(count, from.size()));
    to.insert(to.end(), std::make_move_iterator(first), std::make_move_iterator(from.end()));
    from.erase(first, from.end());
}

/** Never destroyed: messages are recycled until the last thread is gone. */
class SharedPool
{
public:
    static SharedPool& instance()
    {
        static SharedPool& only = *new SharedPool;
        return only;
    }

    std::size_t size() const { return held.load(std::memory_order_relaxed); }

    void take(Messages& into, std::size_t count)
    {
        const std::lock_guard guard(lock);
        moveLast(spare, into, count);
        held.store(spare.size(), std::memory_order_relaxed);
    }

    /** What has no room stays where it is. */
    void give(Messages& from, std::size_t count)
    {
        const std::lock_guard guard(lock);
        moveLast(from, spare, std::min(count, MessagePool::capacity - spare.size()));
        held.store(spare.size(), std::memory_order_relaxed);
    }

private:
    std::mutex lock;
    Messages spare;
    std::atomic<std::size_t> held { 0 };
};

/**
    A few spare messages at hand for one thread. The threads of a busy link would otherwise pass the pool's lock from
    core to core for every message, which takes longer than everything else that is done to it.
*/
class LocalPool
{
public:
    ~LocalPool() { SharedPool::instance().give(spare, spare.size()); }

    SystemMessage::Ptr take()
    {
        if (spare.empty() && SharedPool::instance().size() > 0)
            SharedPool::instance().take(spare, portion);
        if (spare.empty())
            return nullptr;
        auto message = std::move(spare.back());
        spare.pop_back();
        return message;
    }

    void give(SystemMessage::Ptr&& message)
    {
        spare.push_back(std::move(message));
        if (spare.size() == 2 * portion)
            SharedPool::instance().give(spare, portion);
        if (spare.size() == 2 * portion)
            spare.pop_back();
    }

    std::size_t size() const { return spare.size() + SharedPool::instance().size(); }

private:
    static constexpr std::size_t portion = 8;
    Messages spare;
};

thread_local LocalPool localPool;

} // namespace

SystemMessage::Ptr MessagePool::obtain()
{
    auto message = localPool.take();
    if (message == nullptr)
        return new SystemMessage();
    message->inPool = false;
    return message;
}

void MessagePool::recycle(SystemMessage::Ptr& message)
{
    if (message == nullptr || message->getReferenceCount() >= 2 || message->inPool || localPool.size() >= capacity)
        return;
    message->id = message->arg1 = message->arg2 = message->handlerIndex = -1;
    message->receiver = 0;
    // Released when the message is away: the payload's destructor may do anything.
    const auto dropped = std::move(message->payload);
    message->inPool = true;
    localPool.give(std::move(message));
}

int MessagePool::size()
{
    return static_cast<int>(localPool.size());
}

void MessagePool::clear()
{
    while (localPool.take() != nullptr)
    {
    }
}

} // namespace Kernel
