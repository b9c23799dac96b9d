#include "EngineLayer/channel/RemoteSessionManager.h"

#include "EngineApi/Pages.h"
#include "EngineApi/Programs.h"
#include "kernel/MessageIds.h"
#include "kernel/Trace.h"
#include "lowlayer/RemotecommDev.h"
#include "platform/base/CommandLine.h"
#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/base/Pubhead.h"
#include "platform/base/Shared.h"
#include "platform/screen/Window.h"

using namespace EngineApi;
using LowLayer::RemotecommDev;
using Platform::RemoteMessage;
using Platform::IPCMsg::MessageHelper;

namespace EngineLayer
{

namespace
{

constexpr Platform::Log logger { "EngineLayer/RemoteSessionManager", "RemoteSessionManager" };

Platform::Counter messagesDropped {
    "channel.messages-dropped",
    "messages to programs that could not be reached, have ended, or for which too many waited"
};

bool isValid(int appType)
{
    return appType >= 0 && appType < Pubhead::numOfAppTypes;
}

/** A program that does not run has no source to leave. */
bool isPointlessLater(const RemoteMessage& message)
{
    if (message.what == RMSG_SOURCE_STOP)
        return true;
    if (message.what != RMSG_COMMAND_LINE)
        return false;
    const auto commandLine = Platform::RemoteObjFormat::generateCommandLine(message.bundle);
    return commandLine != nullptr && commandLine->isSourceExit();
}

} // namespace

void RemoteSessionManager::initialize()
{
    RemotecommDev::getInstance()->setClient(this);
}

void RemoteSessionManager::onRelease()
{
    RemotecommDev::getInstance()->setClient(nullptr);
    removeConnectListener(this);
}

void RemoteSessionManager::handleMessage(juce::int32 id, juce::int32, juce::int32, const Kernel::Payload&)
{
    if (id != Kernel::MSG_SYS_START)
        return;
    addConnectListener(this);
    // A program that an earlier engine has started says hello at once, and may be connected before this thread begins.
    for (int appType = 0; isValid(appType); ++appType)
        if (getAppState(appType) == kConnected && !isAppRegistered(appType))
            registerApp(appType);
}

bool RemoteSessionManager::sendToApp(int appType, const RemoteMessage::Ptr& message)
{
    if (message == nullptr || !isValid(appType))
        return false;
    const bool isStarting = getAppState(appType) == kStarting;
    const std::lock_guard guard(lock);
    const bool isRegistered = registeredApps.count(appType) != 0;
    if (!isRegistered && isPointlessLater(*message))
        return false;
    ++counts.accepted;
    if (isRegistered)
        return post(appType, message);
    auto& queue = pendingMessages[appType];
    const auto droppedBefore = queue.getDropped();
    if (queue.push({ message, isStarting }))
        logger().error("%d messages wait for %s: the oldest go", static_cast<int>(maxPending),
                       Pubhead::appTypeName(appType));
    countDropped(queue.getDropped() - droppedBefore);
    return false;
}

bool RemoteSessionManager::post(int appType, const RemoteMessage::Ptr& message)
{
    const bool posted = RemotecommDev::getInstance()->postToApp(appType, message);
    if (posted)
        ++counts.posted;
    else
        countDropped(1);
    return posted;
}

RemoteSessionManager::Counts RemoteSessionManager::getCounts() const
{
    const std::lock_guard guard(lock);
    auto all = counts;
    for (const auto& [appType, queue] : pendingMessages)
        all.waiting += queue.getSize();
    return all;
}

void RemoteSessionManager::countDropped(std::uint64_t messages)
{
    counts.dropped += messages;
    messagesDropped += messages;
}

std::size_t RemoteSessionManager::countWaiting(std::optional<int> appType) const
{
    const std::lock_guard guard(lock);
    std::size_t sum = 0;
    for (const auto& [type, queue] : pendingMessages)
        sum += !appType || type == *appType ? queue.getSize() : 0;
    return sum;
}

void RemoteSessionManager::addMsgFilter(juce::int32 what, RemoteMsgFilterInterface* filter)
{
    const std::lock_guard guard(lock);
    msgFilters[what] = filter;
}

bool RemoteSessionManager::isAppRegistered(int appType) const
{
    const std::lock_guard guard(lock);
    return registeredApps.count(appType) != 0;
}

std::vector<int> RemoteSessionManager::getRegisteredApps() const
{
    const std::lock_guard guard(lock);
    return { registeredApps.begin(), registeredApps.end() };
}

void RemoteSessionManager::onData(int kind, int appType, juce::ReferenceCountedObject* data)
{
    auto* message = dynamic_cast<RemoteMessage*>(data);
    switch (kind)
    {
    case LowLayer::MSG_REMOTE_REGIST:
        logger().info("MSG_REMOTE_REGIST: %s", Pubhead::appTypeName(appType));
        // A name alone is not enough: a program that has just started registers with its hello.
        if (isValid(appType) && getAppState(appType) == kConnected)
            registerApp(appType);
        break;
    case LowLayer::MSG_REMOTE_FORWARD:
        if (isValid(appType) && message != nullptr)
            sendToApp(appType, message);
        break;
    case LowLayer::MSG_REMOTE_UNREGIST:
        logger().info("MSG_REMOTE_UNREGIST: %s", Pubhead::appTypeName(appType));
        // A name that is lost late must not take along what waits for the program's next process.
        if (isValid(appType) && isAppRegistered(appType))
            unregisterApp(appType);
        [[fallthrough]];
    case LowLayer::MSG_REMOTE_MSG_REV:
        if (message != nullptr)
            receive(appType, *message);
        break;
    default:
        break;
    }
}

void RemoteSessionManager::receive(int appType, RemoteMessage& message)
{
    if (!isValid(appType))
    {
        logger().error("MSG_REMOTE_MSG_REV AppType error");
        return;
    }
    const Kernel::TraceScope scope(Kernel::Trace::Kind::remoteReceived, appType, message.what, message.arg1,
                                   message.arg2);
    RemoteMsgFilterInterface* filter = nullptr;
    {
        const std::lock_guard guard(lock);
        if (const auto found = msgFilters.find(message.what); found != msgFilters.end())
            filter = found->second;
    }
    if (filter != nullptr)
        filter->onFilterMessage(message);
    else
        postToPageOf(appType, Kernel::MSG_APP_REMOTE, &message);
}

void RemoteSessionManager::registerApp(int appType)
{
    {
        const std::lock_guard guard(lock);
        registeredApps.insert(appType);
        for (auto& waiting = pendingMessages[appType]; !waiting.isEmpty(); waiting.pop())
        {
            auto& message = waiting.front().message;
            post(appType, message);
            RemoteMessage::recycle(std::move(message));
        }
    }
    postToPageOf(appType, Kernel::MSG_APP_CONNECTED);
}

void RemoteSessionManager::unregisterApp(int appType)
{
    stopPosting(appType);
    postToPageOf(appType, Kernel::MSG_APP_DISCONNECTED);
}

void RemoteSessionManager::stopPosting(int appType)
{
    {
        const std::lock_guard guard(lock);
        registeredApps.erase(appType);
    }
    dropPending(appType);
}

void RemoteSessionManager::dropPending(int appType)
{
    const bool isStarting = getAppState(appType) == kStarting;
    const std::lock_guard guard(lock);
    std::vector<RemoteMessage::Ptr> dropped;
    pendingMessages[appType].eraseIf(
        [&](const Waiting& each)
        {
            const bool stays = isStarting && each.isForStarted;
            if (!stays)
                dropped.push_back(each.message);
            return !stays;
        });
    if (dropped.empty())
        return;
    countDropped(dropped.size());
    logger().info("%d messages that waited for %s go with its process", static_cast<int>(dropped.size()),
                  Pubhead::appTypeName(appType));
    for (auto& message : dropped)
        RemoteMessage::recycle(std::move(message));
}

void RemoteSessionManager::onAppConnectState(int appType, int state)
{
    switch (state)
    {
    case kDisconnect:
        unregisterApp(appType);
        break;
    case kStarting:
        dropPending(appType);
        break;
    case kConnected:
        registerApp(appType);
        break;
    case kClosing:
        stopPosting(appType);
        break;
    default:
        break;
    }
}

void RemoteSessionManager::postToPageOf(int appType, juce::int32 id, Kernel::Payload payload)
{
    postToPage(getPageOfAppType(appType), id, 0, 0, std::move(payload));
}

} // namespace EngineLayer

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
    static Platform::Shared<Platform::WindowHandle> cached { Platform::noWindow };
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
    const Kernel::TraceScope scope(Kernel::Trace::Kind::remoteSent, Pubhead::AppUnknown, what, arg1, arg2, true);
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
