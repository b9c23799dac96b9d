#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

namespace Platform
{

/**
    How often something was dropped, refused or lost since the process began. Every place where that can happen has one,
    so that none is silent; all of them can be asked for. It lives as long as its place does: the count of a place that is
    made again goes on. Any thread.
*/
class Counter
{
public:
    struct Reading
    {
        const char* name;
        const char* meaning;
        std::uint64_t count;
    };

    /** Both are literals: `link.frames-refused`, and what it counts, in words. Counters of one name are one. */
    Counter(const char* name, const char* meaning);

    void operator++() { add(1); }
    Counter& operator+=(std::uint64_t more)
    {
        add(more);
        return *this;
    }
    std::uint64_t get() const { return shared.load(std::memory_order_relaxed); }

    /** By their names. Those of places that nothing has used yet may be missing. */
    static std::vector<Reading> all();

private:
    void add(std::uint64_t more) { shared.fetch_add(more, std::memory_order_relaxed); }

    std::atomic<std::uint64_t>& shared;
};

} // namespace Platform
