#include "EngineApi/Pages.h"

#include "EngineApi/Programs.h"
#include "EngineLayer/schedule/ApplicationManager.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"

namespace EngineApi
{

namespace
{

EngineLayer::ApplicationManager& manager()
{
    return *EngineLayer::ApplicationManager::getInstance();
}

/** What the handler's configuration says, or the value for a page that nobody registered. */
template <typename Value>
Value fromConfig(int page, Value PageScheduleConfig::*field, Value fallback)
{
    const auto handler = getHandler(page);
    return handler == nullptr ? fallback : handler->getConfig().*field;
}

} // namespace

PageHandler::Ptr getHandler(int page)
{
    return manager().getHandler(page);
}

Kernel::ComponentId getOwnerId(int page)
{
    return fromConfig(page, &PageScheduleConfig::ownerId, Kernel::ComponentId { Kernel::noComponent });
}

int getSource(int page)
{
    return fromConfig(page, &PageScheduleConfig::source, std::int32_t { NUM_OF_SOURCES });
}

int getAudioChannel(int page)
{
    const auto handler = getHandler(page);
    return handler == nullptr ? Dsp::noAudioChannel
                              : EngineLayer::ApplicationManager::describePage(*handler)->audioChannel;
}

int appTypeOfPage(int page)
{
    return fromConfig(page, &PageScheduleConfig::appType, std::int32_t { Pubhead::AppUnknown });
}

int getPageOfAppType(int appType)
{
    return manager().getPageOfAppType(appType);
}

bool isNormalSource(int page)
{
    return fromConfig(page, &PageScheduleConfig::isNormalSource, false);
}

bool isRearPage(int page)
{
    return fromConfig(page, &PageScheduleConfig::isRear, false);
}

bool isAvailable(int page)
{
    const auto handler = getHandler(page);
    return handler != nullptr && handler->isAvailable();
}

int getNormalSource()
{
    return manager().getSnapshot().normalSource;
}

int getLastNormalSource()
{
    return manager().getSnapshot().lastNormalSource;
}

int getLastSourcePage()
{
    return manager().getSnapshot().lastSourcePage;
}

int getRearPage()
{
    const int running = manager().getSnapshot().rearRunning;
    return running == Pubhead::NUM_OF_PAGES ? static_cast<int>(Pubhead::mbRearOff) : running;
}

int getFrontShow()
{
    return manager().getSnapshot().frontShow;
}

void requestShowPage(int page, bool autoSwitch)
{
    if (const auto handler = getHandler(page))
        handler->requestShow(autoSwitch);
}

void requestStopPage(int page)
{
    requestPageState(page, AppAction::ToStop, true);
}

void requestPageState(int page, AppAction action, bool autoSwitch)
{
    if (const auto handler = getHandler(page))
        handler->requestState(action, autoSwitch);
}

void postSwitchOrder(int page, AppStateSwitch::Ptr order)
{
    const auto type = static_cast<juce::int32>(order->switchType);
    postToPage(page, Kernel::MSG_APP_SWITCH, type, 0, order.get());
}

void postScheduleResult(int page, ScheduleStatus status)
{
    postToPage(page, Kernel::MSG_SCHEDULE_RESULT, status, 0);
}

void notifyPage(int page)
{
    if (const auto handler = getHandler(page))
        handler->notifyPage();
}

void postToPage(int page, juce::int32 id, juce::int32 arg1, juce::int32 arg2, Kernel::Payload payload)
{
    if (const auto handler = getHandler(page))
        Kernel::postHandlerMessage(handler->getConfig().ownerId, page, id, arg1, arg2, std::move(payload));
}

void launchBackProgram(int page)
{
    if (const auto handler = getHandler(page))
        launchApp(handler->getAppType(), page, handler->getBackProgramPath(), Platform::Bundle::obtain(), true);
}

void terminateProgram(int appType)
{
    terminateApp(appType);
}

void registerHandler(PageHandler::Ptr handler)
{
    manager().registerHandler(std::move(handler));
}

void unregisterHandler(PageHandler::Ptr handler)
{
    manager().unregisterHandler(handler);
}

} // namespace EngineApi
