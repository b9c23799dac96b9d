#include "factory/MsgSpecialHandler.h"

#include "EngineApi/HostLink.h"

#include <algorithm>
#include <iterator>

namespace Factory
{

namespace
{

using namespace EngineApi;

/** The receiver of the DSP's identification was never built. */
constexpr Kernel::ComponentId missingComponentId = 32;

struct Route
{
    int command;
    Kernel::ComponentId receiver;
};

/** What the microcontroller sends; frames of any other command are dropped. */
constexpr Route routes[] = {
    { EVENT_UNKNOWN, Kernel::generalApplicationId },
    { EVENT_GET_LAST_MEMORY, Kernel::deviceStatusManagerId },
    { EVENT_SRC_SWITCH, Kernel::deviceStatusManagerId },
    { EVENT_SRC_SWITCH_REPORT, Kernel::deviceStatusManagerId },
    { EVENT_DEVICE_STATUS, Kernel::deviceStatusManagerId },
    { EVENT_KEY, Kernel::keyManagerId },
    { EVENT_POWER_OFF_READY, Kernel::deviceStatusManagerId },
    { EVENT_DATA_SEND_CAN, Kernel::navicoManagerId },
    { EVENT_SEND_VERSION, Kernel::navicoManagerId },
    { EVENT_PGN_SEND_CAN, Kernel::navicoManagerId },
    { EVENT_SETUP_FROM_CAN, Kernel::navicoManagerId },
    { EVENT_SET_DEVICE_ID_FROM_CAN, Kernel::navicoManagerId },
    { EVENT_RADIO_INFO, Kernel::radioApplicationId },
    { EVENT_RADIO_CONTROL_RESP, Kernel::radioApplicationId },
    { EVENT_RADIO_INFO_REPORT, Kernel::radioApplicationId },
    { EVENT_LED_LCD_DIMMER, Kernel::setupApplicationId },
    { EVENT_VOLTAGE_VALUES, Kernel::setupApplicationId },
    { EVENT_RADIO_TESTMODE, Kernel::radioApplicationId },
    { EVENT_AUTOTEST_INFO, Kernel::keyManagerId },
    { EVENT_GET_DEVICE_ID, Kernel::keyManagerId },
    { EVENT_DSP_ID_RESP, missingComponentId },
};

} // namespace

Kernel::ComponentId MsgSpecialHandler::componentForHostCommand(int command) const
{
    const auto* found =
        std::find_if(std::begin(routes), std::end(routes), [=](const auto& route) { return route.command == command; });
    return found != std::end(routes) ? found->receiver : Kernel::noComponent;
}

} // namespace Factory
