#pragma once

#include <juce_core/juce_core.h>

/**
    The system-information table: 128 signed 32-bit values in shared memory, each written atomically. Any thread. The
    object is `/headunit-sysinfo`, or what the environment variable HEADUNIT_SYSINFO names; it is mapped on the first
    use and stays for the other processes when this one ends. One of another user, or open to others for writing, is
    replaced (logged). Where it cannot be opened (logged), the values stay in this process. If somebody cuts it short,
    the values that this process has set are put back at the next use (logged once).
*/
namespace Platform
{

inline constexpr int sysInfoSize = 128;

/** Ignored (logged) outside 0..127. */
void VX_SetSysInfo(int index, juce::int32 value);
/** 0 outside 0..127. */
juce::int32 VX_GetSysInfo(int index);
/** Unmaps the table; a later use maps it again. */
void VX_ReleaseSysInfo();

} // namespace Platform
