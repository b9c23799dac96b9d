#pragma once

#include "bench/simulation/Run.h"

#include <optional>

namespace Simulation
{

/** A plan that breaks a promise, with the seed under which it does. */
struct Short
{
    Plan plan;
    std::uint64_t seed;
    Result result;
};

/**
    The shortest plan that was found to break the same promise: deeds and pauses are left out as long as it still does,
    under the same seed or one of the next. None when not even the whole one breaks it again.
*/
std::optional<Short> shrink(const World& world, std::uint64_t seed, const Result& broken);

} // namespace Simulation
