#pragma once

#include <juce_core/juce_core.h>

/**
    The settings store, shared in the sense that it outlives the process: integers and texts by setup index. Any thread.
    A setting that the store does not have reads as its factory value; one that has none either, has the other type or a
    damaged value reads as 0 or "". The store is opened by the first use. A damaged store is set aside as
    `settings.damaged` (logged) and a new one begun. Where it cannot be had or written (logged), what is set is kept in
    this process and tried again every second.
*/
namespace Platform
{

juce::int32 VX_GetSetupValueInt(int index);
juce::String VX_GetSetupValueString(int index);
/**
    Read as set from now on, and stored a moment later by a thread of the store: nobody waits here for the disk or for
    another process. False when the text is longer than 64 KiB, or this process only reads (logged).
*/
bool VX_SetSetupValueInt(int index, juce::int32 value);
bool VX_SetSetupValueString(int index, const juce::String& value);
bool VX_IsSetupValueString(int index);
/** Whether the store or the factory values have the setting. */
bool VX_IsSetupValueKnown(int index);
/**
    Waits until what was set before is durable, 150 ms at most from where the store began to be late; false when it is
    not.
*/
bool VX_WaitForSetupInfo();

/** Opens the store; an empty one is filled with the factory values. False when neither can be had (logged). */
bool VX_LoadDataFromSystemFile();
/**
    Puts the factory values back: the open store holds them from now on and stays valid until the process ends, and the
    settings folder is removed, so that later writes are lost and the next start begins with the factory values. False,
    with nothing changed, when the factory values cannot be read (logged).
*/
bool VX_LoadDataFromFactoryFile();
/** Stores what is not stored yet, waiting a second at most, and closes the store; a later use opens it again. */
void VX_ReleaseSetupInfo();

/** From now on this process only reads the settings, and needs no right to write them. Before the first use. */
void VX_ReadSetupInfoOnly();

} // namespace Platform
