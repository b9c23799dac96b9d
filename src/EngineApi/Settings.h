#pragma once

#include "platform/base/CommandLine.h"
#include "platform/base/Pubhead.h"

/** Access to the settings, by setup index, from everywhere in the engine. Any thread. */
namespace EngineApi
{

class SettingDataChangeListener
{
public:
    virtual ~SettingDataChangeListener() = default;
    /** On the data manager's thread. `origin` is the application type that made the change, AppUnknown the engine. */
    virtual void onSettingChanged(int index, int origin) = 0;
    virtual bool acceptsKey(int index, int origin) = 0; ///< whether onSettingChanged is to be called; same thread
};

juce::int32 getSettingInt(int index);
juce::String getSettingString(int index);
/** Whether the unit has such a setting: the store or the factory values name it. */
bool isSettingKnown(int index);
/** Nothing happens when the setting has the value already; with `notify` the listeners are told later. */
void setSettingInt(int index, juce::int32 value, bool notify, int origin);
void setSettingString(int index, const juce::String& value, bool notify, int origin);
/** The setting as a payload of the message channel, integer or text as the store has it. */
Platform::Bundle::Ptr formatSetting(int index);
void addSettingListener(SettingDataChangeListener* listener);
/** No call to the listener runs after it returns, unless this is called from one. */
void removeSettingListener(SettingDataChangeListener* listener);

} // namespace EngineApi
