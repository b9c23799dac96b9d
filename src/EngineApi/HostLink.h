#pragma once

#include <initializer_list>

/** Access to the microcontroller from everywhere in the engine. Any thread; no call waits for it. */
namespace EngineApi
{

/** Command codes, one space for both directions. */
enum HostCommand : int {
    EVENT_UNKNOWN = 0,
    EVENT_GET_LAST_MEMORY = 1,
    EVENT_SRC_SWITCH = 2,
    EVENT_SRC_SWITCH_REPORT = 3,
    EVENT_DEVICE_STATUS = 4,   ///< from the MCU: EVENT_GET_DEVICE_STATUS
    EVENT_KEY = 5,             ///< from the MCU: IND_KEY
    EVENT_POWER_OFF_READY = 6, ///< from the MCU: EVENT_POWER_OFF
    EVENT_DATA_SEND_CAN = 7,
    EVENT_MCU_UPDATE_CTRL = 8,
    EVENT_MCU_UPDATE_DATA = 9,
    EVENT_SEND_VERSION = 10,
    EVENT_PGN_SEND_CAN = 11,
    EVENT_MEDIA_INFO = 12,
    EVENT_SETUP_FROM_CAN = 13,
    EVENT_SET_DEVICE_ID_FROM_CAN = 14,
    EVENT_RADIO_INFO = 15,
    EVENT_RADIO_CONTROL_RESP = 16,
    EVENT_RADIO_INFO_REPORT = 17,
    EVENT_LED_LCD_DIMMER = 18,
    EVENT_VOLTAGE_VALUES = 19,
    EVENT_MUTE_STATE = 20,
    EVENT_FACTORY_RESET = 21,
    EVENT_RENAME_AUXIN = 22,
    EVENT_HEAT_BEAT = 23,
    EVENT_RADIO_TESTMODE = 24,
    EVENT_AUTOTEST_INFO = 25,
    EVENT_SET_DEVICE_ID = 26,
    EVENT_GET_DEVICE_ID = 27,
    EVENT_DSP_ID_RESP = 29
};

/** The subject of a frame that a later one need not replace. */
inline constexpr int noSubject = 0;

/** Sends the low byte of each value. */
void sendCommand(int command, std::initializer_list<int> values = {});
/** Sends at most 102 bytes; without data, the command alone. */
void sendData(int command, const void* data, int length);
/** The same, in front of what waits. Of one subject only the newest waits, so that no old value leaves last. */
void sendDataUrgent(int command, const void* data, int length, int subject = noSubject);

} // namespace EngineApi
