#pragma once

#include "diagnostics/Wire.h"
#include "platform/base/Pubhead.h"
#include "platform/base/Time.h"

#include <juce_core/juce_core.h>
#include <optional>
#include <string>

/** Names and times in answers. */
namespace Diagnostics
{

/** "none" for NUM_OF_PAGES. */
inline std::string pageText(int page)
{
    return page == Pubhead::NUM_OF_PAGES ? "none" : Pubhead::pageName(page);
}

/** Since then, in milliseconds. */
inline std::int64_t msSince(Platform::Clock::time_point time)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Platform::Clock::now() - time).count();
}

inline std::int64_t usBetween(Platform::Clock::time_point from, Platform::Clock::time_point to)
{
    return std::chrono::duration_cast<std::chrono::microseconds>(to - from).count();
}

inline std::string text(const juce::String& value)
{
    return value.toStdString();
}

/** "340 ms", "2.4 s", "3 min", "5 h": as exact as a person needs it. */
std::string durationText(std::int64_t milliseconds);

} // namespace Diagnostics
