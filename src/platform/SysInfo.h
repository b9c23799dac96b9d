#pragma once

#include <juce_core/juce_core.h>

/** The system-information table: 128 signed 32-bit values in shared memory, each written atomically. Any thread. */
namespace Platform
{

inline constexpr int sysInfoSize = 128;

/** Ignored (logged) outside 0..127. */
void VX_SetSysInfo(int index, juce::int32 value);
/** 0 outside 0..127. */
juce::int32 VX_GetSysInfo(int index);
void VX_ReleaseSysInfo();

} // namespace Platform
