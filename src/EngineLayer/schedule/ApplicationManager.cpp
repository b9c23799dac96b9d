#include "EngineLayer/schedule/ApplicationManager.h"

#include "EngineApi/Bars.h"
#include "EngineApi/DeviceStatus.h"
#include "EngineApi/Pages.h"
#include "EngineApi/Programs.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Settings.h"
#include "EngineApi/SystemState.h"
#include "factory/ScheduleFactroy.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"
#include "platform/settings/SetupIndex.h"

namespace EngineLayer
{

using EngineApi::PageHandler;
using Pubhead::NUM_OF_PAGES;

namespace
{

constexpr Platform::Log logger { "EngineLayer/ApplicationManager", "ApplicationManager" };

/** Kind of the device state that goes along with command lines as their flag. */
constexpr int commandLineFlagDevice = 3;
/** Sub-code of RMSG_MAINMENU_NOTIFY for a new rear page. */
constexpr int menuSourceNotice = Platform::menuSource;

void logLines(const std::vector<juce::String>& lines, const Platform::Log::Line& line)
{
    for (const auto& text : lines)
        line.info(text);
}

/** The page as the scheduler sees it: its configuration, and what its handler makes of it now. */
EngineApi::ScheduleInfo::Ptr describePage(PageHandler& handler)
{
    const auto& config = handler.getConfig();
    EngineApi::ScheduleInfo::Ptr info = new EngineApi::ScheduleInfo;
    info->page = config.page;
    info->showLevel = config.showLevel;
    info->playLevel = config.playLevel;
    info->videoLevel = config.videoLevel;
    info->audioLevel = config.audioLevel;
    info->states = handler.getRunState().states;
    info->isSourcePage = config.isSourcePage;
    info->isNormalSource = config.isNormalSource;
    info->isRear = config.isRear;
    handler.adjustScheduleInfo(*info);
    return info;
}

} // namespace

ApplicationManager::ApplicationManager()
    : SystemTimer(Kernel::systemStateManagerId)
{
}

void ApplicationManager::registerHandler(PageHandler::Ptr handler)
{
    const std::lock_guard guard(lock);
    pageOfAppType[handler->getAppType()] = handler->getPage();
    handlers[handler->getPage()] = handler;
}

void ApplicationManager::unregisterHandler(const PageHandler::Ptr& handler)
{
    const std::lock_guard guard(lock);
    handlers.erase(handler->getPage());
    pageOfAppType.erase(handler->getAppType());
}

PageHandler::Ptr ApplicationManager::getHandler(int page) const
{
    const std::lock_guard guard(lock);
    const auto found = handlers.find(page);
    return found == handlers.end() ? nullptr : found->second;
}

std::map<int, PageHandler::Ptr> ApplicationManager::getAllHandlers() const
{
    const std::lock_guard guard(lock);
    return handlers;
}

int ApplicationManager::getPageOfAppType(int appType) const
{
    const std::lock_guard guard(lock);
    const auto found = pageOfAppType.find(appType);
    return found == pageOfAppType.end() ? static_cast<int>(NUM_OF_PAGES) : found->second;
}

ApplicationManager::Snapshot ApplicationManager::getSnapshot() const
{
    const std::lock_guard guard(lock);
    return snapshot;
}

SwitchAction::Ptr ApplicationManager::schedule(const EngineApi::RequestInfo& request)
{
    logLines(Scheduler::describeRequest(request), logger());
    refreshSnapshot();
    const auto input = collectInput(request);
    const bool debug = Platform::CorvaneConfig::isSystemDebug();
    if (debug)
        logLines(Scheduler::describeBefore(input), logger());
    auto action = scheduler.schedule(input);
    if (debug)
    {
        logLines(scheduler.describeAfter(), logger());
        logLines(action->describe(), logger());
    }
    const std::lock_guard guard(lock);
    snapshot.lastNormalSource = scheduler.getState().lastNormalSource;
    snapshot.lastSourcePage = scheduler.getState().lastSourcePage;
    return action;
}

ScheduleInput ApplicationManager::collectInput(const EngineApi::RequestInfo& request) const
{
    const auto current = getSnapshot();
    ScheduleInput input;
    input.request = request;
    for (const auto& [page, handler] : getAllHandlers())
        input.pages[page] = describePage(*handler);
    input.runningPages = current.runningPages;
    input.rearPage = current.rearRunning;
    input.frontShow = current.frontShow;
    input.normalSource = current.normalSource;
    input.deviceFlag = EngineApi::getDeviceState(commandLineFlagDevice);
    input.bluetoothSetting = EngineApi::getSettingInt(Platform::bluetoothSetting) != 0;
    input.pandoraSetting = EngineApi::getSettingInt(Platform::internetRadioSetting) != 0;
    input.defaultSource = Factory::ScheduleFactroy::getInstance()->defaultSource();
    return input;
}

void ApplicationManager::refreshSnapshot()
{
    Snapshot fresh;
    int frontMost = EngineApi::PageStates::notShown;
    int backMost = 0;
    for (const auto& [page, handler] : getAllHandlers())
    {
        const auto run = handler->getRunState();
        if (run.reportedStep == EngineApi::PageRunState::stopped)
            continue;
        if (handler->getConfig().isRear)
        {
            fresh.rearRunning = page;
            continue;
        }
        fresh.runningPages.push_back(page);
        const auto& states = run.states;
        if (fresh.playing == NUM_OF_PAGES && states.playState != EngineApi::PageStates::stopped)
            fresh.playing = page;
        if (states.showState > 1 && states.showState < frontMost)
        {
            frontMost = states.showState;
            fresh.firstBackSource = page;
        }
        if (states.showState < EngineApi::PageStates::notShown && states.showState > backMost)
        {
            backMost = states.showState;
            fresh.lastBack = page;
        }
    }
    const auto& remembered = scheduler.getState();
    fresh.normalSource = fresh.lastNormalSource = remembered.lastNormalSource;
    fresh.frontShow = remembered.frontShowPage;
    fresh.lastSourcePage = remembered.lastSourcePage;

    if (Platform::CorvaneConfig::isSystemDebug())
    {
        const auto line = [](const char* label, int page)
        { return juce::String(label) + ": " + Pubhead::pageName(page); };
        logLines({ line("NormalSrc", fresh.normalSource), line("FirstBackSrc", fresh.firstBackSource),
                   line("LastBack", fresh.lastBack), line("FrontShow", fresh.frontShow),
                   line("Playing", fresh.playing) },
                 logger());
    }
    const std::lock_guard guard(lock);
    snapshot = std::move(fresh);
}

void ApplicationManager::postSwitchUpdate()
{
    const int normalSourceBefore = getSnapshot().normalSource;
    refreshSnapshot(); // who hears of the switch may ask at once
    const auto& state = scheduler.getState();
    if (state.frontShowChanged)
        if (auto* bar = EngineApi::Provided<EngineApi::VolumeBar>::get())
            bar->updateImages(state.frontShowPage);
    if (state.lastSourceChanged)
        EngineApi::postToPage(Pubhead::mbMainMenu, Kernel::MSG_LAST_SOURCE_PAGE, state.lastSourcePage, 0);
    if (state.normalSourceChanged && state.lastNormalSource != normalSourceBefore)
        announceNormalSource(state.lastNormalSource);
    else if (state.rearChanged)
        EngineApi::sendRemoteMessage(Pubhead::AppMainMenu, EngineApi::RMSG_MAINMENU_NOTIFY, menuSourceNotice,
                                     state.rearPage);
}

void ApplicationManager::announceNormalSource(int page) const
{
    EngineApi::postToPage(Pubhead::mbMainMenu, Kernel::MSG_NORMAL_SOURCE, page, 0);
    for (const auto receiver : { Kernel::bluetoothApplicationId, Kernel::deviceStatusManagerId })
        Kernel::postSystemMessage(receiver, Kernel::MSG_NORMAL_SOURCE, page, 0);
}

void ApplicationManager::startBackgroundCheck()
{
    startTimer(backgroundTimer, backgroundCheckMs);
}

void ApplicationManager::checkBackground()
{
    // While anything moves, the timer keeps running and the check is made at a later expiry.
    if (EngineApi::isSystemBusy() || EngineApi::isPageChanging())
        return;
    stopTimer(backgroundTimer);
    closeIdlePrograms();
}

std::set<int> ApplicationManager::findIdlePrograms() const
{
    const auto registered = EngineApi::getRegisteredApps();
    std::set<int> idle(registered.begin(), registered.end());
    const auto current = getSnapshot();
    for (const int page : current.runningPages)
    {
        const auto handler = getHandler(page);
        if (handler != nullptr && (handler->isOnTop() || handler->getConfig().isSourcePage || handler->isResident()))
            idle.erase(handler->getAppType());
    }
    idle.erase(EngineApi::appTypeOfPage(current.rearRunning));
    if (EngineApi::getSystemState() == EngineApi::kISRMode)
        idle.erase(EngineApi::appTypeOfPage(EngineApi::getISRReturnPage()));
    return idle;
}

void ApplicationManager::closeIdlePrograms()
{
    for (const int appType : findIdlePrograms())
    {
        const auto handler = getHandler(getPageOfAppType(appType));
        if (handler == nullptr || handler->isResident())
            continue;
        EngineApi::closeApp(appType);
    }
}

} // namespace EngineLayer

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
    return handler == nullptr ? int { Dsp::noAudioChannel } : handler->getAudioChannel();
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

void registerHandler(PageHandler::Ptr handler)
{
    manager().registerHandler(std::move(handler));
}

void unregisterHandler(PageHandler::Ptr handler)
{
    manager().unregisterHandler(handler);
}

} // namespace EngineApi
