#include "EngineApi/Remote.h"

#include "EngineLayer/channel/RemoteSessionManager.h"
#include "platform/base/Pubhead.h"
#include "platform/screen/Window.h"

#include <atomic>

using Platform::RemoteMessage;
using Platform::IPCMsg::MessageHelper;

namespace EngineApi
{

namespace
{

EngineLayer::RemoteSessionManager& manager()
{
    return *EngineLayer::RemoteSessionManager::getInstance();
}

/** The navigation program is a foreign one: it is reached through its window. */
bool postToNavigation(juce::int32 arg1, juce::int32 arg2)
{
    static std::atomic<Platform::WindowHandle> cached { Platform::noWindow };
    auto window = cached.load();
    if (!Platform::isWindow(window))
    {
        window = Platform::findWindow(MessageHelper::getDestName(Pubhead::AppNavi));
        cached = window;
    }
    return window != Platform::noWindow && Platform::postWindowMessage(window, RMSG_NAVI_WINDOW, arg1, arg2);
}

} // namespace

bool sendRemoteMessage(int appType, juce::int32 what, juce::int32 arg1, juce::int32 arg2, Platform::Bundle::Ptr bundle)
{
    auto message = RemoteMessage::obtain();
    message->what = what;
    message->arg1 = arg1;
    message->arg2 = arg2;
    message->bundle = std::move(bundle);
    const bool sent = sendRemoteMessage(appType, message);
    RemoteMessage::recycle(std::move(message));
    return sent;
}

bool sendRemoteMessage(int appType, const RemoteMessage::Ptr& message)
{
    if (message == nullptr)
        return false;
    if (appType == Pubhead::AppNavi)
        return postToNavigation(message->arg1, message->arg2);
    return manager().sendToApp(appType, message);
}

void broadcastRemoteMessage(juce::int32 what, juce::int32 arg1, juce::int32 arg2)
{
    auto message = RemoteMessage::obtain();
    message->what = what;
    message->arg1 = arg1;
    message->arg2 = arg2;
    MessageHelper::broadcastMessage(message);
    RemoteMessage::recycle(std::move(message));
}

void addRemoteMsgFilter(juce::int32 what, RemoteMsgFilterInterface* filter)
{
    manager().addMsgFilter(what, filter);
}

bool isAppConnected(int appType)
{
    return manager().isAppRegistered(appType);
}

std::vector<int> getRegisteredApps()
{
    return manager().getRegisteredApps();
}

} // namespace EngineApi
