#include "Allocations.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

/** Counters of their own cache lines, shared out among the threads, so that counting slows nobody down. */
struct alignas(64) Counter
{
    std::atomic<std::uint64_t> count { 0 };
};
std::array<Counter, 16> counters;
std::atomic<std::size_t> threads { 0 };

void* counted(std::size_t size)
{
    thread_local Counter& mine = counters[threads.fetch_add(1) % counters.size()];
    mine.count.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size > 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

} // namespace

std::uint64_t Benchmarks::allocationCount()
{
    std::uint64_t sum = 0;
    for (const auto& counter : counters)
        sum += counter.count.load(std::memory_order_relaxed);
    return sum;
}

void* operator new(std::size_t size)
{
    return counted(size);
}

void* operator new[](std::size_t size)
{
    return counted(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}
