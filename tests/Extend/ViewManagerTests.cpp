#include "support/FakePageHandler.h"
#include "support/ProgramsFixture.h"

using namespace EngineApi;
using namespace Pubhead;
using namespace testing;
using Extend::ViewManager;
using Platform::doubles::WindowDouble;

namespace
{

class ViewManagerTest : public ProgramsFixture
{
protected:
    ViewManagerTest()
    {
        add(&view, Kernel::viewManagerId);
        send(Kernel::viewManagerId, Kernel::MSG_SYS_START);
        for (const int page : { mbFM, mbAM, mbUSBAudio, mbSetup })
        {
            registerHandler(new FakePageHandler(page));
            connect(appTypeOfPage(page));
        }
        takePosted();
    }

    void setNext(int page)
    {
        setNextPage(page);
        run();
    }
    void says(juce::int32 what, int page) { fromProgram(appTypeOfPage(page), what, page); }
    void asksFor(int page) { says(RMSG_PAGE_REQUEST_SHOW, page); }
    Sent show(int page) { return { appTypeOfPage(page), RMSG_PAGE_SHOW, page }; }
    Sent hide(int page) { return { appTypeOfPage(page), RMSG_PAGE_HIDE, page }; }
    Sent covered(int page) { return { appTypeOfPage(page), RMSG_PAGE_COVERED, page }; }

    /** The page is in front and nothing is under way. */
    void bringToFront(int page)
    {
        setNext(page);
        asksFor(page);
        if (view.isTimerRunning(Extend::ViewManager::hideTimer))
            fire(view, Extend::ViewManager::hideTimer);
        says(RMSG_PAGE_SHOW_READY, page);
        ASSERT_EQ(getCurrentPage(), page);
        ASSERT_FALSE(isPageChanging());
        takeSent();
    }

    /** From now on every program does at once, inside the call that tells it, what it is told. */
    static void letProgramsAnswerAtOnce()
    {
        Platform::IpcDouble::onPost(
            [](const Platform::IpcDouble::Posted& told)
            {
                const auto answer = [&](juce::int32 what, int page)
                { Platform::IpcDouble::injectMessage(told.appType, what, page); };
                if (told.what == RMSG_PAGE_HIDE)
                    answer(RMSG_PAGE_HIDE_READY, told.arg1);
                else if (told.what == RMSG_PAGE_SHOW)
                    answer(RMSG_PAGE_SHOW_READY, told.arg1);
                else if (told.what == RMSG_COMMAND_LINE)
                    answer(RMSG_PAGE_REQUEST_SHOW,
                           Platform::RemoteObjFormat::generateCommandLine(told.bundle)->getPage());
            });
    }

    static Platform::Bundle::Ptr pageShow(int page)
    {
        return Platform::RemoteObjFormat::formatCommandLine(*Platform::AppCommandLine::genCmdPageShow(page, false));
    }

    Extend::ViewManager& view = *Extend::ViewManager::getInstance();
};

} // namespace

TEST_F(ViewManagerTest, ChangesPagesByHandshake)
{
    setNext(mbFM);
    EXPECT_TRUE(takeSent().empty()) << "the program has time to ask for its page itself";
    asksFor(mbFM);
    EXPECT_THAT(takeSent(), ElementsAre(show(mbFM))) << "nothing is in front that would have to go";
    EXPECT_TRUE(isPageChanging());
    says(RMSG_PAGE_SHOW_READY, mbFM);
    EXPECT_EQ(getCurrentPage(), mbFM);
    EXPECT_FALSE(isPageChanging());
    EXPECT_TRUE(takeSent().empty());

    setNext(mbUSBAudio);
    asksFor(mbUSBAudio);
    EXPECT_THAT(takeSent(), ElementsAre(hide(mbFM)));
    says(RMSG_PAGE_SHOW_READY, mbUSBAudio); // Out of turn.
    says(RMSG_PAGE_HIDE_READY, mbUSBAudio); // Not the page that hides.
    EXPECT_TRUE(takeSent().empty());
    says(RMSG_PAGE_HIDE_READY, mbFM);
    EXPECT_THAT(takeSent(), ElementsAre(show(mbUSBAudio)));
    EXPECT_EQ(getCurrentPage(), mbFM);
    says(RMSG_PAGE_SHOW_READY, mbUSBAudio);
    EXPECT_THAT(takeSent(), ElementsAre(covered(mbFM)));
    EXPECT_EQ(getCurrentPage(), mbUSBAudio);
}

/**
    A program that answers before the engine goes on is not forgotten, however its page is asked for: no timer has to
    bring the page.
*/
TEST_F(ViewManagerTest, ShowsPagesOfProgramsThatAnswerAtOnce)
{
    letProgramsAnswerAtOnce();
    const auto expectInFront = [&](int page, const char* how)
    {
        run();
        EXPECT_EQ(getCurrentPage(), page) << how;
        EXPECT_FALSE(isPageChanging()) << how;
    };
    EXPECT_TRUE(launchApp(AppRadio, mbFM, {}, pageShow(mbFM), false));
    expectInFront(mbFM, "connected, launched");
    EXPECT_TRUE(showOrLaunchApp(AppUSB, mbUSBAudio, {}, pageShow(mbUSBAudio)));
    expectInFront(mbUSBAudio, "connected, shown");
    monitor.setAppState(AppSetup, kDisconnect);
    run();
    EXPECT_TRUE(launchApp(AppSetup, mbSetup, {}, pageShow(mbSetup), false));
    expectInFront(mbSetup, "runs and is taken over");
}

TEST_F(ViewManagerTest, LeavesTwoPagesOfOneProgramToTheProgram)
{
    bringToFront(mbFM);
    setNext(mbAM);
    asksFor(mbAM);
    says(RMSG_PAGE_HIDE_READY, mbFM);
    says(RMSG_PAGE_SHOW_READY, mbAM);
    EXPECT_THAT(takeSent(), ElementsAre(hide(mbFM), show(mbAM)));
    EXPECT_EQ(getCurrentPage(), mbAM);
}

/** Silent programs hold the screen 1500 ms a step; one that cannot be reached does not hold it at all. */
TEST_F(ViewManagerTest, GoesOnWithoutAnswers)
{
    bringToFront(mbFM);
    setNext(mbUSBAudio);
    EXPECT_EQ(view.getTimerInterval(Extend::ViewManager::requestTimer), 1500);
    fire(view, Extend::ViewManager::requestTimer);
    EXPECT_FALSE(view.isTimerRunning(Extend::ViewManager::requestTimer));
    EXPECT_EQ(view.getTimerInterval(Extend::ViewManager::hideTimer), 1500);
    fire(view, Extend::ViewManager::hideTimer);
    EXPECT_FALSE(view.isTimerRunning(Extend::ViewManager::hideTimer));
    EXPECT_EQ(view.getTimerInterval(Extend::ViewManager::showTimer), 1500);
    fire(view, Extend::ViewManager::showTimer);
    EXPECT_FALSE(view.isTimerRunning(Extend::ViewManager::showTimer));
    EXPECT_EQ(getCurrentPage(), mbUSBAudio);
    EXPECT_FALSE(isPageChanging());

    Platform::IpcDouble::setPresent(AppUSB, false);
    Platform::IpcDouble::setPresent(AppSetup, false);
    setNext(mbSetup);
    fire(view, Extend::ViewManager::requestTimer);
    EXPECT_EQ(view.getTimerInterval(Extend::ViewManager::hideTimer), 1);
    fire(view, Extend::ViewManager::hideTimer);
    EXPECT_EQ(view.getTimerInterval(Extend::ViewManager::showTimer), 1);
    fire(view, Extend::ViewManager::showTimer);
    EXPECT_EQ(getCurrentPage(), mbSetup);
    Platform::IpcDouble::setPresent(AppSetup, true);
    takeSent();
    asksFor(mbSetup);
    EXPECT_THAT(takeSent(), ElementsAre(show(mbSetup))) << "the order had not gone out";
    says(RMSG_PAGE_SHOW_READY, mbSetup);

    setNext(mbFM);
    asksFor(mbFM);
    says(RMSG_PAGE_HIDE_READY, mbSetup);
    setNext(mbSetup);
    fire(view, Extend::ViewManager::requestTimer);
    fire(view, Extend::ViewManager::showTimer);
    EXPECT_TRUE(view.isTimerRunning(Extend::ViewManager::requestTimer)) << "its wait ended while another page came";
}

/** While FM hides for USB, setup is wanted: USB is never shown. */
TEST_F(ViewManagerTest, APageWantedWhileTheOldOneHidesReplacesTheNext)
{
    for (const bool asksItself : { true, false })
    {
        SCOPED_TRACE(asksItself);
        bringToFront(mbFM);
        setNext(mbUSBAudio);
        asksFor(mbUSBAudio);
        setNext(mbSetup);
        if (asksItself)
            asksFor(mbSetup);
        says(RMSG_PAGE_HIDE_READY, mbFM);
        if (!asksItself)
        {
            EXPECT_FALSE(isPageChanging()) << "it waits for the program, or its time";
            fire(view, Extend::ViewManager::requestTimer);
        }
        says(RMSG_PAGE_SHOW_READY, mbSetup);
        EXPECT_THAT(takeSent(), ElementsAre(hide(mbFM), show(mbSetup), covered(mbFM)));
        EXPECT_EQ(getCurrentPage(), mbSetup);
    }
}

/** While USB comes up, setup is wanted: USB is shown, then setup. The last of several wishes counts. */
TEST_F(ViewManagerTest, APageWantedWhileTheNewOneComesFollowsIt)
{
    for (const bool asksItself : { true, false })
    {
        SCOPED_TRACE(asksItself);
        bringToFront(mbFM);
        setNext(mbUSBAudio);
        asksFor(mbUSBAudio);
        says(RMSG_PAGE_HIDE_READY, mbFM);
        setNext(mbAM);
        setNext(mbSetup);
        if (asksItself)
            asksFor(mbSetup);
        takeSent();
        says(RMSG_PAGE_SHOW_READY, mbUSBAudio);
        EXPECT_EQ(getCurrentPage(), mbUSBAudio);
        EXPECT_EQ(isPageChanging(), asksItself);
        if (!asksItself)
            fire(view, Extend::ViewManager::requestTimer);
        EXPECT_THAT(takeSent(), ElementsAre(covered(mbFM), hide(mbUSBAudio)));
        says(RMSG_PAGE_HIDE_READY, mbUSBAudio);
        says(RMSG_PAGE_SHOW_READY, mbSetup);
        EXPECT_THAT(takeSent(), ElementsAre(show(mbSetup), covered(mbUSBAudio)));
        EXPECT_EQ(getCurrentPage(), mbSetup);
        EXPECT_FALSE(isPageChanging());
    }
}

/** While FM hides for USB, setup is wanted and then USB again: nobody may bring setup back. */
TEST_F(ViewManagerTest, APageThatIsOnItsWayAndWantedAgainIsTheLastWish)
{
    bringToFront(mbFM);
    setNext(mbUSBAudio);
    asksFor(mbUSBAudio);
    setNext(mbSetup);
    asksFor(mbSetup);
    setNext(mbUSBAudio);
    says(RMSG_PAGE_HIDE_READY, mbFM);
    says(RMSG_PAGE_SHOW_READY, mbUSBAudio);
    EXPECT_THAT(takeSent(), ElementsAre(hide(mbFM), show(mbUSBAudio), covered(mbFM)));
    EXPECT_FALSE(isPageChanging());
}

/** The program of the next page dies before it has shown it; its next process has to be told, and may answer late. */
TEST_F(ViewManagerTest, APageWhoseProgramDiedOnTheWayIsShownByTheNextOne)
{
    bringToFront(mbFM);
    setNext(mbUSBAudio);
    asksFor(mbUSBAudio);
    says(RMSG_PAGE_HIDE_READY, mbFM);
    monitor.setAppState(AppUSB, kDisconnect);
    run();
    EXPECT_EQ(getCurrentPage(), mbUSBAudio);
    EXPECT_FALSE(isPageChanging()) << "what ended does not answer any more";
    takeSent();

    connect(AppUSB);
    setNext(mbUSBAudio);
    asksFor(mbUSBAudio);
    EXPECT_THAT(takeSent(), ElementsAre(show(mbUSBAudio)));
    monitor.setAppState(AppUSB, kDisconnect);
    run();
    connect(AppUSB);
    says(RMSG_PAGE_SHOW_READY, mbUSBAudio);
    setNext(mbFM);
    asksFor(mbFM);
    EXPECT_THAT(takeSent(), ElementsAre(hide(mbUSBAudio)));
    says(RMSG_PAGE_HIDE_READY, mbUSBAudio);
    says(RMSG_PAGE_SHOW_READY, mbFM);

    setNext(mbUSBAudio);
    asksFor(mbUSBAudio);
    says(RMSG_PAGE_HIDE_READY, mbFM);
    setNext(mbUSBAudio); // on its way
    monitor.setAppState(AppUSB, kDisconnect);
    run();
    connect(AppUSB);
    takeSent();
    asksFor(mbUSBAudio);
    EXPECT_THAT(takeSent(), ElementsAre(show(mbUSBAudio))) << "of the page in front its program asks last";
}

/**
    The navigation program answers nothing: its window is shown and hidden directly, and found under any of its titles.
*/
TEST_F(ViewManagerTest, ShowsAndHidesTheNavigationWindowItself)
{
    using Operation = WindowDouble::Operation;
    for (const char* title : { "AppNavi", "GPS - Navigation", "QRTNavi" })
    {
        SCOPED_TRACE(title);
        const auto window = WindowDouble::add(title);
        bringToFront(mbFM);
        setNext(mbNavi);
        EXPECT_EQ(view.getTimerInterval(Extend::ViewManager::requestTimer), 1);
        fire(view, Extend::ViewManager::requestTimer);
        says(RMSG_PAGE_HIDE_READY, mbFM);
        EXPECT_EQ(view.getTimerInterval(Extend::ViewManager::showTimer), 1);
        fire(view, Extend::ViewManager::showTimer);
        EXPECT_EQ(getCurrentPage(), mbNavi);
        EXPECT_THAT(WindowDouble::takeActions(), ElementsAre(WindowDouble::Action { window, Operation::show },
                                                             WindowDouble::Action { window, Operation::foreground }));
        setNext(mbUSBAudio);
        asksFor(mbUSBAudio);
        EXPECT_EQ(view.getTimerInterval(Extend::ViewManager::hideTimer), 1);
        fire(view, Extend::ViewManager::hideTimer);
        EXPECT_TRUE(WindowDouble::takeActions().empty()) << "it stays until the next page is there";
        says(RMSG_PAGE_SHOW_READY, mbUSBAudio);
        EXPECT_THAT(WindowDouble::takeActions(), ElementsAre(WindowDouble::Action { window, Operation::hide }));
        EXPECT_EQ(getCurrentPage(), mbUSBAudio);
        WindowDouble::remove(window);
    }
}

/** A program that has hung does one after the other what it was told, the show and the hide after it. */
TEST_F(ViewManagerTest, ALateHideIsTheLastThingThatAProgramHasDone)
{
    bringToFront(mbFM);
    setNext(mbUSBAudio);
    asksFor(mbUSBAudio);
    says(RMSG_PAGE_HIDE_READY, mbFM);
    setNext(mbSetup);
    asksFor(mbSetup);
    fire(view, Extend::ViewManager::showTimer);
    setNext(mbAM);
    fire(view, Extend::ViewManager::hideTimer);
    ASSERT_FALSE(isPageChanging());
    takeSent();
    says(RMSG_PAGE_SHOW_READY, mbUSBAudio);
    says(RMSG_PAGE_HIDE_READY, mbUSBAudio);
    setNext(mbUSBAudio);
    asksFor(mbUSBAudio);
    EXPECT_THAT(takeSent(), ElementsAre(show(mbUSBAudio)));
}

/** The bus has gone with the order to show the page; the program is the same, and says hello again. */
TEST_F(ViewManagerTest, AProgramThatComesBackToTheBusIsToldToShowItsPage)
{
    bringToFront(mbFM);
    setNext(mbUSBAudio);
    asksFor(mbUSBAudio);
    Platform::IpcDouble::setPresent(AppUSB, false);
    says(RMSG_PAGE_HIDE_READY, mbFM);
    fire(view, Extend::ViewManager::showTimer);
    Platform::IpcDouble::setPresent(AppUSB, true);
    takeSent();
    const auto hello = [this](bool again)
    {
        programSaidHello(AppUSB, again);
        run();
    };
    hello(true);
    EXPECT_THAT(takeSent(), ElementsAre(show(mbUSBAudio)));
    hello(true);
    EXPECT_THAT(takeSent(), ElementsAre(show(mbUSBAudio))) << "the bus has gone once more, before the answer was due";
    hello(false);
    EXPECT_TRUE(takeSent().empty()) << "a new one's hello, told to show while the hello was on its way here";
    says(RMSG_PAGE_SHOW_READY, mbUSBAudio);
    hello(true);
    EXPECT_TRUE(takeSent().empty());
}

/** The old page's program dies while it hides it: the change does not wait for its answer. */
TEST_F(ViewManagerTest, APageWhoseProgramDiesWhileItHidesItIsGone)
{
    bringToFront(mbFM);
    setNext(mbUSBAudio);
    asksFor(mbUSBAudio);
    takeSent();
    monitor.setAppState(AppRadio, kDisconnect);
    run();
    EXPECT_THAT(takeSent(), ElementsAre(show(mbUSBAudio)));
}

/** The program in front dies: nobody has to hide, and even its own page can come back. */
TEST_F(ViewManagerTest, ShowsAtOnceWhenTheProgramInFrontIsGone)
{
    for (const int next : { mbUSBAudio, mbFM })
    {
        SCOPED_TRACE(pageName(next));
        bringToFront(mbFM);
        monitor.setAppState(AppRadio, kDisconnect);
        run();
        connect(AppRadio);
        setNext(next);
        asksFor(next);
        EXPECT_THAT(takeSent(), ElementsAre(show(next)));
        says(RMSG_PAGE_SHOW_READY, next);
        EXPECT_EQ(getCurrentPage(), next);
    }
}

TEST_F(ViewManagerTest, HasNothingToDoForThePageInFront)
{
    bringToFront(mbFM);
    setNext(mbFM);
    EXPECT_FALSE(view.isTimerRunning(Extend::ViewManager::requestTimer));
    asksFor(mbFM);
    asksFor(mbUSBAudio); // Nobody wanted it.
    EXPECT_TRUE(takeSent().empty());
    EXPECT_FALSE(isPageChanging());
}

/** The page in front was told again what it shows: its report waits for the program, which may then ask once more. */
TEST_F(ViewManagerTest, ConfirmsThePageOnTopOnce)
{
    bringToFront(mbFM);
    reportTopPage(mbFM);
    run();
    EXPECT_EQ(view.getTimerInterval(Extend::ViewManager::reportTimer), 400);
    says(RMSG_PAGE_TOP_SHOWN, mbUSBAudio);
    expectNothingPosted();
    says(RMSG_PAGE_TOP_SHOWN, mbFM);
    expectPosted(Kernel::systemStateManagerId, Kernel::MSG_SWITCH_REPORT, mbFM, 1);
    EXPECT_FALSE(view.isTimerRunning(Extend::ViewManager::reportTimer));
    asksFor(mbFM);
    asksFor(mbFM);
    EXPECT_THAT(takeSent(), ElementsAre(show(mbFM)));

    reportTopPage(mbFM);
    run();
    fire(view, Extend::ViewManager::reportTimer);
    expectPosted(Kernel::systemStateManagerId, Kernel::MSG_SWITCH_REPORT, mbFM, 1);
    says(RMSG_PAGE_TOP_SHOWN, mbFM);
    expectNothingPosted();
    asksFor(mbFM);
    EXPECT_TRUE(takeSent().empty());
}

/** The program of the next page says nothing, and the late request of a page that was wanted before comes meanwhile. */
TEST_F(ViewManagerTest, ALateRequestOfAnotherPageDoesNotHoldUpTheNextOne)
{
    bringToFront(mbFM);
    setNext(mbUSBAudio);
    asksFor(mbCamera);
    asksFor(mbFM);
    fire(view, Extend::ViewManager::requestTimer);
    EXPECT_THAT(takeSent(), ElementsAre(hide(mbFM)));
    says(RMSG_PAGE_HIDE_READY, mbFM);
    says(RMSG_PAGE_SHOW_READY, mbUSBAudio);
    EXPECT_EQ(getCurrentPage(), mbUSBAudio);
}

/** A source comes over its own rear page: its program may have hidden that page before it hears that it was hidden. */
TEST_F(ViewManagerTest, APageThatIsHiddenNeedsNoConfirmation)
{
    const auto hides = [&]
    {
        bringToFront(mbRearAV2);
        setNext(mbAuxin2);
        asksFor(mbAuxin2);
    };
    const auto expectConfirmed = [&]
    {
        expectPosted(Kernel::systemStateManagerId, Kernel::MSG_SWITCH_REPORT, mbRearAV2, 1);
        EXPECT_FALSE(view.isTimerRunning(Extend::ViewManager::reportTimer));
        says(RMSG_PAGE_TOP_SHOWN, mbRearAV2);
        expectNothingPosted();
    };
    hides();
    reportTopPage(mbRearAV2);
    run();
    expectNothingPosted();
    says(RMSG_PAGE_HIDE_READY, mbRearAV2);
    expectConfirmed();
    says(RMSG_PAGE_SHOW_READY, mbAuxin2);

    hides();
    says(RMSG_PAGE_HIDE_READY, mbRearAV2);
    reportTopPage(mbRearAV2);
    run();
    expectConfirmed();
    says(RMSG_PAGE_SHOW_READY, mbAuxin2);
    reportTopPage(mbRearAV2);
    run();
    expectConfirmed();

    // Its program dies in front.
    bringToFront(mbRearAV2);
    view.onAppConnectState(appTypeOfPage(mbRearAV2), kDisconnect);
    reportTopPage(mbRearAV2);
    run();
    expectConfirmed();
}
