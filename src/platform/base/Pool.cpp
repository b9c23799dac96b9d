#include "platform/base/Pool.h"

namespace Platform
{

namespace
{

struct List
{
    std::mutex lock;
    std::vector<const ListedPool*> pools;

    static List& get()
    {
        static auto& only = *new List; // some pools are never destroyed
        return only;
    }
};

} // namespace

ListedPool::ListedPool(const char* poolName, std::size_t mostSpare)
    : capacity(mostSpare)
    , name(poolName)
{
    auto& list = List::get();
    const std::lock_guard guard(list.lock);
    list.pools.push_back(this);
}

ListedPool::~ListedPool()
{
    auto& list = List::get();
    const std::lock_guard guard(list.lock);
    std::erase(list.pools, this);
}

std::vector<PoolSize> ListedPool::all()
{
    auto& list = List::get();
    const std::lock_guard guard(list.lock);
    std::vector<PoolSize> sizes;
    for (const auto* pool : list.pools)
        sizes.push_back({ pool->name, pool->size(), pool->capacity });
    return sizes;
}

} // namespace Platform
