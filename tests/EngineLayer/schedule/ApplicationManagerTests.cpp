#include "EngineApi/Bars.h"
#include "EngineApi/Provided.h"
#include "platform/config/Configuration.h"
#include "support/LogCapture.h"
#include "support/StateFixture.h"

using namespace EngineApi;
using namespace EngineLayer;
using namespace Pubhead;
using namespace testing;

namespace
{

class ApplicationManagerTest : public StateFixture
{
protected:
    ~ApplicationManagerTest() override { Platform::Configuration::get().systemDebug = false; }

    /** The program is present, and its page handler says whether it must stay. */
    void connectPage(int page, bool resident)
    {
        pages[page]->resident = resident;
        connect(appTypeOfPage(page));
    }
    void fireBackgroundCheck()
    {
        applications.expire(ApplicationManager::backgroundTimer);
        run();
    }
    bool isCheckRunning() const { return applications.isTimerRunning(ApplicationManager::backgroundTimer); }
};

class ImagesOnly : public VolumeBar
{
public:
    ImagesOnly() { Provided<VolumeBar>::set(this); }
    ~ImagesOnly() override { Provided<VolumeBar>::set(nullptr); }
    void postMessage(juce::int32, juce::int32, juce::int32, Kernel::Payload) override {}
    void updateImages(int frontPage) override
    {
        fronts.push_back(frontPage);
        sources.push_back(getNormalSource());
    }
    bool isShown() const override { return false; }

    std::vector<int> fronts;
    std::vector<int> sources; ///< what played then, by the unit's own answer
};

} // namespace

TEST_F(ApplicationManagerTest, UnknownPagesAreNobodys)
{
    for (const int page : { static_cast<int>(mbDVBT), static_cast<int>(NUM_OF_PAGES), -1, 4711 })
    {
        SCOPED_TRACE(page);
        EXPECT_EQ(getHandler(page), nullptr);
        EXPECT_EQ(getOwnerId(page), 0);
        EXPECT_EQ(getSource(page), NUM_OF_SOURCES);
        EXPECT_EQ(appTypeOfPage(page), AppUnknown);
        EXPECT_FALSE(isNormalSource(page) || isRearPage(page) || isAvailable(page));
        requestShowPage(page, true);
        requestStopPage(page);
        notifyPage(page);
        launchBackProgram(page);
        postScheduleResult(page, scheduleDone);
        postToPage(page, Kernel::MSG_APP_KEY, 1, 2);
    }
    run();
    EXPECT_EQ(events(), Events {});
    EXPECT_EQ(getPageOfAppType(AppDVBT), NUM_OF_PAGES);
    EXPECT_EQ(getRearPage(), mbRearOff);
}

TEST_F(ApplicationManagerTest, ThePictureOfTheUnitIsLogged)
{
    enterNormalRun();
    complete(mbFM);
    complete(mbRearAV1);
    complete(mbSetup);
    Platform::Configuration::get().systemDebug = true;
    const LogCapture log;
    request(mbAM, AppAction::ToRun, true);
    const auto lines = LogCapture::take();
    Events texts;
    for (const auto& line : lines)
        if (line.tag == "ApplicationManager")
            texts.push_back(line.text);
    ASSERT_GE(texts.size(), 8u);
    // The rear page took the top of the stack, and setup took it from the rear page.
    EXPECT_EQ(
        Events(texts.begin() + 3, texts.begin() + 8),
        (Events { "NormalSrc: mbFM", "FirstBackSrc: mbFM", "LastBack: mbFM", "FrontShow: mbSetup", "Playing: mbFM" }));
    EXPECT_THAT(texts, Contains("++++++++++++ | Current Rear App State"));
    EXPECT_THAT(texts, Contains("------------ | Next Front App State"));
    EXPECT_THAT(texts, Contains("++++++++++++ | Schedule SwitchAction"));
}

TEST_F(ApplicationManagerTest, AdjustedLevelsReachTheScheduler)
{
    enterNormalRun();
    complete(mbFM);
    for (const bool competes : { false, true })
    {
        pages[mbBTPhone]->competesForSound = competes;
        complete(mbBTPhone);
        EXPECT_EQ(pages[mbFM]->getRunState().states.playState, competes ? PageStates::stopped : PageStates::playing);
        complete(mbBTPhone, AppAction::ToStop);
    }
}

TEST_F(ApplicationManagerTest, ACompletedSwitchIsAnnounced)
{
    const ImagesOnly bar;
    connect(AppMainMenu);
    enterNormalRun();
    complete(mbFM);
    takeSent();
    request(mbRearAV1, AppAction::ToRun);
    EXPECT_EQ(bar.fronts.back(), mbFM);
    EXPECT_EQ(bar.sources.back(), mbFM) << "who hears of a switch may ask at once";
    answerAll();
    EXPECT_EQ(takeSent(), (std::vector<Sent> { { AppMainMenu, RMSG_MAINMENU_NOTIFY, 1, mbRearAV1 } }));
    EXPECT_EQ(bar.fronts.back(), mbRearAV1);
    EXPECT_EQ(getRearPage(), mbRearAV1);
    const auto drawn = bar.fronts.size();

    // The same source once more: nothing is new to anybody.
    complete(mbMainMenu);
    events();
    request(mbFM, AppAction::ToShow);
    answerAll();
    for (const auto& event : events())
        EXPECT_THAT(event, Not(StartsWith("normal ")));
    EXPECT_EQ(takeSent(), std::vector<Sent> {});
    EXPECT_EQ(bar.fronts.size(), drawn + 2);
}

TEST_F(ApplicationManagerTest, ProgramsThatNobodyNeedsAreClosed)
{
    enterNormalRun();
    connectPage(mbMainMenu, false); // in front
    connectPage(mbFM, false);       // runs, a source page
    connectPage(mbSetup, false);    // runs behind the front
    connectPage(mbUSBAudio, true);  // stays
    connectPage(mbRearAV1, false);  // runs in the rear zone
    connectPage(mbEQ, false);       // does not run
    connect(AppDVBT);               // no page
    for (const int page : { mbFM, mbRearAV1, mbSetup, mbMainMenu })
        complete(page);
    takeSent();
    ASSERT_TRUE(isCheckRunning());

    // While anything is switched the check waits.
    request(mbFM, AppAction::ToPlay);
    request(mbAM, AppAction::ToPlay);
    ASSERT_TRUE(isSystemBusy());
    fireBackgroundCheck();
    EXPECT_TRUE(isCheckRunning());
    EXPECT_EQ(takeSent(), std::vector<Sent> {});
    answerAll();

    // A request that came first is served first: its program is needed.
    const RequestInfo early { mbEQ, AppAction::ToRun, false };
    Kernel::postSystemMessage(Kernel::systemStateManagerId, Kernel::MSG_SCHEDULE_REQUEST, early.page,
                              early.toArgument());
    fireBackgroundCheck();
    EXPECT_EQ(takeSent(), std::vector<Sent> {});
    answerAll();
    complete(mbEQ, AppAction::ToStop);
    complete(mbMainMenu);

    fireBackgroundCheck();
    EXPECT_FALSE(isCheckRunning());
    EXPECT_EQ(takeSent(), (std::vector<Sent> { { AppSetup, RMSG_SOURCE_STOP, 0 }, { AppEQ, RMSG_SOURCE_STOP, 0 } }));
    EXPECT_EQ(getAppState(AppSetup), kClosing);
    EXPECT_EQ(getAppState(AppRadio), kConnected);
}

TEST_F(ApplicationManagerTest, TheProgramThatIsrModeReturnsToStaysOpen)
{
    connectPage(mbUSBAudio, false);
    enterNormalRun();
    complete(mbUSBAudio);
    enter(kISRMode);
    answerAll();
    takeSent();
    fireBackgroundCheck();
    EXPECT_EQ(takeSent(), std::vector<Sent> {});

    complete(mbFM);
    enter(kDummyPowerOff);
    answerAll();
    fireBackgroundCheck();
    EXPECT_EQ(takeSent(), (std::vector<Sent> { { AppUSB, RMSG_SOURCE_STOP, 0 } }));
}
