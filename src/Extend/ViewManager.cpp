#include "Extend/ViewManager.h"

#include "EngineApi/Pages.h"
#include "EngineApi/ProgramTimes.h"
#include "kernel/MessageIds.h"
#include "kernel/SystemEngine.h"
#include "kernel/Trace.h"
#include "platform/base/Logger.h"

namespace Extend
{

using namespace EngineApi;
using namespace Pubhead;
using Kernel::Trace;

namespace
{

constexpr Platform::Log logger { "Extend/ViewManager", "ViewManager" };

/** Where no answer can come. */
constexpr int atOnceMs = 1;

constexpr juce::int32 succeeded = 1;

/** Titles of the navigation programs that the unit may carry, after the name of the endpoint. */
constexpr const char* navigationTitles[] = { "iGO 8", "GPS - Navigation", "NavMate", "Navi", "QRTNavi" };

constexpr const char* showStateNames[] = { "kNormal", "kHiding", "kShowing" };
constexpr const char* pageStateNames[] = { "kAppShow", "kAppHiding", "kAppHidden" };

/** False when it did not go out, also for a page that no program owns. */
bool sendToProgram(juce::int32 what, int page)
{
    const int appType = appTypeOfPage(page);
    if (appType == AppUnknown)
        return false;
    Trace::note(Trace::Kind::viewTold, what, page);
    return sendRemoteMessage(appType, what, page, 0);
}

bool isShownByProgram(int page)
{
    return page != mbNavi && appTypeOfPage(page) != AppUnknown;
}

/**
    Without its program a page is in front, but not on the screen. Not every page has a program that connects; one that
    answers may be a moment ahead of its registration.
*/
bool canShow(int page, bool answered)
{
    const int appType = appTypeOfPage(page);
    return !isShownByProgram(page) || (answered ? getAppState(appType) != kDisconnect : isAppConnected(appType));
}

} // namespace

ViewManager::ViewManager()
    : Kernel::SystemTimer(Kernel::viewManagerId)
{
}

void ViewManager::setNextPage(int page)
{
    Kernel::postSystemMessage(Kernel::viewManagerId, msgSetNextPage, page, 0);
}

void ViewManager::reportTopPage(int page)
{
    Kernel::postSystemMessage(Kernel::viewManagerId, msgReportTopPage, page, 0);
}

void ViewManager::programSaidHello(int appType, bool again)
{
    Kernel::postSystemMessage(Kernel::viewManagerId, msgProgramThere, appType, again);
}

void ViewManager::onRelease()
{
    removeConnectListener(this);
}

void ViewManager::onAppConnectState(int appType, int state)
{
    if (state != kDisconnect)
        return;
    // What ended does not answer any more; the next process of a page that it was about to show asks anew.
    if (showState == kHiding && appTypeOfPage(currentPage) == appType)
        handleHideReady(currentPage);
    else if (showState == kShowing && appTypeOfPage(nextPage) == appType)
        handleShowReady(nextPage, false);
    if (showState == kNormal && appTypeOfPage(currentPage) == appType)
        currentPageState = kAppHidden;
    publish();
}

void ViewManager::onFilterMessage(const Platform::RemoteMessage& message)
{
    const auto postToSelf = [&](PrivateMessage id)
    {
        Trace::note(Trace::Kind::viewAnswered, message.what, message.arg1);
        Kernel::postSystemMessage(Kernel::viewManagerId, id, message.arg1, message.arg2);
    };
    switch (message.what)
    {
    case RMSG_PAGE_REQUEST_SHOW:
        return postToSelf(msgRequestShow);
    case RMSG_PAGE_SHOW_READY:
        return postToSelf(msgShowReady);
    case RMSG_PAGE_HIDE_READY:
        return postToSelf(msgHideReady);
    case RMSG_PAGE_TOP_SHOWN:
        return postToSelf(msgTopShown);
    default:
        return;
    }
}

void ViewManager::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload&)
{
    handle(id, arg1, arg2);
    publish();
}

void ViewManager::publish()
{
    const auto small = [](int page) { return static_cast<std::int8_t>(page); };
    view = { small(currentPage), small(nextPage), small(thirdPage), showState, currentPageState == kAppShow };
}

void ViewManager::handle(juce::int32 id, juce::int32 arg1, juce::int32 arg2)
{
    switch (id)
    {
    case Kernel::MSG_SYS_START:
        return handleStart();
    case Kernel::MSG_SYS_TIMER:
        return handleTimer(arg1);
    case msgSetNextPage:
        return handleNextPage(arg1);
    case msgRequestShow:
        return handleRequestShow(arg1);
    case msgHideReady:
        return handleHideReady(arg1);
    case msgShowReady:
        if (showState == kShowing && arg1 == nextPage && arg1 == wish.page)
            wish.cause.reached(Kernel::Cause::page);
        return handleShowReady(arg1, true);
    case msgReportTopPage:
        return handleReportTopPage(arg1);
    case msgTopShown:
        return handleTopShown(arg1);
    case msgProgramThere:
        return handleProgramThere(arg1, arg2 != 0);
    default:
        return;
    }
}

void ViewManager::handleStart()
{
    addConnectListener(this);
    for (const auto what : { RMSG_PAGE_REQUEST_SHOW, RMSG_PAGE_HIDE_READY, RMSG_PAGE_SHOW_READY, RMSG_PAGE_TOP_SHOWN })
        addRemoteMsgFilter(what, this);
}

void ViewManager::handleTimer(int timerId)
{
    const bool answerCouldCome = getTimerInterval(timerId) > atOnceMs;
    stopTimer(timerId);
    const auto logSilence = [=](int page, const char* lacking)
    {
        if (answerCouldCome && page != NUM_OF_PAGES)
            logger().info(juce::String(pageName(page)) + lacking);
    };
    // A program that stays silent counts as one that has answered. It does so here and now: what is posted could meet
    // the page after it.
    switch (timerId)
    {
    case requestTimer:
        if (showState != kNormal)
            return;
        if (thirdPage != NUM_OF_PAGES)
            nextPage = std::exchange(thirdPage, NUM_OF_PAGES);
        logSilence(nextPage, " does not ask to be shown");
        return handleRequestShow(nextPage);
    case showTimer:
        logSilence(nextPage, " does not answer its show");
        handleShowReady(nextPage, false);
        if (showState == kNormal && !answerCouldCome && isShownByProgram(currentPage)) // It was not told.
            currentPageState = kAppHidden;
        return;
    case hideTimer:
        logSilence(currentPage, " does not answer its hide");
        return handleHideReady(currentPage);
    case reportTimer:
        logSilence(reportPage, " does not confirm its command line");
        return confirmReport(reportPage);
    default:
        return;
    }
}

void ViewManager::handleNextPage(int page)
{
    wish = { page, Kernel::Cause::current() };
    if (showState == kNormal)
    {
        nextPage = page;
        logPage("Set NextShowPage : ", page);
    }
    else
    {
        // The latest wish counts, also when it is for the page that is on its way.
        thirdPage = page == nextPage ? NUM_OF_PAGES : page;
        thirdPageRequested = false;
        logPage("Set ThirdShowPage : ", thirdPage);
    }
    if (showState == kNormal && isInFront(nextPage))
        nextPage = NUM_OF_PAGES;
    else // The program has this long to ask for its page itself.
        startTimer(requestTimer, nextPage == mbNavi ? atOnceMs : requestDelayMs);
}

void ViewManager::awaitRequest()
{
    // The wait may have ended while the page before this one was on its way.
    if (nextPage != NUM_OF_PAGES && !isTimerRunning(requestTimer))
        startTimer(requestTimer, requestDelayMs);
}

void ViewManager::handleRequestShow(int page)
{
    logPage("RequestShow : ", page);
    if (showState == kNormal)
    {
        // The request of another page, perhaps a late one, does not end the wait for this one's.
        if (page == nextPage)
            stopTimer(requestTimer);
        if (page == NUM_OF_PAGES || isInFront(page))
        {
            if (page == currentPage && std::exchange(resendShow, false))
                sendToProgram(RMSG_PAGE_SHOW, page);
            return;
        }
        // It was in front before its program was there to show it.
        if (page == currentPage && nextPage == NUM_OF_PAGES)
            nextPage = page;
        if (page == nextPage)
        {
            if (currentPageState == kAppShow)
                hidePage(currentPage);
            else
                showNextPage();
        }
    }
    if (page == thirdPage)
        thirdPageRequested = true;
    logCurrentPage();
}

void ViewManager::handleHideReady(int page)
{
    logPage("HidingPageReady : ", page);
    // A late answer: of all that a program was told meanwhile it did this last.
    if (showState == kNormal && page == currentPage)
        currentPageState = kAppHidden;
    if (showState != kHiding || page != currentPage)
        return;
    currentPageState = kAppHiding;
    stopTimer(hideTimer);
    confirmReport(page);
    if (thirdPage != NUM_OF_PAGES)
    {
        nextPage = std::exchange(thirdPage, NUM_OF_PAGES);
        if (!thirdPageRequested)
        {
            settle();
            return;
        }
    }
    showNextPage();
}

void ViewManager::handleShowReady(int page, bool answered)
{
    logPage("ShowPageReady : ", page);
    // A late answer, perhaps of a program that was not there yet when it was told.
    if (showState == kNormal && page == currentPage)
        currentPageState = canShow(page, answered) ? kAppShow : kAppHidden;
    if (showState != kShowing || page != nextPage)
        return;
    stopTimer(showTimer);
    coverCurrentPage();
    currentPage = nextPage;
    nextPage = std::exchange(thirdPage, NUM_OF_PAGES);
    if (nextPage != NUM_OF_PAGES && thirdPageRequested)
    {
        hidePage(currentPage);
        currentPageState = kAppHiding;
    }
    else
    {
        currentPageState = canShow(currentPage, answered) ? kAppShow : kAppHidden;
        settle();
    }
    resendShow = false;
    logCurrentPage();
}

void ViewManager::handleReportTopPage(int page)
{
    reportPage = page;
    startTimer(reportTimer, reportTimeoutMs);
    // A program has nothing to confirm for a page that it has hidden meanwhile, or that went with its last process.
    if (page != currentPage || currentPageState != kAppShow)
        confirmReport(page);
}

void ViewManager::handleTopShown(int page)
{
    if (page == reportPage)
        resendShow = page == currentPage && showState == kNormal;
    confirmReport(page);
}

void ViewManager::handleProgramThere(int appType, bool again)
{
    // It was away with the bus, and the order to show its page with it, now or before. For a new one an order has waited.
    if (showState == kShowing && appTypeOfPage(nextPage) == appType)
    {
        if (again)
            showNextPage();
    }
    else if (showState == kNormal && nextPage == NUM_OF_PAGES && currentPageState != kAppShow &&
             appTypeOfPage(currentPage) == appType)
        handleRequestShow(currentPage);
}

void ViewManager::confirmReport(int page)
{
    if (page == NUM_OF_PAGES || page != reportPage)
        return;
    stopTimer(reportTimer);
    reportPage = NUM_OF_PAGES;
    Kernel::postSystemMessage(Kernel::systemStateManagerId, Kernel::MSG_SWITCH_REPORT, page, succeeded);
}

void ViewManager::settle()
{
    showState = kNormal;
    Trace::note(Trace::Kind::pageSettled, currentPage.load());
    awaitRequest();
}

void ViewManager::showNextPage()
{
    showState = kShowing;
    Trace::note(Trace::Kind::pageShowing, nextPage);
    if (nextPage == mbNavi)
    {
        showNavigationWindow(true);
        startTimer(showTimer, atOnceMs);
        return;
    }
    startTimer(showTimer, sendToProgram(RMSG_PAGE_SHOW, nextPage) ? answerTimeoutMs : atOnceMs);
}

void ViewManager::hidePage(int page)
{
    showState = kHiding;
    Trace::note(Trace::Kind::pageHiding, page);
    if (page == mbNavi)
        startTimer(hideTimer, atOnceMs);
    else
        startTimer(hideTimer, sendToProgram(RMSG_PAGE_HIDE, page) ? answerTimeoutMs : atOnceMs);
}

void ViewManager::coverCurrentPage()
{
    // A program changes between its own pages itself.
    if (appTypeOfPage(currentPage) == appTypeOfPage(nextPage))
        return;
    if (currentPage != mbNavi)
    {
        sendToProgram(RMSG_PAGE_COVERED, currentPage);
        return;
    }
    showNavigationWindow(false);
    if (thirdPage == NUM_OF_PAGES)
        logger().info(juce::String(">>>>>>>>>>>>>>>Navi Hide"));
}

Platform::WindowHandle ViewManager::findNavigationWindow()
{
    if (navigationWindow != Platform::noWindow && Platform::isWindow(navigationWindow))
        return navigationWindow;
    navigationWindow = Platform::findWindow(Platform::IPCMsg::MessageHelper::getDestName(AppNavi));
    for (const auto* title : navigationTitles)
    {
        if (navigationWindow != Platform::noWindow)
            break;
        navigationWindow = Platform::findWindow(title);
    }
    return navigationWindow;
}

void ViewManager::showNavigationWindow(bool visible)
{
    const auto window = findNavigationWindow();
    if (window == Platform::noWindow)
        return;
    Platform::showWindow(window, visible);
    if (visible)
        Platform::setForegroundWindow(window);
}

void ViewManager::logPage(const char* label, int page) const
{
    logger().info(juce::String(label) + pageName(page) + " | ShowState: " + showStateNames[showState]);
}

void ViewManager::logCurrentPage() const
{
    logger().info(juce::String("CurrShowPage : ") + pageName(currentPage) +
                  " | CurrPageState : " + pageStateNames[currentPageState]);
}

} // namespace Extend

namespace EngineApi
{

using Extend::ViewManager;

void setNextPage(int page)
{
    ViewManager::getInstance()->setNextPage(page);
}

void programSaidHello(int appType, bool again)
{
    ViewManager::getInstance()->programSaidHello(appType, again);
}

void reportTopPage(int page)
{
    ViewManager::getInstance()->reportTopPage(page);
}

int getCurrentPage()
{
    return ViewManager::getInstance()->getCurrentPage();
}

bool isPageChanging()
{
    return ViewManager::getInstance()->isChanging();
}

} // namespace EngineApi
