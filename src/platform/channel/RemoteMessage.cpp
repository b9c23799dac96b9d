#include "platform/channel/RemoteMessage.h"

namespace Platform
{

namespace
{

/** A stack: the message that was given back last is the warmest in the cache. */
struct Pool
{
    static constexpr std::size_t capacity = 50;

    juce::CriticalSection lock;
    std::vector<RemoteMessage::Ptr> spare;

    static Pool& get()
    {
        static Pool pool;
        return pool;
    }
};

} // namespace

RemoteMessage::Ptr RemoteMessage::obtain()
{
    auto& pool = Pool::get();
    {
        const juce::ScopedLock guard(pool.lock);
        if (!pool.spare.empty())
        {
            auto message = std::move(pool.spare.back());
            pool.spare.pop_back();
            return message;
        }
    }
    return new RemoteMessage;
}

void RemoteMessage::recycle(Ptr message)
{
    if (message == nullptr || message->getReferenceCount() > 1)
        return;
    message->what = message->arg1 = message->arg2 = message->appType = 0;
    message->bundle = nullptr;
    auto& pool = Pool::get();
    const juce::ScopedLock guard(pool.lock);
    if (pool.spare.size() < Pool::capacity)
        pool.spare.push_back(std::move(message));
}

} // namespace Platform
