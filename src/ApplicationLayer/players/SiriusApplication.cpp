#include "ApplicationLayer/players/SiriusApplication.h"

#include "EngineApi/Bars.h"
#include "EngineApi/DeviceStatus.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "kernel/ComponentRegistration.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Logger.h"

namespace ApplicationLayer
{

using namespace EngineApi;
using namespace Pubhead;

namespace
{

constexpr Platform::Log logger { "ApplicationLayer/SiriusApplication", "SiriusApplication" };

const Kernel::ComponentRegistration registration { Kernel::siriusApplicationId,
                                                   []() -> Kernel::SystemTask* { return new SiriusApplication; } };

/** arg1 of RMSG_SXM_EVENT. */
enum ProgramEvent : juce::int32 {
    tunerState = Platform::satelliteTunerState,
    offersFavourites = Platform::satelliteFavourites,
    selectFavourite = Platform::satelliteSelected,
    readyForPowerOff = Platform::satelliteReady
};

void takeTunerState(juce::int32 state)
{
    logger().debug("SXM state:" + juce::String(state));
    setDeviceState(satelliteTuner, state != 0);
}

void showSelectedFavourite()
{
    if (auto* bar = Provided<FavoriteBar>::get())
        bar->postMessage(Kernel::MSG_FAVOURITES_SELECT, bar->getCurrentIndex(), 0, nullptr);
}

void fromProgram(const Platform::RemoteMessage& remote)
{
    if (remote.what != RMSG_SXM_EVENT)
        return;
    switch (remote.arg1)
    {
    case tunerState:
        return takeTunerState(remote.arg2);
    case offersFavourites:
        logger().debug("FavouriteBar!!!");
        return offerFavourites(remote.arg2);
    case selectFavourite:
        return showSelectedFavourite();
    case readyForPowerOff:
        return Kernel::postSystemMessage(Kernel::deviceStatusManagerId, Kernel::MSG_POWER_OFF_CONFIRM, mbSirius, 0);
    default:
        return;
    }
}

} // namespace

SiriusHandler::SiriusHandler()
    : FavouriteHandler(mbSirius)
{
}

SiriusApplication::SiriusApplication()
    : ApplicationTask({ new SiriusHandler })
{
}

void SiriusApplication::handleOwnMessage(const Kernel::SystemMessage& message)
{
    switch (message.id)
    {
    case Kernel::MSG_SYS_READY:
        return launchBackProgram(mbSirius);
    case Kernel::MSG_FACTORY_RESET:
        sendRemoteMessage(AppSirius, RMSG_FACTORY_RESET, AppSirius, 0);
        return;
    case Kernel::MSG_APP_REMOTE:
        if (const auto* remote = Kernel::payloadAs<Platform::RemoteMessage>(message.payload))
            fromProgram(*remote);
        return;
    default:
        return;
    }
}

} // namespace ApplicationLayer
