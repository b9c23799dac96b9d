#pragma once

#include <algorithm>
#include <benchmark/benchmark.h>
#include <vector>

/** Adds median and 99th percentile of the samples to a benchmark's line. */
inline void reportLatencies(benchmark::State& state, std::vector<double> microseconds)
{
    if (microseconds.empty())
        return;
    std::sort(microseconds.begin(), microseconds.end());
    const auto at = [&](double share)
    { return microseconds[static_cast<std::size_t>(share * static_cast<double>(microseconds.size() - 1))]; };
    constexpr double median = 0.5;
    constexpr double p99 = 0.99;
    state.counters["median_us"] = at(median);
    state.counters["p99_us"] = at(p99);
}
