#pragma once

#include "EngineApi/ScheduleRecords.h"

/**
    Who gives way when `page`, the one that is being decided, wants what `other` has. A rule changes the one state of
   the two records that it is named after.
*/
namespace EngineLayer
{

/** Never shared: the values that mean no channel. */
bool shareAudioChannel(const ScheduleInfo& page, const ScheduleInfo& other);

void applyVideoRule(ScheduleInfo& page, ScheduleInfo& other);
void applyPlayRule(ScheduleInfo& page, ScheduleInfo& other);
void applyAudioRule(ScheduleInfo& page, ScheduleInfo& other);

} // namespace EngineLayer
