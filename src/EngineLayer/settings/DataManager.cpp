#include "EngineLayer/settings/DataManager.h"

#include "EngineApi/Favourites.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"

namespace EngineLayer
{

namespace
{

/** Private message: arg1 index, arg2 origin. */
constexpr juce::int32 settingChanged = 1;

/** Who hears of a reset. Nothing answers at the second address on this unit. */
constexpr Kernel::ComponentId resetReceivers[] { Kernel::bluetoothApplicationId, 8 };

} // namespace

juce::int32 DataManager::getInt(int index) const
{
    return Platform::VX_GetSetupValueInt(index);
}

juce::String DataManager::getString(int index) const
{
    return Platform::VX_GetSetupValueString(index);
}

bool DataManager::isKnown(int index) const
{
    return Platform::VX_IsSetupValueKnown(index);
}

void DataManager::setInt(int index, juce::int32 value, bool notify, int origin)
{
    if (getInt(index) != value && Platform::VX_SetSetupValueInt(index, value) && notify)
        postChange(index, origin);
}

void DataManager::setString(int index, const juce::String& value, bool notify, int origin)
{
    if (getString(index) != value && Platform::VX_SetSetupValueString(index, value) && notify)
        postChange(index, origin);
}

Platform::Bundle::Ptr DataManager::formatSetting(int index) const
{
    if (Platform::VX_IsSetupValueString(index))
        return Platform::RemoteObjFormat::formatString(getString(index));
    return Platform::RemoteObjFormat::formatInt(getInt(index));
}

bool DataManager::loadSystemFile()
{
    return Platform::VX_LoadDataFromSystemFile();
}

bool DataManager::loadFactoryFile()
{
    return Platform::VX_LoadDataFromFactoryFile();
}

void DataManager::onRelease()
{
    Platform::VX_ReleaseSetupInfo();
}

void DataManager::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload&)
{
    switch (id)
    {
    case settingChanged:
        changes.remove(arg1, arg2);
        // Who hears of a change may rely on it over a loss of power.
        Platform::VX_WaitForSetupInfo();
        listeners.call(
            [&](auto& listener)
            {
                if (listener.acceptsKey(arg1, arg2))
                    listener.onSettingChanged(arg1, arg2);
            });
        break;
    case Kernel::MSG_FULL_RESET:
        fullReset = true;
        reset();
        break;
    case Kernel::MSG_FACTORY_RESET:
        reset();
        break;
    default:
        break;
    }
}

void DataManager::postChange(int index, int origin)
{
    if (changes.add(index, origin))
        Kernel::postSystemMessage(Kernel::dataManagerId, settingChanged, index, origin);
}

void DataManager::reset()
{
    resetInProgress = true;
    loadFactoryFile();
    for (const auto receiver : resetReceivers)
        Kernel::postSystemMessage(receiver, Kernel::MSG_FACTORY_RESET, 0, 0);
}

} // namespace EngineLayer

namespace EngineApi
{

namespace
{

EngineLayer::DataManager& manager()
{
    return *EngineLayer::DataManager::getInstance();
}

} // namespace

juce::int32 getSettingInt(int index)
{
    return manager().getInt(index);
}

juce::String getSettingString(int index)
{
    return manager().getString(index);
}

bool isSettingKnown(int index)
{
    return manager().isKnown(index);
}

void setSettingInt(int index, juce::int32 value, bool notify, int origin)
{
    manager().setInt(index, value, notify, origin);
}

void setSettingString(int index, const juce::String& value, bool notify, int origin)
{
    manager().setString(index, value, notify, origin);
}

Platform::Bundle::Ptr formatSetting(int index)
{
    return manager().formatSetting(index);
}

void addSettingListener(SettingDataChangeListener* listener)
{
    manager().listeners.add(listener);
}

void removeSettingListener(SettingDataChangeListener* listener)
{
    manager().listeners.remove(listener);
}

int getFavouritePage(int favourite)
{
    return getSettingInt(Platform::favouritePageSetting(favourite));
}

} // namespace EngineApi
