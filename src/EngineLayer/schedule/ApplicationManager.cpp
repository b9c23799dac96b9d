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

/** Kind of the device state that goes along with command lines as their flag. */
constexpr int commandLineFlagDevice = 3;
/** Sub-code of RMSG_MAINMENU_NOTIFY for a new rear page. */
constexpr int menuSourceNotice = 1;

void logLines(const std::vector<juce::String>& lines, int line)
{
    for (const auto& text : lines)
        Platform::Logger::getInstance()->logInfo("EngineLayer/ApplicationManager", line, "ApplicationManager", text);
}

} // namespace

ApplicationManager::ApplicationManager()
    : SystemTimer(Kernel::systemStateManagerId)
{
}

EngineApi::ScheduleInfo::Ptr ApplicationManager::describePage(PageHandler& handler)
{
    const auto& config = handler.getConfig();
    EngineApi::ScheduleInfo::Ptr info = new EngineApi::ScheduleInfo;
    info->page = config.page;
    info->showLevel = config.showLevel;
    info->playLevel = config.playLevel;
    info->videoLevel = config.videoLevel;
    info->audioLevel = config.audioLevel;
    info->states = handler.getRunState().states;
    info->audioChannel = config.audioChannel;
    info->videoChannel = config.videoChannel;
    info->isSourcePage = config.isSourcePage;
    info->isNormalSource = config.isNormalSource;
    info->isRear = config.isRear;
    handler.adjustScheduleInfo(*info);
    return info;
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
    logLines(Scheduler::describeRequest(request), __LINE__);
    refreshSnapshot();
    const auto input = collectInput(request);
    const bool debug = Platform::CorvaneConfig::isSystemDebug();
    if (debug)
        logLines(Scheduler::describeBefore(input), __LINE__);
    auto action = scheduler.schedule(input);
    if (debug)
    {
        logLines(scheduler.describeAfter(), __LINE__);
        logLines(action->describe(), __LINE__);
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
                 __LINE__);
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
