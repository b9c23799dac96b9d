#include "kernel/Names.h"

#include "kernel/Actor.h"
#include "kernel/MessageIds.h"
#include "platform/base/Pubhead.h"

namespace Kernel
{

thread_local constinit Actor Actor::own;

juce::String Actor::name() const
{
    if (component == noComponent)
        return "the system";
    const auto name = componentName(component);
    return juce::isPositiveAndBelow(page, static_cast<int>(Pubhead::NUM_OF_PAGES))
               ? name + " (" + Pubhead::pageName(page) + ")"
               : name;
}

juce::String componentName(ComponentId id)
{
    switch (id)
    {
    case mainMenuApplicationId:
        return "MainMenuApplication";
    case setupApplicationId:
        return "SetupApplication";
    case bluetoothApplicationId:
        return "BluetoothApplication";
    case radioApplicationId:
        return "RadioApplication";
    case usbApplicationId:
        return "UsbApplication";
    case iPodApplicationId:
        return "iPodApplication";
    case siriusApplicationId:
        return "SiriusApplication";
    case auxInApplicationId:
        return "AuxInApplication";
    case generalApplicationId:
        return "GeneralApplication";
    case systemStateManagerId:
        return "SystemStateManager";
    case hostSessionManagerId:
        return "HostSessionManager";
    case remoteSessionManagerId:
        return "RemoteSessionManager";
    case deviceStatusManagerId:
        return "DeviceStatusManager";
    case keyManagerId:
        return "KeyManager";
    case dataManagerId:
        return "DataManager";
    case hostcommDevId:
        return "HostcommDev";
    case monitorSendThreadId:
        return "MonitorSendThread";
    case viewManagerId:
        return "ViewManager";
    case exeMonitorId:
        return "ExeMonitor";
    case navicoManagerId:
        return "NavicoManager";
    case wiredRemoteId:
        return "TLX70Dev";
    default:
        return "component " + juce::String(id);
    }
}

juce::String messageName(juce::int32 id)
{
    // The compiler misses the name of a new one.
    switch (static_cast<MessageId>(id))
    {
    case MSG_SYS_INIT:
        return "MSG_SYS_INIT";
    case MSG_SYS_START:
        return "MSG_SYS_START";
    case MSG_SYS_READY:
        return "MSG_SYS_READY";
    case MSG_APP_PAGE_NOTIFY:
        return "MSG_APP_PAGE_NOTIFY";
    case MSG_POWER_OFF_CONFIRM:
        return "MSG_POWER_OFF_CONFIRM";
    case MSG_SYS_ANTITHEFT_EXIT:
        return "MSG_SYS_ANTITHEFT_EXIT";
    case MSG_STANDBY:
        return "MSG_STANDBY";
    case MSG_SYS_TIMER:
        return "MSG_SYS_TIMER";
    case MSG_MENU_VALUE:
        return "MSG_MENU_VALUE";
    case MSG_POWER_OFF:
        return "MSG_POWER_OFF";
    case MSG_HOST_EVENT:
        return "MSG_HOST_EVENT";
    case MSG_APP_KEY:
        return "MSG_APP_KEY";
    case MSG_APP_VALUE:
        return "MSG_APP_VALUE";
    case MSG_WIRED_REMOTE_KEY:
        return "MSG_WIRED_REMOTE_KEY";
    case MSG_SCHEDULE_REQUEST:
        return "MSG_SCHEDULE_REQUEST";
    case MSG_SCHEDULE_RESULT:
        return "MSG_SCHEDULE_RESULT";
    case MSG_APP_SWITCH:
        return "MSG_APP_SWITCH";
    case MSG_SWITCH_REPORT:
        return "MSG_SWITCH_REPORT";
    case MSG_APP_CONNECTED:
        return "MSG_APP_CONNECTED";
    case MSG_APP_DISCONNECTED:
        return "MSG_APP_DISCONNECTED";
    case MSG_APP_REMOTE:
        return "MSG_APP_REMOTE";
    case MSG_FACTORY_RESET:
        return "MSG_FACTORY_RESET";
    case MSG_FULL_RESET:
        return "MSG_FULL_RESET";
    case MSG_VOLUME_SHOW:
        return "MSG_VOLUME_SHOW";
    case MSG_NORMAL_SOURCE:
        return "MSG_NORMAL_SOURCE";
    case MSG_LAST_SOURCE_PAGE:
        return "MSG_LAST_SOURCE_PAGE";
    case MSG_MENU_UNUSED:
        return "MSG_MENU_UNUSED";
    case MSG_DEVICE_WINDOW_EVENT:
        return "MSG_DEVICE_WINDOW_EVENT";
    case MSG_EQ_WINDOW_SHOW:
        return "MSG_EQ_WINDOW_SHOW";
    case MSG_EQ_WINDOW_HIDE:
        return "MSG_EQ_WINDOW_HIDE";
    case MSG_MENU_COMMAND:
        return "MSG_MENU_COMMAND";
    case MSG_BT_DEVICE_LIST:
        return "MSG_BT_DEVICE_LIST";
    case MSG_BT_SWITCH_OFF:
        return "MSG_BT_SWITCH_OFF";
    case MSG_BT_SWITCH_ON:
        return "MSG_BT_SWITCH_ON";
    case MSG_TELEMATICS_OPEN:
        return "MSG_TELEMATICS_OPEN";
    case MSG_TELEMATICS_CLOSE:
        return "MSG_TELEMATICS_CLOSE";
    case MSG_MENU_PAGE:
        return "MSG_MENU_PAGE";
    case MSG_MENU_EVENT:
        return "MSG_MENU_EVENT";
    case MSG_BT_CALL_ACCEPT:
        return "MSG_BT_CALL_ACCEPT";
    case MSG_BT_CALL_END:
        return "MSG_BT_CALL_END";
    case MSG_BT_UNUSED:
        return "MSG_BT_UNUSED";
    case MSG_RADIO_REGION:
        return "MSG_RADIO_REGION";
    case MSG_FAVOURITES_SELECT:
        return "MSG_FAVOURITES_SELECT";
    case MSG_FAVOURITES_HIDE:
        return "MSG_FAVOURITES_HIDE";
    case MSG_FAVOURITES_EMPTY_SLOT:
        return "MSG_FAVOURITES_EMPTY_SLOT";
    case MSG_VOLTMETER_SHOW:
        return "MSG_VOLTMETER_SHOW";
    case MSG_VOLTMETER_VALUE:
        return "MSG_VOLTMETER_VALUE";
    case MSG_LOW_BATTERY_ALERT:
        return "MSG_LOW_BATTERY_ALERT";
    case MSG_NAVICO_DEVICE_STATE:
        return "MSG_NAVICO_DEVICE_STATE";
    case MSG_NAVICO_REPORT:
        return "MSG_NAVICO_REPORT";
    case MSG_NAVICO_SETUP_REPORT:
        return "MSG_NAVICO_SETUP_REPORT";
    case MSG_MENU_REMOTE_EVENT:
        return "MSG_MENU_REMOTE_EVENT";
    case MSG_KEY_RETURN_NEXT:
        return "MSG_KEY_RETURN_NEXT";
    case MSG_AUTOTEST_COMMAND:
        return "MSG_AUTOTEST_COMMAND";
    case MSG_HEARTBEAT_STOP:
        return "MSG_HEARTBEAT_STOP";
    }
    return "message " + juce::String(id);
}

} // namespace Kernel
