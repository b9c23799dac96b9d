#pragma once

#include "EngineApi/ScheduleRecords.h"

/**
    Who gives way when `page`, the one that is being decided, wants what `other` has. A rule changes the one state of
    the two records that it is named after.
*/
namespace EngineLayer
{

/** Never shared: the values that mean no channel. */
bool shareAudioChannel(const EngineApi::ScheduleInfo& page, const EngineApi::ScheduleInfo& other);

void applyVideoRule(EngineApi::ScheduleInfo& page, EngineApi::ScheduleInfo& other);
void applyPlayRule(EngineApi::ScheduleInfo& page, EngineApi::ScheduleInfo& other);
void applyAudioRule(EngineApi::ScheduleInfo& page, EngineApi::ScheduleInfo& other);

} // namespace EngineLayer
