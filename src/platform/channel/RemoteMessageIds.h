#pragma once

#include <juce_core/juce_core.h>

namespace Platform
{

/** Messages between the engine and the source programs. -> to a program, <- from it. */
enum RemoteMessageId : juce::int32 {
    RMSG_APP_EVENT = 1125,           ///< <- arg1 sub-code, arg2 value
    RMSG_SETUP_WINDOW_EVENT = 1126,  ///< <- window message of the setup program
    RMSG_IPOD_DEVICE = 1127,         ///< <- iPod device events
    RMSG_MENU_COMMAND_WINDOW = 1133, ///< <- window message: menu command
    RMSG_RADIO_EVENT = 1134,         ///< <- favourites count, favourite playback, sensitivity test
    RMSG_SXM_EVENT = 1136,           ///< <- tuner state, favourites
    RMSG_IGNORED = 1137,             ///< <- ignored
    RMSG_ANTITHEFT_EVENT = 1139,     ///< <- unlock results
    RMSG_MAINMENU_RELAY = 1140,      ///< <- forwarded to the main menu program
    RMSG_BT_STATE = 1141,            ///< <- module, link and profile states
    RMSG_GENERAL_UNUSED = 1142,      ///< <- no effect
    RMSG_IPOD_UNUSED = 1152,         ///< <- no effect
    RMSG_WIRED_REMOTE_TEXT = 1153,   ///< <- text for the wired remote's display
    RMSG_MAINMENU_EVENT = 1154,      ///< <- event for the main menu application
    RMSG_MAINMENU_NOTIFY = 1174,     ///< -> arg1 sub-code 1, 2, 3, 4 or 8
    RMSG_FAVOURITE = 1175,           ///< -> arg1 1 play, 0 store; arg2 favourite
    RMSG_IPOD_CONTROL = 1176,        ///< -> arg1 sub-code
    RMSG_BT_CONTROL = 1177,          ///< -> arg1 sub-code
    RMSG_USB_CONTROL = 1178,         ///< -> arg1 sub-code, arg2 a byte
    RMSG_SXM_FAVOURITE = 1180,       ///< -> as RMSG_FAVOURITE
    RMSG_SETTING_NOTIFY = 1190,      ///< -> arg1 sub-code: 2 = a setting's value
    RMSG_FACTORY_RESET = 1194,       ///< -> arg1 the receiver's application type
    RMSG_KEY = 1195,                 ///< -> arg1 key or command code, arg2 value
    RMSG_SOURCE_STOP = 1199,         ///< -> leave the source; <- please stop my source
    RMSG_GENERAL_NOTIFY = 1202,      ///< ->
    RMSG_PAGE_NOTIFY = 1203,         ///< -> arg1 page: the unit goes off
    RMSG_STATE_TO_SYSTEM = 1204,     ///< <- ready for power-off; arg1 page
    RMSG_RADIO_NOTIFY = 1323,        ///< -> arg2 value, or a batch of bodies
    RMSG_RADIO_CONTROL = 1327,       ///< <- seek, step, frequency, sensitivity
    RMSG_N2K_DATA = 1634,            ///< -> a data block of the boat's network
    RMSG_N2K_TX = 1635,              ///< <- a data block for the network
    RMSG_N2K_PGN = 1636,             ///< -> a message of the network, with its head
    RMSG_N2K_TX_2 = 1637,            ///< <- a message for the network
    RMSG_N2K_TX_3 = 1638,            ///< <- media information for the network
    RMSG_PAGE_REQUEST_SHOW = 1724,   ///< <- arg1 page
    RMSG_PAGE_SHOW = 1725,           ///< -> arg1 page
    RMSG_PAGE_HIDE = 1726,           ///< -> arg1 page
    RMSG_PAGE_COVERED = 1727,        ///< -> arg1 page: replaced by another program's page
    RMSG_PAGE_SHOW_READY = 1728,     ///< <- arg1 page
    RMSG_PAGE_HIDE_READY = 1729,     ///< <- arg1 page
    RMSG_PAGE_TOP_SHOWN = 1730,      ///< <- arg1 page
    RMSG_ENGINE_STARTED = 1744,      ///< -> all, once
    RMSG_APP_HELLO = 1745,           ///< <- arg1 application type
    RMSG_APP_HELLO_ACK = 1746,       ///< -> arg1 application type
    RMSG_HEARTBEAT = 1747,           ///< -> all, every 6 s
    RMSG_HEARTBEAT_REPLY = 1748,     ///< <- arg1 application type
    RMSG_COMMAND_LINE = 1754,        ///< -> bundle: a formatted command line
    RMSG_SETTING_CHANGED = 1765,     ///< <- arg1 setting, arg2 1 = integer else text, bundle the value
    RMSG_EQ_PAGE_SHOW = 1766,        ///< <- show the equaliser page
    RMSG_EQ_PAGE_HIDE = 1767,        ///< <- stop it
    RMSG_IPOD_AUDIO_PATH = 1912,     ///< <- connection and audio path
    RMSG_BT_LINK = 1951,             ///< -> arg1 1 or 10
    RMSG_NAVI_WINDOW = 2025,         ///< -> window message to the navigation program
    RMSG_NAVI_EVENT = 2026,          ///< <- window message of the navigation program
    RMSG_PANDORA_NOTIFY = 2526,      ///< -> arg2 1
    RMSG_DEVICE_WINDOW = 33769,      ///< <- window message of the device driver
    WM_MESSAGE_IPOD_DRIVER = 48654,  ///< both: arg1 234567, arg2 state code
    RMSG_DAB_FAVOURITE = 48684       ///< -> as RMSG_FAVOURITE
};

/** "RMSG_APP_EVENT"; "RMSG 7" for a number that nobody has named. Any thread. */
juce::String remoteMessageName(juce::int32 what);

} // namespace Platform
