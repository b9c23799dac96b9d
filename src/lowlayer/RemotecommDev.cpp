#include "lowlayer/RemotecommDev.h"

#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "kernel/Trace.h"
#include "platform/base/Logger.h"
#include "platform/base/Pubhead.h"
#include "platform/base/Threads.h"
#include "platform/channel/RemoteMessageIds.h"

namespace LowLayer
{

namespace
{

constexpr Platform::Log logger { "lowlayer/RemotecommDev", "RemotecommDev" };

constexpr int mostUnhandled = 256;

} // namespace

/** On its way to a component, and counted until that has dealt with it. */
class RemotecommDev::CountedMessage : public Platform::RemoteMessage
{
public:
    explicit CountedMessage(Count countToKeep)
        : count(std::move(countToKeep))
    {
        ++*count;
    }
    ~CountedMessage() override { --*count; }
    void giveBack() override {} // counted as long as it is there

private:
    const Count count;
};

RemotecommDev::RemotecommDev()
{
    Platform::IPCMsg::MessageHelper::config(Pubhead::AppMain, Platform::IPCMsg::MessageHelper::getDestName);
    if (!session.init(this))
        logger().error("the message channel is not there yet");
}

void RemotecommDev::setClient(ClientCallBack* newClient)
{
    const std::lock_guard guard(clientLock);
    client = newClient;
}

bool RemotecommDev::postToApp(int appType, const Platform::RemoteMessage::Ptr& message)
{
    using Kernel::Trace;
    Kernel::TraceScope scope(Trace::Kind::remoteSent, appType, message->what, message->arg1, message->arg2, false);
    if (Platform::IPCMsg::MessageHelper::postMessage(appType, message))
    {
        scope.set(4, true);
        return true;
    }
    logger().error("postMessage error! dest: %s", Pubhead::appTypeName(appType));
    return false;
}

void RemotecommDev::tellClient(RemoteDataKind kind, int appType, juce::ReferenceCountedObject* data)
{
    const std::lock_guard guard(clientLock);
    if (client != nullptr)
        client->onData(kind, appType, data);
}

void RemotecommDev::onRemoteMessage(Platform::RemoteMessage::Ptr message)
{
    // The engine's own traffic is none of the client's business.
    if (message->appType != Pubhead::AppMain)
        tellClient(MSG_REMOTE_MSG_REV, message->appType, message.get());
    Platform::RemoteMessage::recycle(std::move(message));
}

void RemotecommDev::onPresence(int appType, bool present)
{
    tellClient(present ? MSG_REMOTE_REGIST : MSG_REMOTE_UNREGIST, appType, nullptr);
}

void RemotecommDev::onBroadcast(const juce::String& text)
{
    // The list of listeners is the message thread's.
    Platform::callOnMessageThread([text] { juce::MessageManager::getInstance()->deliverBroadcastMessage(text); });
}

bool RemotecommDev::isBusy() const
{
    return *unhandled >= mostUnhandled;
}

void RemotecommDev::onWindowMessage(juce::int32 message, juce::int32 wParam, juce::int32 lParam)
{
    const Platform::RemoteMessage::Ptr counted = new CountedMessage(unhandled);
    const auto post = [&](Kernel::ComponentId receiver, juce::int32 id, juce::int32 arg1, juce::int32 arg2)
    { Kernel::postSystemMessage(receiver, id, arg1, arg2, counted.get()); };
    // Of a program that has no endpoint, as if it had come over the channel.
    const auto translate = [&](int appType)
    {
        counted->what = message;
        counted->arg1 = wParam;
        counted->arg2 = lParam;
        counted->appType = appType;
        tellClient(MSG_REMOTE_MSG_REV, appType, counted.get());
    };
    switch (message)
    {
    case Platform::RMSG_SETUP_WINDOW_EVENT:
        translate(Pubhead::AppSetup);
        break;
    case Platform::RMSG_MENU_COMMAND_WINDOW:
        post(Kernel::mainMenuApplicationId, Kernel::MSG_MENU_COMMAND, wParam, lParam);
        break;
    case Platform::RMSG_MAINMENU_RELAY:
    {
        auto relayed = Platform::RemoteMessage::obtain();
        relayed->what = Platform::RMSG_MAINMENU_NOTIFY;
        relayed->arg1 = Platform::menuRelayed;
        relayed->arg2 = wParam;
        tellClient(MSG_REMOTE_FORWARD, Pubhead::AppMainMenu, relayed.get());
        break;
    }
    case Platform::RMSG_EQ_PAGE_SHOW:
        post(Kernel::setupApplicationId, Kernel::MSG_EQ_WINDOW_SHOW, 0, 0);
        break;
    case Platform::RMSG_EQ_PAGE_HIDE:
        post(Kernel::setupApplicationId, Kernel::MSG_EQ_WINDOW_HIDE, 0, 0);
        break;
    case Platform::RMSG_NAVI_EVENT:
        translate(Pubhead::AppNavi);
        break;
    case Platform::RMSG_DEVICE_WINDOW:
        post(Kernel::deviceStatusManagerId, Kernel::MSG_DEVICE_WINDOW_EVENT, wParam, lParam);
        break;
    case Platform::WM_MESSAGE_IPOD_DRIVER:
        translate(Pubhead::AppiPod);
        break;
    default:
        break;
    }
}

} // namespace LowLayer
