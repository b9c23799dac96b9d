#pragma once

#include <juce_core/juce_core.h>

/**
    The settings store, shared in the sense that it outlives the process: integers and texts by setup index. Any
    thread. A setting that the store does not know, or that has the other type or a damaged value, reads as 0 or "".
    The store is opened by the first use. A damaged store is set aside as `settings.damaged` (logged) and a new one
    begun.
*/
namespace Platform
{

juce::int32 VX_GetSetupValueInt(int index);
juce::String VX_GetSetupValueString(int index);
/** Durable when it returns. False when the store cannot be written, or the text is longer than 64 KiB (logged). */
bool VX_SetSetupValueInt(int index, juce::int32 value);
bool VX_SetSetupValueString(int index, const juce::String& value);
bool VX_IsSetupValueString(int index);

/** Opens the store; an empty one is filled with the factory values. False when neither can be had (logged). */
bool VX_LoadDataFromSystemFile();
/**
    Puts the factory values back: the open store holds them from now on and stays valid until the process ends, and the
    settings folder is removed, so that later writes are lost and the next start begins with the factory values. False,
    with nothing changed, when the factory values cannot be read (logged).
*/
bool VX_LoadDataFromFactoryFile();
/** Closes the store; a later use opens it again. */
void VX_ReleaseSetupInfo();

} // namespace Platform
