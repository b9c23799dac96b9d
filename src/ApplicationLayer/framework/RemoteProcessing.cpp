#include "ApplicationLayer/framework/AppHandler.h"
#include "ApplicationLayer/framework/ApplicationTask.h"
#include "EngineApi/NavicoCanApi.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Remote.h"
#include "EngineApi/Settings.h"
#include "EngineApi/WiredRemote.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/base/BundleKeys.h"
#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/settings/SetupValues.h"

namespace ApplicationLayer
{

using namespace EngineApi;
using namespace Pubhead;
using Platform::RemoteMessage;
using enum Platform::RemoteCode;

namespace
{

constexpr Platform::Log logger { "ApplicationLayer/AppHandler", "AppHandler" };

Platform::Counter settingsRefused { "settings.refused", "settings of programs that are unknown, or have another type" };

void serveWiredRemote(const RemoteMessage& message)
{
    auto* remote = Provided<WiredRemote>::get();
    if (remote == nullptr)
        return;
    if (message.arg1 == remoteDims)
        return remote->setDimmer(message.arg2);
    if (message.arg1 != remoteShowsTexts)
        return;
    if (message.arg2 != remoteKeepsTexts)
        remote->clearDisplay(true);
    if (message.bundle == nullptr)
        return;
    using namespace Platform::BundleKeys;
    remote->showText(0, message.bundle->getInt(remoteColumn1Key, 0), message.bundle->getString(remoteLine1Key, {}),
                     false);
    remote->showText(1, message.bundle->getInt(remoteColumn2Key, 0), message.bundle->getString(remoteLine2Key, {}),
                     false);
}

} // namespace

void AppHandler::processRemote(const Kernel::SystemMessage& message)
{
    const auto* remote = Kernel::payloadAs<RemoteMessage>(message.payload);
    if (remote == nullptr)
        return;
    switch (remote->what)
    {
    case RMSG_APP_EVENT:
        if (remote->arg1 == appEventMenuPage)
            return postToPage(mbMainMenu, Kernel::MSG_MENU_PAGE, remote->arg2, 0);
        if (remote->arg1 == appEventMenu)
            return postToPage(mbMainMenu, Kernel::MSG_MENU_EVENT, remote->arg2, 0);
        return passToOwner(message);
    case RMSG_IGNORED:
        return;
    case RMSG_MAINMENU_RELAY:
        sendRemoteMessage(AppMainMenu, RMSG_MAINMENU_NOTIFY, menuRelayed, remote->arg1);
        return;
    case RMSG_WIRED_REMOTE_TEXT:
        return serveWiredRemote(*remote);
    case RMSG_MAINMENU_EVENT:
        return Kernel::postSystemMessage(Kernel::mainMenuApplicationId, Kernel::MSG_MENU_REMOTE_EVENT, remote->arg1,
                                         remote->arg2);
    case RMSG_SOURCE_STOP:
        return requestState(AppAction::ToStop, true);
    case RMSG_STATE_TO_SYSTEM:
        return Kernel::postSystemMessage(Kernel::systemStateManagerId, Kernel::MSG_POWER_OFF_CONFIRM, remote->arg1,
                                         remote->arg2);
    case RMSG_N2K_TX:
        return sendCanData(remote->bundle);
    case RMSG_N2K_TX_2:
        return sendPgnBundle(remote->bundle);
    case RMSG_N2K_TX_3:
        return sendMediaInfo(remote->bundle);
    case RMSG_SETTING_CHANGED:
        return storeSetting(*remote);
    case RMSG_EQ_PAGE_SHOW:
        return requestShowPage(mbEQ, false);
    case RMSG_EQ_PAGE_HIDE:
        return requestStopPage(mbEQ);
    default:
        return passToOwner(message);
    }
}

void AppHandler::storeSetting(const RemoteMessage& remote)
{
    using Platform::RemoteObjFormat;
    const int index = remote.arg1;
    const bool isInteger = remote.arg2 == settingIsInteger;
    if (isInteger ? !RemoteObjFormat::holdsInt(remote.bundle) : !RemoteObjFormat::holdsString(remote.bundle))
        logger().error(juce::String(appTypeName(config.appType)) + " sends setting " + juce::String(index) +
                       " without " +
                       (isInteger ? "an integer, which it says is there" : "a text, which it says is there"));
    else if (!isSettingKnown(index)) // what programs make up would take the room that the unit's own settings need
        refuseSetting(index, "which the unit does not have");
    else if (isInteger)
        setSettingInt(index, RemoteObjFormat::getInt(remote.bundle), true, config.appType);
    else if (const auto text = RemoteObjFormat::getString(remote.bundle);
             text.getNumBytesAsUTF8() <= Platform::longestSetupText)
        setSettingString(index, text, true, config.appType);
    else
        refuseSetting(index, "with a text of more than 64 KiB");
}

/** Counted, and said for the first one only: a program may send many. */
void AppHandler::refuseSetting(int index, const char* why)
{
    ++settingsRefused;
    if (refusedSettings++ == 0)
        logger().error("%s sends setting %d, %s; such settings are dropped", appTypeName(config.appType), index, why);
}

void AppHandler::passToOwner(const Kernel::SystemMessage& message)
{
    if (owner != nullptr)
        owner->handleOwnMessage(message);
}

} // namespace ApplicationLayer
