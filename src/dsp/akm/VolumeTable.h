#pragma once

#include "dsp/akm/FixedPoint.h"

#include <algorithm>
#include <array>

namespace Dsp
{

inline constexpr int numOfVolumeSteps = 51;
using VolumeTable = std::array<int, numOfVolumeSteps>;

/** Silence, then steps of 2 dB from -52 dB up to `coarseSteps`, then steps of 1 dB. */
constexpr VolumeTable makeVolumeTable(int coarseSteps)
{
    VolumeTable table { silence };
    for (int step = 1; step < numOfVolumeSteps; ++step)
        table[static_cast<std::size_t>(step)] =
            step <= coarseSteps ? -54 + 2 * step : -54 + 2 * coarseSteps + (step - coarseSteps);
    return table;
}

/** dB of each volume step: A up to +6 dB, B up to +4 dB. */
inline constexpr VolumeTable volumeTableA = makeVolumeTable(10);
inline constexpr VolumeTable volumeTableB = makeVolumeTable(8);
static_assert(volumeTableA[11] == -33 && volumeTableA[50] == 6 && volumeTableB[9] == -37 && volumeTableB[50] == 4);

/** A step outside the table takes its nearest end. */
constexpr int volumeLevel(const VolumeTable& table, int step)
{
    return table[static_cast<std::size_t>(std::clamp(step, 0, numOfVolumeSteps - 1))];
}

} // namespace Dsp
