#pragma once

#include <cstdint>

namespace Benchmarks
{

/** Allocations of this process through operator new since its start. Any thread. */
std::uint64_t allocationCount();

} // namespace Benchmarks
