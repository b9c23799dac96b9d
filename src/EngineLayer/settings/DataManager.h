#pragma once

#include "EngineApi/Settings.h"
#include "EngineLayer/settings/WaitingChanges.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "platform/base/ListenerList.h"
#include "platform/base/Shared.h"

namespace EngineLayer
{

/**
    The engine's access to the settings store: reads and writes it, announces changes to the listeners later, on its own
    thread, and carries out the factory reset. Any thread, unless said otherwise.
*/
class DataManager : public Kernel::ComponentTask, public Kernel::Singleton<DataManager>
{
public:
    juce::int32 getInt(int index) const;
    juce::String getString(int index) const;
    bool isKnown(int index) const;
    /** Nothing happens when the setting has the value already. A refused value is not announced. */
    void setInt(int index, juce::int32 value, bool notify, int origin);
    void setString(int index, const juce::String& value, bool notify, int origin);
    Platform::Bundle::Ptr formatSetting(int index) const;

    /** Called on the data manager's thread. */
    Platform::ListenerList<EngineApi::SettingDataChangeListener> listeners;

    /** False when the store or its factory values cannot be read; the store has logged why. */
    bool loadSystemFile();
    bool loadFactoryFile();

    /** A reset was asked for in the life of this process; a full one also sets the first. */
    bool isResetInProgress() const { return resetInProgress; }
    bool isFullReset() const { return fullReset; }

    void onRelease() override;
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;

private:
    friend class Kernel::Singleton<DataManager>;
    DataManager() = default;

    /**
        A value that changes faster than the listeners follow is announced less often, but always after its last change.
    */
    void postChange(int index, int origin);
    void reset();

    WaitingChanges changes { "listeners" };
    Platform::Shared<bool> fullReset { false };
    Platform::Shared<bool> resetInProgress { false };
};

} // namespace EngineLayer
