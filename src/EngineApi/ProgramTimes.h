#pragma once

/** How long the engine waits for a source program, and a program for the engine, in milliseconds. */
namespace EngineApi
{

#define PROGRAM_TIME(name, milliseconds, meaning) inline constexpr int name = milliseconds;
#include "EngineApi/ProgramTimes.def"
#undef PROGRAM_TIME

/** So many heartbeats in a row may lack an answer; with one more the unit tells the microcontroller no longer that it is well. */
inline constexpr int toleratedFailedHeartbeats = 5;

} // namespace EngineApi
