#pragma once

#include <juce_core/juce_core.h>

namespace Kernel
{

/**
    The catalogue of system-wide messages; smaller ids are private to the component that receives them. "To" names the
    receiver by its number in ComponentIds.h; a page means its handler.
*/
enum MessageId : juce::int32 {
    MSG_SYS_INIT = 0x2000000,              ///< a component to itself inside `initialize`, dispatched directly
    MSG_SYS_START = 0x2000001,             ///< engine to every component, once the threads run
    MSG_SYS_READY = 0x2000002,             ///< state manager to every component: booting or anti-theft is over
    MSG_APP_PAGE_NOTIFY = 0x2000004,       ///< to a page: tell the program (power-off)
    MSG_POWER_OFF_CONFIRM = 0x2000005,     ///< to 17, 21: a program is ready for power-off; arg1 page
    MSG_SYS_ANTITHEFT_EXIT = 0x2000006,    ///< to 17: arg1 1 unlocked, 2 lock
    MSG_STANDBY = 0x2000007,               ///< to 21: arg1 0 enter standby, 1 leave it
    MSG_SYS_TIMER = 0x2000008,             ///< to a timer's owner: arg1 timer id, arg2 number of its start
    MSG_MENU_VALUE = 0x2000009,            ///< to mbMainMenu: two 16-bit values for the menu program
    MSG_POWER_OFF = 0x200000a,             ///< to 17: go to kPowerOff
    MSG_HOST_EVENT = 0x200000d,            ///< a frame from the MCU: arg1 command, arg2 data length, payload data bytes
    MSG_APP_KEY = 0x200000e,               ///< to a page: arg1 key or command, arg2 value
    MSG_APP_VALUE = 0x200000f,             ///< to a page: arg1 value
    MSG_WIRED_REMOTE_KEY = 0x2000010,      ///< to 23: arg1 1, arg2 key
    MSG_SCHEDULE_REQUEST = 0x2000011,      ///< to 17: arg1 page, arg2 action | auto-switch << 16
    MSG_SCHEDULE_RESULT = 0x2000012,       ///< to a page: arg1 status 1 to 4
    MSG_APP_SWITCH = 0x2000013,            ///< to a page: arg1 switch type, payload the order
    MSG_SWITCH_REPORT = 0x2000014,         ///< to 17: arg1 page, arg2 1 = succeeded
    MSG_APP_CONNECTED = 0x2000015,         ///< to a page: its program has registered
    MSG_APP_DISCONNECTED = 0x2000016,      ///< to a page: its program is gone
    MSG_APP_REMOTE = 0x2000017,            ///< to a page: payload the program's message
    MSG_FACTORY_RESET = 0x2000018,         ///< to 3, 10, 21, 24: settings go back to the factory's
    MSG_FULL_RESET = 0x2000019,            ///< to 24: the same for everything
    MSG_VOLUME_SHOW = 0x200001c,           ///< to the volume bar: arg1 zone (3 = mute), arg2 value
    MSG_NORMAL_SOURCE = 0x200001d,         ///< to mbMainMenu, 3, 21: arg1 the new normal source page
    MSG_LAST_SOURCE_PAGE = 0x200001e,      ///< to mbMainMenu: arg1 the new last source page
    MSG_MENU_UNUSED = 0x200001f,           ///< to mbMainMenu: has no effect
    MSG_DEVICE_WINDOW_EVENT = 0x2000021,   ///< to 21: window message of the device driver, its two parameters
    MSG_EQ_WINDOW_SHOW = 0x2000022,        ///< to 2: the equaliser window was asked for
    MSG_EQ_WINDOW_HIDE = 0x2000023,        ///< to 2: the equaliser window was left
    MSG_MENU_COMMAND = 0x2000025,          ///< to 1: menu command, two parameters
    MSG_BT_DEVICE_LIST = 0x2000027,        ///< to 3: open the phone page at its device list
    MSG_BT_SWITCH_OFF = 0x2000028,         ///< to 3
    MSG_BT_SWITCH_ON = 0x2000029,          ///< to 3: when setting 7 allows it
    MSG_TELEMATICS_OPEN = 0x200002a,       ///< to mbTelematics
    MSG_TELEMATICS_CLOSE = 0x200002b,      ///< to mbTelematics
    MSG_MENU_PAGE = 0x200002c,             ///< to mbMainMenu: arg1 the menu page to show
    MSG_MENU_EVENT = 0x200002d,            ///< to mbMainMenu: has no effect
    MSG_BT_CALL_ACCEPT = 0x2000036,        ///< to mbBTPhone: control 11
    MSG_BT_CALL_END = 0x2000037,           ///< to mbBTPhone: control 12
    MSG_BT_UNUSED = 0x200003d,             ///< to mbBTPhone: has no effect
    MSG_RADIO_REGION = 0x2000042,          ///< to 5: arg1 area code
    MSG_FAVOURITES_SELECT = 0x2000043,     ///< to the favourites bar: arg1 index, arg2 1 = the camera is in front
    MSG_FAVOURITES_HIDE = 0x2000044,       ///< to the favourites bar
    MSG_FAVOURITES_EMPTY_SLOT = 0x2000045, ///< to the favourites bar: notice of an empty slot
    MSG_VOLTMETER_SHOW = 0x2000046,        ///< to the favourites bar: arg1 0 hides the voltage
    MSG_VOLTMETER_VALUE = 0x2000047,       ///< to the favourites bar: arg1 raw voltage
    MSG_LOW_BATTERY_ALERT = 0x2000049,     ///< to the low-battery bar: arg1 1 = show
    MSG_NAVICO_DEVICE_STATE = 0x200004a,   ///< to 30: zone and volume, or 3 and mute
    MSG_NAVICO_REPORT = 0x200004b,         ///< to 30: report the unit's state to the network
    MSG_NAVICO_SETUP_REPORT = 0x200004c,   ///< to 30: report the settings to the network
    MSG_MENU_REMOTE_EVENT = 0x200004d,     ///< to 1: event of a program for the menu, two parameters
    MSG_KEY_RETURN_NEXT = 0x200004e,       ///< to 23: arg1 1 = take the next key as a return
    MSG_AUTOTEST_COMMAND = 0x200004f,      ///< to 3, 5, 7: payload the request bytes
    MSG_HEARTBEAT_STOP = 0x2000050         ///< to 21: programs do not answer, stop the heartbeat to the MCU
};

} // namespace Kernel
