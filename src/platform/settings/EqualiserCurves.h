#pragma once

#include <array>

namespace Platform
{

inline constexpr int userBandCount = 7;
/** Gains in dB of the bands that a person sets. */
using EqualiserCurve = std::array<int, userBandCount>;

inline constexpr std::array<int, userBandCount> userBandFrequencies { 50, 125, 250, 500, 1000, 3000, 8000 }; ///< Hz

/** Of the preset setting: before and behind those with a curve of the unit. */
inline constexpr int toneControlsPreset = 0;
inline constexpr int userCurvePreset = 4;
inline constexpr std::array<EqualiserCurve, userCurvePreset - 1> presetCurves {
    { { 4, -4, 0, 4, 0, 2, 2 }, { 0, -2, 4, 4, 2, 0, 2 }, { -2, -2, 2, 1, 2, 6, 0 } }
};

/** The bands of the tone controls. */
inline constexpr std::size_t bassBand = 1;
inline constexpr std::size_t middleBand = 3;
inline constexpr std::size_t trebleBand = 5;

inline constexpr int flatGain = 6; ///< the setting of a gain of 0 dB

} // namespace Platform
