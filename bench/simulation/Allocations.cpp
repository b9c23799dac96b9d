#include "bench/simulation/Allocations.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

namespace Simulation
{

namespace
{

int benchParts = 1;
Allocations engine;

} // namespace

Allocations engineAllocations()
{
    return engine;
}

BenchPart::BenchPart()
{
    ++benchParts;
}

BenchPart::~BenchPart()
{
    --benchParts;
}

bool isBenchPart()
{
    return benchParts > 0;
}

int exchangeBenchParts(int depth)
{
    return std::exchange(benchParts, depth);
}

} // namespace Simulation

// The language's own, in their forms that the others call. The address sanitizer brings all of them, and looks after the
// memory better than a count.
#if !defined(__SANITIZE_ADDRESS__)

namespace Simulation
{

namespace
{

/** In front of each block, and as long as its alignment asks for. */
struct Header
{
    std::size_t size;
    bool isEngine;
};
constexpr std::size_t leastHeader = std::max(sizeof(Header), alignof(std::max_align_t));

void* allocate(std::size_t size, std::size_t alignment)
{
    const auto front = std::max(leastHeader, alignment);
    const auto all = (front + size + alignment - 1) / alignment * alignment;
    auto* block = static_cast<std::byte*>(std::aligned_alloc(alignment, all));
    if (block == nullptr)
        throw std::bad_alloc();
    auto* memory = block + front;
    const bool isEngine = benchParts == 0;
    new (memory - sizeof(Header)) Header { size, isEngine };
    if (isEngine)
    {
        engine.bytes += static_cast<std::int64_t>(size);
        ++engine.blocks;
    }
    return memory;
}

void release(void* memory, std::size_t alignment) noexcept
{
    if (memory == nullptr)
        return;
    const auto* header = static_cast<Header*>(memory) - 1;
    if (header->isEngine)
    {
        engine.bytes -= static_cast<std::int64_t>(header->size);
        --engine.blocks;
    }
    std::free(static_cast<std::byte*>(memory) - std::max(leastHeader, alignment));
}

constexpr std::size_t normally = alignof(std::max_align_t);

} // namespace

} // namespace Simulation

void* operator new(std::size_t size)
{
    return Simulation::allocate(size, Simulation::normally);
}

void* operator new(std::size_t size, std::align_val_t alignment)
{
    return Simulation::allocate(size, static_cast<std::size_t>(alignment));
}

void operator delete(void* memory) noexcept
{
    Simulation::release(memory, Simulation::normally);
}

void operator delete(void* memory, std::size_t) noexcept
{
    Simulation::release(memory, Simulation::normally);
}

void operator delete(void* memory, std::align_val_t alignment) noexcept
{
    Simulation::release(memory, static_cast<std::size_t>(alignment));
}

void operator delete(void* memory, std::size_t, std::align_val_t alignment) noexcept
{
    Simulation::release(memory, static_cast<std::size_t>(alignment));
}

#endif
