#pragma once

#include <juce_core/juce_core.h>

/**
    The settings store, shared in the sense that it outlives the process: integers and texts by setup index. Any thread.
    A setting that the store does not know reads as 0 or "".
*/
namespace Platform
{

juce::int32 VX_GetSetupValueInt(int index);
juce::String VX_GetSetupValueString(int index);
/** False when the store cannot be written (logged). */
bool VX_SetSetupValueInt(int index, juce::int32 value);
bool VX_SetSetupValueString(int index, const juce::String& value);
bool VX_IsSetupValueString(int index);

/** Opens the store; an empty one is filled with the factory values. False when neither can be had (logged). */
bool VX_LoadDataFromSystemFile();
/** Puts the factory values back: removes the settings folder; the open store stays valid until the process ends. */
bool VX_LoadDataFromFactoryFile();
void VX_ReleaseSetupInfo();

} // namespace Platform
