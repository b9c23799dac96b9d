#include "kernel/SystemMessage.h"

#include <mutex>
#include <vector>

namespace Kernel
{

namespace
{

struct Pool
{
    std::mutex lock;
    std::vector<SystemMessage::Ptr> spare;
};

/** Never destroyed: messages are recycled until the last thread is gone. */
Pool& pool()
{
    static Pool& instance = *new Pool;
    return instance;
}

} // namespace

SystemMessage::Ptr MessagePool::obtain()
{
    {
        const std::lock_guard guard(pool().lock);
        auto& spare = pool().spare;
        if (!spare.empty())
        {
            auto message = std::move(spare.back());
            spare.pop_back();
            message->inPool = false;
            return message;
        }
    }
    return new SystemMessage();
}

void MessagePool::recycle(SystemMessage::Ptr& message)
{
    if (message == nullptr || message->getReferenceCount() >= 2)
        return;
    // Released only after the lock is given back: the payload's destructor may do anything.
    Payload dropped;
    const std::lock_guard guard(pool().lock);
    if (message->inPool || pool().spare.size() >= capacity)
        return;
    message->id = message->arg1 = message->arg2 = message->handlerIndex = -1;
    message->receiver = 0;
    dropped = std::move(message->payload);
    message->inPool = true;
    pool().spare.push_back(std::move(message));
}

int MessagePool::size()
{
    const std::lock_guard guard(pool().lock);
    return static_cast<int>(pool().spare.size());
}

void MessagePool::clear()
{
    std::vector<SystemMessage::Ptr> dropped;
    const std::lock_guard guard(pool().lock);
    dropped.swap(pool().spare);
}

} // namespace Kernel
