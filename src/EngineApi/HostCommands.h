#pragma once

#include "EngineApi/HostLink.h"
#include "kernel/ComponentIds.h"

/** The table of the commands that the unit and its microcontroller exchange. */
namespace EngineApi
{

struct HostCommandEntry
{
    int code;
    const char* sentName;         ///< in log lines when the unit sends it; "" when it never does
    const char* receivedName;     ///< in log lines when the microcontroller sends it
    Kernel::ComponentId receiver; ///< who gets the microcontroller's frame; noComponent drops it
};

/** No component has this id: the DSP's identification is dropped. */
inline constexpr Kernel::ComponentId missingComponentId = 32;

inline constexpr HostCommandEntry hostCommands[] = {
    { EVENT_UNKNOWN, "EVENT_UNKNOWN", "UNKNOWN_RESP", Kernel::generalApplicationId },
    { EVENT_GET_LAST_MEMORY, "EVENT_GET_LAST_MEMORY", "GET_LAST_MEMORY_RESP", Kernel::deviceStatusManagerId },
    { EVENT_SRC_SWITCH, "EVENT_SRC_SWITCH", "EVENT_SRC_SWITCH", Kernel::deviceStatusManagerId },
    { EVENT_SRC_SWITCH_REPORT, "EVENT_SRC_SWITCH_REPORT", "EVENT_SRC_SWITCH_REPORT", Kernel::deviceStatusManagerId },
    { EVENT_DEVICE_STATUS, "EVENT_DEVICE_STATUS", "EVENT_GET_DEVICE_STATUS", Kernel::deviceStatusManagerId },
    { EVENT_KEY, "EVENT_KEY", "IND_KEY", Kernel::keyManagerId },
    { EVENT_POWER_OFF_READY, "EVENT_POWER_OFF_READY", "EVENT_POWER_OFF", Kernel::deviceStatusManagerId },
    { EVENT_DATA_SEND_CAN, "EVENT_DATA_SEND_CAN", "EVENT_DATA_FROM_CAN", Kernel::navicoManagerId },
    { EVENT_MCU_UPDATE_CTRL, "EVENT_MCU_UPDATE_CTRL", "", Kernel::noComponent },
    { EVENT_MCU_UPDATE_DATA, "EVENT_MCU_UPDATE_DATA", "EVENT_MCU_UPDATE_DATA", Kernel::noComponent },
    { EVENT_SEND_VERSION, "EVENT_SEND_VERSION", "EVENT_REQUEST_VERSION", Kernel::navicoManagerId },
    { EVENT_PGN_SEND_CAN, "EVENT_PGN_SEND_CAN", "EVENT_PGN_FROM_CAN", Kernel::navicoManagerId },
    { EVENT_MEDIA_INFO, "EVENT_MEDIA_INFO", "", Kernel::noComponent },
    { EVENT_SETUP_FROM_CAN, "", "EVENT_SETUP_FROM_CAN", Kernel::navicoManagerId },
    { EVENT_SET_DEVICE_ID_FROM_CAN, "", "EVENT_SET_DEVICE_ID", Kernel::navicoManagerId },
    { EVENT_RADIO_INFO, "EVENT_RADIO_INFO", "EVENT_RADIO_INFO_RESP", Kernel::radioApplicationId },
    { EVENT_RADIO_CONTROL_RESP, "", "EVENT_RADIO_CONTROL_RESP", Kernel::radioApplicationId },
    { EVENT_RADIO_INFO_REPORT, "", "EVENT_RADIO_INFO_REPORT", Kernel::radioApplicationId },
    { EVENT_LED_LCD_DIMMER, "EVENT_LED_LCD_DIMMER", "EVENT_LED_LCD_DIMMER", Kernel::setupApplicationId },
    { EVENT_VOLTAGE_VALUES, "", "EVENT_VOLTAGE_VALUES", Kernel::setupApplicationId },
    { EVENT_MUTE_STATE, "EVENT_MUTE_STATE", "", Kernel::noComponent },
    { EVENT_FACTORY_RESET, "EVENT_FACTORY_RESET", "", Kernel::noComponent },
    { EVENT_RENAME_AUXIN, "EVENT_RENAME_AUXIN", "", Kernel::noComponent },
    { EVENT_HEAT_BEAT, "EVENT_HEAT_BEAT", "", Kernel::noComponent },
    { EVENT_RADIO_TESTMODE, "EVENT_RADIO_TESTMODE", "EVENT_RADIO_TESTMODE_RESP", Kernel::radioApplicationId },
    { EVENT_AUTOTEST_INFO, "EVENT_AUTOTEST_INFO", "EVENT_AUTOTEST_INFO_RESP", Kernel::keyManagerId },
    { EVENT_SET_DEVICE_ID, "EVENT_SET_DEVICE_ID", "", Kernel::noComponent },
    { EVENT_GET_DEVICE_ID, "EVENT_GET_DEVICE_ID", "EVENT_DEVICE_ID_RESP", Kernel::keyManagerId },
    { EVENT_DSP_ID_RESP, "EVENT_DSP_ID_RESP", "EVENT_DSP_ID_RESP", missingComponentId },
};

/** The entry of a command; one with empty names and no receiver for a code outside the table. */
constexpr HostCommandEntry hostCommand(int code)
{
    for (const auto& entry : hostCommands)
        if (entry.code == code)
            return entry;
    return { code, "", "", Kernel::noComponent };
}

} // namespace EngineApi
