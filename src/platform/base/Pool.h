#pragma once

#include <algorithm>
#include <atomic>
#include <iterator>
#include <juce_core/juce_core.h>
#include <limits>
#include <mutex>
#include <vector>

namespace Platform
{

/** How many objects a pool has. */
struct PoolSize
{
    const char* name;
    std::size_t spare;
    std::size_t capacity; ///< what comes back beyond it is not kept
};

/** A pool among all of the process. */
class ListedPool
{
public:
    /**
        What each has to spare, in the order in which they were made. When nothing is under way none has fewer than the
        time before, or some have not come back. Any thread.
    */
    static std::vector<PoolSize> all();

    std::size_t size() const { return held.load(std::memory_order_relaxed); }

protected:
    /** The name is a literal. */
    ListedPool(const char* poolName, std::size_t mostSpare);
    ~ListedPool();
    ListedPool(const ListedPool&) = delete;
    ListedPool& operator=(const ListedPool&) = delete;

    const std::size_t capacity;
    std::atomic<std::size_t> held { 0 }; ///< for those who look without the lock

private:
    const char* const name;
};

/** Spare objects of one kind, for use again; the one that came back last is the warmest in the cache. Any thread. */
template <typename T>
class Pool : public ListedPool
{
public:
    using Ptr = juce::ReferenceCountedObjectPtr<T>;

    /** What comes back to a full pool is not kept. */
    explicit Pool(const char* poolName, std::size_t capacityToUse = std::numeric_limits<std::size_t>::max())
        : ListedPool(poolName, capacityToUse)
    {
    }

    /** The object that came back last, as it was left; null when there is none. */
    Ptr take()
    {
        const std::lock_guard guard(lock);
        if (spare.empty())
            return nullptr;
        auto object = std::move(spare.back());
        spare.pop_back();
        count();
        return object;
    }
    /** Keeps the object if the caller's is the last reference; what is in the pool already has another. */
    void give(T& object)
    {
        const std::lock_guard guard(lock);
        if (object.getReferenceCount() > 1 || spare.size() >= capacity)
            return;
        spare.emplace_back(&object);
        count();
    }

    /** Up to `most` objects at once, from the end of one stack to the other. What has no room stays where it is. */
    void take(std::vector<Ptr>& into, std::size_t most)
    {
        const std::lock_guard guard(lock);
        moveLast(spare, into, most);
    }
    void give(std::vector<Ptr>& from, std::size_t most)
    {
        const std::lock_guard guard(lock);
        moveLast(from, spare, std::min(most, capacity - spare.size()));
    }

    void clear()
    {
        const std::lock_guard guard(lock);
        spare.clear();
        count();
    }

private:
    std::mutex lock;
    std::vector<Ptr> spare;

    void count() { held.store(spare.size(), std::memory_order_relaxed); }

    void moveLast(std::vector<Ptr>& from, std::vector<Ptr>& to, std::size_t most)
    {
        const auto first = from.end() - static_cast<std::ptrdiff_t>(std::min(most, from.size()));
        to.insert(to.end(), std::make_move_iterator(first), std::make_move_iterator(from.end()));
        from.erase(first, from.end());
        count();
    }
};

} // namespace Platform
