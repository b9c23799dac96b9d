#include "ApplicationLayer/framework/ApplicationTask.h"

#include "EngineApi/Pages.h"
#include "kernel/MessageIds.h"
#include "platform/channel/RemoteMessage.h"

namespace ApplicationLayer
{

ApplicationTask::ApplicationTask(std::vector<AppHandler::Ptr> pageHandlers)
    : ownHandlers(std::move(pageHandlers))
{
}

ApplicationTask::~ApplicationTask()
{
    // Handlers may outlive their application in other hands.
    for (const auto& [page, handler] : handlers)
        handler->setOwner(nullptr);
}

void ApplicationTask::initialize()
{
    for (const auto& handler : ownHandlers)
        addHandler(handler);
}

void ApplicationTask::onRelease()
{
    for (const auto& handler : ownHandlers)
        removeHandler(handler);
}

void ApplicationTask::dispatchMessage(const Kernel::SystemMessage& message)
{
    if (message.handlerIndex < 0 || message.handlerIndex > Pubhead::NUM_OF_PAGES)
        handleOwnMessage(message);
    else if (const auto handler = findHandler(message.handlerIndex))
        handler->handleMessage(message);
    if (message.id == Kernel::MSG_APP_REMOTE)
        if (auto* remote = Kernel::payloadAs<Platform::RemoteMessage>(message.payload))
            remote->giveBack();
}

void ApplicationTask::handleOwnMessage(const Kernel::SystemMessage&) {}

void ApplicationTask::addHandler(const AppHandler::Ptr& handler)
{
    if (!handlers.emplace(handler->getPage(), handler).second)
        return;
    handler->setOwner(this);
    EngineApi::registerHandler(handler.get());
    handler->onAttach();
}

void ApplicationTask::removeHandler(const AppHandler::Ptr& handler)
{
    if (const auto found = handlers.find(handler->getPage()); found == handlers.end() || found->second != handler)
        return;
    const AppHandler::Ptr removed = handler;
    handlers.erase(removed->getPage());
    removed->onDetach();
    EngineApi::unregisterHandler(removed.get());
    removed->setOwner(nullptr);
}

AppHandler::Ptr ApplicationTask::findHandler(int page) const
{
    const auto found = handlers.find(page);
    return found == handlers.end() ? nullptr : found->second;
}

} // namespace ApplicationLayer
