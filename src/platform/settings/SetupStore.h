#pragma once

#include <juce_core/juce_core.h>

/**
    The settings store: integers and texts by setup index, which outlive the process. Any thread. A setting that the
    store does not have reads as its factory value; without one, or with the other type or a damaged value, it reads as
    0 or "". The first use opens the store. A damaged store is kept as `settings.damaged` (logged), and a new one
    begins. While the store cannot be opened or written (logged), values are kept in this process and tried again every
    second.
*/
namespace Platform
{

juce::int32 VX_GetSetupValueInt(int index);
juce::String VX_GetSetupValueString(int index);
/**
    The value counts from now on; a thread of the store writes it a moment later, so that no caller waits for the disk
    or another process. False when the text is longer than 64 KiB, or this process only reads (logged).
*/
bool VX_SetSetupValueInt(int index, juce::int32 value);
bool VX_SetSetupValueString(int index, const juce::String& value);
bool VX_IsSetupValueString(int index);
/** Whether the store or the factory values have the setting. */
bool VX_IsSetupValueKnown(int index);
/** Waits until what was set before is durable; false when the thread has been writing for 150 ms without success. */
bool VX_WaitForSetupInfo();

/** Opens the store; an empty one is filled with the factory values. False when neither can be read (logged). */
bool VX_LoadDataFromSystemFile();
/**
    Puts the factory values back. The open store has them from now on, until the process ends. The settings folder is
    removed, so later writes are lost, and the next start begins with the factory values. False, and nothing changes,
    when the factory values cannot be read (logged).
*/
bool VX_LoadDataFromFactoryFile();
/** Stores what is not stored yet, waiting a second at most, and closes the store; a later use opens it again. */
void VX_ReleaseSetupInfo();

/** From now on this process only reads the settings, and needs no right to write them. Before the first use. */
void VX_ReadSetupInfoOnly();

} // namespace Platform
