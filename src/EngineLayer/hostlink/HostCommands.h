#pragma once

#include "EngineApi/HostLink.h"

/** The table of the commands that the unit and its microcontroller exchange. */
namespace EngineLayer
{

struct HostCommandEntry
{
    int code;
    const char* sentName;     ///< in log lines when the unit sends it; "" when it never does
    const char* receivedName; ///< in log lines when the microcontroller sends it
};

inline constexpr HostCommandEntry hostCommands[] = {
    { EngineApi::EVENT_UNKNOWN, "EVENT_UNKNOWN", "UNKNOWN_RESP" },
    { EngineApi::EVENT_GET_LAST_MEMORY, "EVENT_GET_LAST_MEMORY", "GET_LAST_MEMORY_RESP" },
    { EngineApi::EVENT_SRC_SWITCH, "EVENT_SRC_SWITCH", "EVENT_SRC_SWITCH" },
    { EngineApi::EVENT_SRC_SWITCH_REPORT, "EVENT_SRC_SWITCH_REPORT", "EVENT_SRC_SWITCH_REPORT" },
    { EngineApi::EVENT_DEVICE_STATUS, "EVENT_DEVICE_STATUS", "EVENT_GET_DEVICE_STATUS" },
    { EngineApi::EVENT_KEY, "EVENT_KEY", "IND_KEY" },
    { EngineApi::EVENT_POWER_OFF_READY, "EVENT_POWER_OFF_READY", "EVENT_POWER_OFF" },
    { EngineApi::EVENT_DATA_SEND_CAN, "EVENT_DATA_SEND_CAN", "EVENT_DATA_FROM_CAN" },
    { EngineApi::EVENT_MCU_UPDATE_CTRL, "EVENT_MCU_UPDATE_CTRL", "" },
    { EngineApi::EVENT_MCU_UPDATE_DATA, "EVENT_MCU_UPDATE_DATA", "EVENT_MCU_UPDATE_DATA" },
    { EngineApi::EVENT_SEND_VERSION, "EVENT_SEND_VERSION", "EVENT_REQUEST_VERSION" },
    { EngineApi::EVENT_PGN_SEND_CAN, "EVENT_PGN_SEND_CAN", "EVENT_PGN_FROM_CAN" },
    { EngineApi::EVENT_MEDIA_INFO, "EVENT_MEDIA_INFO", "" },
    { EngineApi::EVENT_SETUP_FROM_CAN, "", "EVENT_SETUP_FROM_CAN" },
    { EngineApi::EVENT_SET_DEVICE_ID_FROM_CAN, "", "EVENT_SET_DEVICE_ID" },
    { EngineApi::EVENT_RADIO_INFO, "EVENT_RADIO_INFO", "EVENT_RADIO_INFO_RESP" },
    { EngineApi::EVENT_RADIO_CONTROL_RESP, "", "EVENT_RADIO_CONTROL_RESP" },
    { EngineApi::EVENT_RADIO_INFO_REPORT, "", "EVENT_RADIO_INFO_REPORT" },
    { EngineApi::EVENT_LED_LCD_DIMMER, "EVENT_LED_LCD_DIMMER", "EVENT_LED_LCD_DIMMER" },
    { EngineApi::EVENT_VOLTAGE_VALUES, "", "EVENT_VOLTAGE_VALUES" },
    { EngineApi::EVENT_MUTE_STATE, "EVENT_MUTE_STATE", "" },
    { EngineApi::EVENT_FACTORY_RESET, "EVENT_FACTORY_RESET", "" },
    { EngineApi::EVENT_RENAME_AUXIN, "EVENT_RENAME_AUXIN", "" },
    { EngineApi::EVENT_HEAT_BEAT, "EVENT_HEAT_BEAT", "" },
    { EngineApi::EVENT_RADIO_TESTMODE, "EVENT_RADIO_TESTMODE", "EVENT_RADIO_TESTMODE_RESP" },
    { EngineApi::EVENT_AUTOTEST_INFO, "EVENT_AUTOTEST_INFO", "EVENT_AUTOTEST_INFO_RESP" },
    { EngineApi::EVENT_SET_DEVICE_ID, "EVENT_SET_DEVICE_ID", "" },
    { EngineApi::EVENT_GET_DEVICE_ID, "EVENT_GET_DEVICE_ID", "EVENT_DEVICE_ID_RESP" },
    { EngineApi::EVENT_DSP_ID_RESP, "EVENT_DSP_ID_RESP", "EVENT_DSP_ID_RESP" },
};

/** The entry of a command; one with empty names for a code outside the table. */
constexpr HostCommandEntry hostCommand(int code)
{
    for (const auto& entry : hostCommands)
        if (entry.code == code)
            return entry;
    return { code, "", "" };
}

} // namespace EngineLayer
