#include "ApplicationLayer/framework/ApplicationTask.h"
#include "EngineLayer/settings/DataManager.h"
#include "support/ApplicationFixture.h"
#include "support/LogCapture.h"

using namespace ApplicationLayer;
using namespace EngineApi;
using namespace Pubhead;
using namespace testing;
using EngineApi::AppAction;
using EngineApi::PageStates;
using EngineApi::SwitchType;
using Extend::ViewManager;
using Platform::AppCommandLine;
using Platform::Bundle;
using Platform::RemoteObjFormat;
using Platform::doubles::ProcessDouble;

namespace
{

constexpr const char* auxPath = "/programs/aux";
constexpr const char* backPath = "/programs/aux-background";
constexpr int autoFlag = 1 << 16;

/** An application of plain handlers, as the AUX inputs are, that keeps what reaches its own hands. */
class PlainApplication : public ApplicationTask
{
public:
    PlainApplication()
        : ApplicationTask({ new AppHandler(mbAuxin1), new AppHandler(mbAuxin2), new AppHandler(mbRearAV1),
                            new AppHandler(mbAVOff), new AppHandler(mbEQ), new AppHandler(mbMainMenu),
                            new AppHandler(mbBTAudio), new AppHandler(mbUSBAudio) })
    {
    }
    void handleOwnMessage(const Kernel::SystemMessage& message) override
    {
        const auto* remote = Kernel::payloadAs<Platform::RemoteMessage>(message.payload);
        own.emplace_back(message.id, remote == nullptr ? 0 : remote->what);
    }

    std::vector<std::pair<int, int>> own;
};

class AppHandlerTest : public ApplicationFixture
{
protected:
    AppHandlerTest()
    {
        auto& configuration = Platform::Configuration::get();
        configuration.programs = { { mbAuxin1, auxPath }, { mbAuxin2, auxPath } };
        configuration.backgroundPrograms = { { mbAuxin2, backPath } };
        add(&view, Kernel::viewManagerId);
        application = new PlainApplication;
        add(application.get(), Kernel::auxInApplicationId);
        takePosted();
    }
    ~AppHandlerTest() override { Platform::Configuration::get() = {}; }

    void order(int page, SwitchType type, int showState, const AppCommandLine::Ptr& commandLine = nullptr)
    {
        PageStates states;
        states.showState = showState;
        carryOut(page, type, states, commandLine);
    }

    /** One page of the program is told. */
    void says(juce::int32 what, juce::int32 arg1 = 0, juce::int32 arg2 = 0, Bundle::Ptr bundle = nullptr)
    {
        auto message = Platform::RemoteMessage::obtain();
        message->what = what;
        message->arg1 = arg1;
        message->arg2 = arg2;
        message->bundle = std::move(bundle);
        message->appType = AppAuxIn;
        toPage(mbAuxin1, Kernel::MSG_APP_REMOTE, 0, 0, message.get());
    }

    PageHandler& handler(int page) { return *getHandler(page); }

    void expectReport(int page) { expectPosted(Kernel::systemStateManagerId, Kernel::MSG_SWITCH_REPORT, page, 1); }
    void expectRequest(int page, AppAction action, bool autoSwitch)
    {
        expectPosted(Kernel::systemStateManagerId, Kernel::MSG_SCHEDULE_REQUEST, page,
                     static_cast<int>(action) | (autoSwitch ? autoFlag : 0));
    }

    Extend::ViewManager& view = *Extend::ViewManager::getInstance();
    juce::ReferenceCountedObjectPtr<PlainApplication> application;
};

AppCommandLine::Ptr withExtra(AppCommandLine::Ptr commandLine)
{
    const auto extra = Bundle::obtain();
    extra->putBool("frontshow", true);
    commandLine->putExtraData(extra);
    return commandLine;
}

} // namespace

TEST_F(AppHandlerTest, CarriesOutOrders)
{
    const auto show = AppCommandLine::genCmdPageShow(mbAuxin1, false);
    const auto leave = AppCommandLine::genCmdSourceExit(mbAuxin1, mbFM);
    const auto hide = AppCommandLine::genCmdPageHide(mbAuxin1, mbFM);
    const auto decorated = withExtra(AppCommandLine::genCmdPageShow(mbAuxin1, false));
    struct Case
    {
        const char* name;
        bool connected;
        int page;
        SwitchType type;
        int showState;
        AppCommandLine::Ptr commandLine;
        const char* launched; ///< path, "" for none
        int commandLinesSent;
    };
    const Case cases[] = {
        { "run on top starts the program", false, mbAuxin1, SwitchType::ToRun, 1, show, auxPath, 0 },
        { "run behind starts the background program", false, mbAuxin2, SwitchType::ToRun, 2, nullptr, backPath, 0 },
        { "run on top of a page without a program", false, mbRearAV1, SwitchType::ToRun, 1, show, "", 0 },
        { "change to the top starts the program", false, mbAuxin1, SwitchType::ToChange, 1, show, auxPath, 0 },
        { "run on top of a running program", true, mbAuxin1, SwitchType::ToRun, 1, show, "", 1 },
        { "stop with a command line", true, mbAuxin1, SwitchType::ToStop, 125, leave, "", 1 },
        { "change to the top", true, mbAuxin1, SwitchType::ToChange, 1, show, "", 1 },
        { "change behind, no page hide", true, mbAuxin1, SwitchType::ToChange, 2, leave, "", 1 },
        { "change behind, hide of a page that is not in front", true, mbAuxin1, SwitchType::ToChange, 2, hide, "", 0 },
        { "top level with nothing to add", true, mbAuxin1, SwitchType::ToShowTopLevel, 1, show, "", 0 },
        { "top level with extra data", true, mbAuxin1, SwitchType::ToShowTopLevel, 1, decorated, "", 1 },
    };
    for (const auto& each : cases)
    {
        SCOPED_TRACE(each.name);
        monitor.setAppState(AppAuxIn, kDisconnect);
        Platform::IpcDouble::setPresent(AppAuxIn, false);
        if (each.connected)
            connect(AppAuxIn);
        run();
        takeSent();
        const auto before = handler(each.page).getRunState();

        order(each.page, each.type, each.showState, each.commandLine);
        expectReport(each.page);
        expectNothingPosted();
        const auto launches = ProcessDouble::takeLaunches();
        EXPECT_EQ(launches.empty() ? juce::String() : launches[0].path, each.launched);
        EXPECT_THAT(takeSent(), AllOf(SizeIs(each.commandLinesSent), Each(Sent { AppAuxIn, RMSG_COMMAND_LINE, 0 })));

        const auto after = handler(each.page).getRunState();
        if (each.type == SwitchType::ToShowTopLevel)
        {
            EXPECT_EQ(after.states, before.states);
        }
        else if (each.type == SwitchType::ToStop)
        {
            EXPECT_EQ(after.reportedStep, PageRunState::stopped);
            EXPECT_EQ(after.states, PageStates());
        }
        else
        {
            EXPECT_EQ(after.reportedStep, PageRunState::running);
            EXPECT_EQ(after.states.showState, each.showState);
        }
    }
}

/** The hide goes out for the page that is in front by both accounts, and then the program's word is waited for. */
TEST_F(AppHandlerTest, HidesOnlyThePageInFront)
{
    connect(AppAuxIn);
    const auto hide = AppCommandLine::genCmdPageHide(mbAuxin1, mbFM);
    order(mbAuxin1, SwitchType::ToRun, 1);
    expectReport(mbAuxin1);
    order(mbAuxin1, SwitchType::ToChange, 2, hide); // The program has not shown it yet.
    expectReport(mbAuxin1);
    order(mbAuxin1, SwitchType::ToChange, 1);
    expectReport(mbAuxin1);
    fire(view, Extend::ViewManager::requestTimer);
    fire(view, Extend::ViewManager::showTimer);
    ASSERT_EQ(getCurrentPage(), mbAuxin1);
    takeSent();

    order(mbAuxin1, SwitchType::ToChange, 2, hide);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppAuxIn, RMSG_COMMAND_LINE, 0 }));
    expectNothingPosted();
    fire(view, Extend::ViewManager::reportTimer);
    expectReport(mbAuxin1);

    // It is told even where the program's word comes before the engine goes on, and by then the page knows where it is.
    order(mbAuxin1, SwitchType::ToChange, 1);
    expectReport(mbAuxin1);
    send(Kernel::viewManagerId, Kernel::MSG_SYS_START);
    int showStateThen = 0;
    Platform::IpcDouble::onPost(
        [&](const Platform::IpcDouble::Posted&)
        {
            showStateThen = handler(mbAuxin1).getRunState().states.showState;
            Platform::IpcDouble::injectMessage(AppAuxIn, RMSG_PAGE_TOP_SHOWN, mbAuxin1);
        });
    order(mbAuxin1, SwitchType::ToChange, 2, hide);
    Platform::IpcDouble::onPost({});
    expectReport(mbAuxin1);
    EXPECT_FALSE(view.isTimerRunning(Extend::ViewManager::reportTimer));
    EXPECT_EQ(showStateThen, 2);
    takeSent();

    order(mbAuxin1, SwitchType::ToChange, 3, hide); // Not on top any more.
    expectReport(mbAuxin1);
    EXPECT_TRUE(takeSent().empty());
}

TEST_F(AppHandlerTest, RequestsToStop)
{
    playing(mbAuxin1);
    handler(mbAuxin1).requestState(AppAction::ToStop, true);
    expectRequest(mbAuxin1, AppAction::ToStop, true); // Does not run: there is nothing to replace.

    order(mbAuxin1, SwitchType::ToRun, 2);
    expectReport(mbAuxin1);
    says(RMSG_SOURCE_STOP);
    expectRequest(mbAVOff, AppAction::ToRun, true);
    playing(mbAuxin2);
    handler(mbAuxin1).requestState(AppAction::ToStop, false);
    expectRequest(mbAuxin1, AppAction::ToStop, false);
    expectNothingPosted();

    order(mbRearAV1, SwitchType::ToRun, 2);
    expectReport(mbRearAV1);
    handler(mbRearAV1).requestState(AppAction::ToStop, true);
    expectRequest(mbRearAV1, AppAction::ToStop, true);
    order(mbRearAV1, SwitchType::ToChange, 1);
    expectReport(mbRearAV1);
    handler(mbRearAV1).requestState(AppAction::ToStop, true);
    expectRequest(mbAuxin2, AppAction::ToRun, true);
    expectRequest(mbRearAV1, AppAction::ToStop, true);
}

TEST_F(AppHandlerTest, RequestsToShow)
{
    auto& page = handler(mbAuxin1);
    page.requestShow(false);
    expectRequest(mbAuxin1, AppAction::ToRun, false);
    order(mbAuxin1, SwitchType::ToRun, 2);
    expectReport(mbAuxin1);
    page.requestShow(true);
    expectRequest(mbAuxin1, AppAction::ToRun, true); // It runs, but nobody would show it.
    connect(AppAuxIn);
    page.requestShow(true);
    expectRequest(mbAuxin1, AppAction::ToShow, true);
    order(mbAuxin1, SwitchType::ToChange, 1);
    expectReport(mbAuxin1);
    page.requestShow(true);
    expectNothingPosted();
    page.requestShow(false);
    expectRequest(mbAuxin1, AppAction::ToShow, false);
}

TEST_F(AppHandlerTest, PassesKeysAndNoticesToTheProgram)
{
    connect(AppAuxIn);
    toPage(mbAuxin2, Kernel::MSG_APP_KEY, 42, 2);
    handler(mbAuxin2).notifyPage();
    run();
    EXPECT_THAT(takeSent(),
                ElementsAre(Sent { AppAuxIn, RMSG_KEY, 42, 2 }, Sent { AppAuxIn, RMSG_PAGE_NOTIFY, mbAuxin2 }));
    toPage(mbFM, Kernel::MSG_APP_KEY, 42, 2); // Not a page of this application.
    EXPECT_TRUE(takeSent().empty());
    Kernel::postSystemMessage(Kernel::auxInApplicationId, Kernel::MSG_SYS_READY, 0, 0);
    run();
    EXPECT_THAT(application->own, ElementsAre(Pair(Kernel::MSG_SYS_READY, 0)));
}

TEST_F(AppHandlerTest, ProcessesWhatAllProgramsMaySay)
{
    connect(AppMainMenu);
    takePosted();
    says(RMSG_APP_EVENT, 5, mbSetup);
    expectPosted(Kernel::mainMenuApplicationId, Kernel::MSG_MENU_PAGE, mbSetup, 0);
    says(RMSG_APP_EVENT, 4, 7);
    expectPosted(Kernel::mainMenuApplicationId, Kernel::MSG_MENU_EVENT, 7, 0);
    says(RMSG_MAINMENU_EVENT, 1, 2);
    expectPosted(Kernel::mainMenuApplicationId, Kernel::MSG_MENU_REMOTE_EVENT, 1, 2);
    says(RMSG_STATE_TO_SYSTEM, mbAuxin1, 2);
    expectPosted(Kernel::systemStateManagerId, Kernel::MSG_POWER_OFF_CONFIRM, mbAuxin1, 2);
    says(RMSG_EQ_PAGE_SHOW);
    expectRequest(mbEQ, AppAction::ToRun, false);
    says(RMSG_EQ_PAGE_HIDE);
    expectRequest(mbEQ, AppAction::ToStop, true);
    says(RMSG_MAINMENU_RELAY, 9);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppMainMenu, RMSG_MAINMENU_NOTIFY, 4, 9 }));
    says(RMSG_IGNORED, 5);
    toPage(mbAuxin1, Kernel::MSG_APP_REMOTE); // Without a message.
    expectNothingPosted();
    EXPECT_TRUE(application->own.empty());

    says(RMSG_APP_EVENT, 6);
    says(RMSG_RADIO_EVENT);
    EXPECT_THAT(application->own, ElementsAre(Pair(Kernel::MSG_APP_REMOTE, RMSG_APP_EVENT),
                                              Pair(Kernel::MSG_APP_REMOTE, RMSG_RADIO_EVENT)));
}

TEST_F(AppHandlerTest, ServesTheWiredRemote)
{
    const auto texts = Bundle::obtain();
    texts->putString("string1", "Artist");
    texts->putInt("pos1", 2);
    texts->putString("string2", "Title");
    texts->putInt("pos2", 4);
    says(RMSG_WIRED_REMOTE_TEXT, 0, 0, texts);
    says(RMSG_WIRED_REMOTE_TEXT, 0, 1, texts);
    says(RMSG_WIRED_REMOTE_TEXT, 2, 9);
    says(RMSG_WIRED_REMOTE_TEXT, 1, 9, texts);
    EXPECT_THAT(remote.calls, ElementsAre("clear and forget", "text 0 2 Artist", "text 1 4 Title", "text 0 2 Artist",
                                          "text 1 4 Title", "dimmer 9"));

    // A unit without it drops what is meant for it.
    Provided<WiredRemote>::set(nullptr);
    says(RMSG_WIRED_REMOTE_TEXT, 0, 0, texts);
}

TEST_F(AppHandlerTest, StoresSettingsOfPrograms)
{
    constexpr int number = 279, text = 284;
    ScratchUnit::emptySettings("279 = 1\n284 = \"Zone 2\"\n");
    ASSERT_TRUE(EngineLayer::DataManager::getInstance()->loadSystemFile());
    says(RMSG_SETTING_CHANGED, number, 1, RemoteObjFormat::formatInt(6));
    says(RMSG_SETTING_CHANGED, text, 0, RemoteObjFormat::formatString("Cabin"));
    EXPECT_EQ(getSettingInt(number), 6);
    EXPECT_EQ(getSettingString(text), "Cabin");
    const LogCapture log;
    says(RMSG_SETTING_CHANGED, number, 1);
    says(RMSG_SETTING_CHANGED, number, 1, RemoteObjFormat::formatString("six"));
    says(RMSG_SETTING_CHANGED, text, 0, RemoteObjFormat::formatInt(6));
    EXPECT_EQ(getSettingInt(number), 6);
    EXPECT_EQ(getSettingString(text), "Cabin");
    EXPECT_EQ(LogCapture::take().size(), 3u) << "each is named once";

    // Room for the settings of the unit: a program that makes up numbers or fills them gets none of it.
    for (const int unknown : { 5000, 5001, -1 })
    {
        says(RMSG_SETTING_CHANGED, unknown, 1, RemoteObjFormat::formatInt(6));
        EXPECT_FALSE(isSettingKnown(unknown));
    }
    says(RMSG_SETTING_CHANGED, text, 0,
         RemoteObjFormat::formatString(juce::String::repeatedString("x", 64 * 1024 + 1)));
    EXPECT_EQ(getSettingString(text), "Cabin");
    EXPECT_EQ(LogCapture::take().size(), 1u) << "the first is named";
}

TEST_F(AppHandlerTest, TellsTheFactoryTestWhichSourcePlays)
{
    const auto reportsOf = [this](int page, int status)
    {
        playing(page);
        toPage(mbAuxin2, Kernel::MSG_SCHEDULE_RESULT, status);
        return answers();
    };
    EXPECT_THAT(reportsOf(mbAuxin2, scheduleDone), IsEmpty()) << "not under test";
    setEnterTestMode(true);
    EXPECT_THAT(reportsOf(mbAuxin2, scheduleDone), ElementsAre("00 01 05 00"));
    EXPECT_THAT(reportsOf(mbBTAudio, scheduleDone), ElementsAre("00 01 0D 02"));
    EXPECT_THAT(reportsOf(mbUSBAudio, scheduleDone), ElementsAre("00 01 0A 01"));
    EXPECT_THAT(reportsOf(mbAuxin1, scheduleDone), IsEmpty()) << "no code";
    for (const int status : { scheduleRefused, scheduleQueued, scheduleFailed })
        EXPECT_THAT(reportsOf(mbAuxin2, status), IsEmpty());
}
