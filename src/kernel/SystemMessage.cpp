#include "kernel/SystemMessage.h"

#include "platform/base/Pool.h"

namespace Kernel
{

namespace
{

using Messages = std::vector<SystemMessage::Ptr>;

/** Never destroyed: messages are recycled until the last thread is gone. */
Platform::Pool<SystemMessage>& sharedPool()
{
    static auto& only = *new Platform::Pool<SystemMessage>("messages", MessagePool::capacity);
    return only;
}

/**
    A few spare messages at hand for one thread. The threads of a busy link would otherwise pass the pool's lock from
    core to core for every message, which takes longer than everything else that is done to it.
*/
class LocalPool
{
public:
    ~LocalPool() { sharedPool().give(spare, spare.size()); }

    SystemMessage::Ptr take()
    {
        if (spare.empty() && sharedPool().size() > 0)
            sharedPool().take(spare, portion);
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
            sharedPool().give(spare, portion);
        if (spare.size() == 2 * portion)
            spare.pop_back();
    }

    std::size_t size() const { return spare.size() + sharedPool().size(); }

private:
    static constexpr std::size_t portion = 8;
    Messages spare;
};

thread_local LocalPool localPool;

} // namespace

SystemMessage::Ptr MessagePool::obtain()
{
    if (auto message = localPool.take(); message != nullptr)
        return message;
    return new SystemMessage();
}

void MessagePool::recycle(SystemMessage::Ptr& message)
{
    if (message == nullptr || message->getReferenceCount() >= 2 || localPool.size() >= capacity)
        return;
    message->id = message->arg1 = message->arg2 = message->handlerIndex = -1;
    message->receiver = 0;
    // Released when the message is away: the payload's destructor may do anything.
    const auto dropped = std::move(message->payload);
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
