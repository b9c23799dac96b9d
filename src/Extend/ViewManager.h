#pragma once

#include "EngineApi/Programs.h"
#include "kernel/Singleton.h"
#include "kernel/SystemTask.h"
#include "kernel/SystemTimer.h"
#include "platform/base/Pubhead.h"
#include "platform/base/Shared.h"
#include "platform/screen/Window.h"

namespace Extend
{

/**
    Brings one page after the other to the front: the old page's program hides it and confirms, then the new page's
    program shows it and confirms. Each answer has a time-out of 1500 ms. Calls of other threads are posted to the
    component.
*/
class ViewManager : public Kernel::ComponentTask,
                    public EngineApi::AppConnectStateInterface,
                    public EngineApi::RemoteMsgFilterInterface,
                    public Kernel::SystemTimer,
                    public Kernel::Singleton<ViewManager>
{
public:
    enum ShowState : std::int8_t { kNormal, kHiding, kShowing };
    enum Timer : int { requestTimer = 1, showTimer = 2, hideTimer = 3, reportTimer = 4 };

    /** Any thread. */
    void setNextPage(int page);
    void reportTopPage(int page);
    void programSaidHello(int appType, bool again);
    int getCurrentPage() const { return currentPage; }
    bool isChanging() const { return showState != kNormal; }

    /** What is under way; without the others' waiting for it. Any thread. */
    struct alignas(8) View
    {
        std::int8_t current = Pubhead::NUM_OF_PAGES, next = Pubhead::NUM_OF_PAGES, third = Pubhead::NUM_OF_PAGES;
        std::int8_t showState = kNormal;
        bool isShown = false; ///< the current page
    };
    View getView() const { return view; }

    void onRelease() override;
    void handleMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, const Kernel::Payload& payload) override;
    void onFilterMessage(const Platform::RemoteMessage& message) override;
    void onAppConnectState(int appType, int state) override;

private:
    friend class Kernel::Singleton<ViewManager>;

    enum PrivateMessage : juce::int32 // arg1 the page
    {
        msgSetNextPage = 1,
        msgRequestShow = 2,
        msgHideReady = 3,
        msgShowReady = 4,
        msgReportTopPage = 5,
        msgTopShown = 6,
        msgProgramThere = 7 // arg1 the program, arg2 whether it was there before
    };

    enum PageState { kAppShow, kAppHiding, kAppHidden };

    ViewManager();

    void handle(juce::int32 id, juce::int32 arg1, juce::int32 arg2);
    void publish();
    void handleStart();
    void handleTimer(int timerId);
    void handleNextPage(int page);
    void handleRequestShow(int page);
    void handleHideReady(int page);
    void handleShowReady(int page, bool answered);
    void handleReportTopPage(int page);
    void handleTopShown(int page);
    void handleProgramThere(int appType, bool again);

    bool isInFront(int page) const { return page == currentPage && currentPageState == kAppShow; }
    void awaitRequest();
    /** The view waits for nobody any more. */
    void settle();
    void showNextPage();
    void hidePage(int page);
    void coverCurrentPage();
    /** Nothing for a page whose report nobody waits for. */
    void confirmReport(int page);

    Platform::WindowHandle findNavigationWindow();
    void showNavigationWindow(bool visible);

    void logPage(const char* label, int page) const;
    void logCurrentPage() const;

    Platform::Shared<int> currentPage { Pubhead::NUM_OF_PAGES };
    Platform::Shared<ShowState> showState { kNormal };

    std::atomic<View> view {}; ///< a copy for those who look on

    // The component's thread only.
    int nextPage = Pubhead::NUM_OF_PAGES;
    int thirdPage = Pubhead::NUM_OF_PAGES; ///< asked for while one page goes and another comes; the latest counts
    bool thirdPageRequested = false;       ///< by its program itself
    PageState currentPageState = kAppHidden;
    struct Wish
    {
        int page = Pubhead::NUM_OF_PAGES;
        Kernel::Cause cause;
    };
    Wish wish;                              ///< the last one
    int reportPage = Pubhead::NUM_OF_PAGES; ///< the page whose report is waited for
    bool resendShow = false;                ///< the current page is told to show again on its next request
    Platform::WindowHandle navigationWindow = Platform::noWindow;
};

} // namespace Extend
