#include "support/ErrorLog.h"
#include "support/ProgramsFixture.h"

#include <thread>

using namespace EngineApi;
using namespace Pubhead;
using namespace testing;
using Extend::ExeMonitor;
using Platform::AppCommandLine;
using Platform::Bundle;
using Platform::RemoteObjFormat;
using Platform::doubles::ProcessDouble;
using Platform::doubles::WindowDouble;
namespace IpcDouble = Platform::IpcDouble;

namespace
{

constexpr const char* radioPath = "/programs/radio";
/** Private message of the view manager: a page is to come next. */
constexpr juce::int32 setNextPageMessage = 1;

class ExeMonitorTest : public ProgramsFixture, public AppConnectStateInterface
{
protected:
    ExeMonitorTest()
    {
        takePosted();
        monitor.addConnectListener(this);
    }

    void onAppConnectState(int appType, int state) override { told.emplace_back(appType, state); }

    bool launchRadio(Bundle::Ptr bundle = nullptr, bool background = false)
    {
        const bool launched = monitor.launchApp(AppRadio, mbFM, radioPath, std::move(bundle), background);
        run();
        return launched;
    }

    /** The radio runs and has said hello; its process. */
    int startRadio()
    {
        launchRadio();
        const int pid = ProcessDouble::takeLaunches().front().pid;
        IpcDouble::setPresent(AppRadio, true, pid);
        fromProgram(AppRadio, RMSG_APP_HELLO, AppRadio);
        takeSent();
        takePosted();
        told.clear();
        return pid;
    }

    static Bundle::Ptr pageShow()
    {
        return RemoteObjFormat::formatCommandLine(*AppCommandLine::genCmdPageShow(mbFM, false));
    }

    std::vector<std::pair<int, int>> told;
};

} // namespace

/** From launch to end: the hello is answered before anything that waited for the program, and its end is told. */
TEST_F(ExeMonitorTest, FollowsAProgramFromItsLaunchToItsEnd)
{
    ASSERT_TRUE(launchRadio());
    const auto launches = ProcessDouble::takeLaunches();
    ASSERT_EQ(launches.size(), 1u);
    EXPECT_EQ(launches[0].path, radioPath);
    EXPECT_EQ(IpcDouble::expectedProcess(AppRadio), launches[0].pid);
    EXPECT_EQ(monitor.getAppState(AppRadio), kStarting);
    expectPosted(Kernel::viewManagerId, setNextPageMessage, mbFM, 0);

    sendRemoteMessage(AppRadio, RMSG_KEY, 1, 2);
    IpcDouble::setPresent(AppRadio, true, launches[0].pid);
    fromProgram(AppRadio, RMSG_APP_HELLO, AppRadio);
    EXPECT_THAT(takeSent(),
                ElementsAre(Sent { AppRadio, RMSG_APP_HELLO_ACK, AppRadio }, Sent { AppRadio, RMSG_KEY, 1, 2 }));

    ProcessDouble::end(launches[0].pid);
    awaitState(AppRadio, kDisconnect);
    EXPECT_THAT(told, ElementsAre(Pair(AppRadio, kStarting), Pair(AppRadio, kConnected), Pair(AppRadio, kDisconnect)));
    EXPECT_EQ(IpcDouble::expectedProcess(AppRadio), -1);
}

TEST_F(ExeMonitorTest, StartsProgramsWithTheCommandLineThatTheLaunchImplies)
{
    const auto extra = Bundle::obtain();
    extra->putInt("Favourite", 3);
    struct Case
    {
        int appType;
        Bundle::Ptr bundle;
        bool background;
        std::string commandLine; ///< kind, page and favourite; none when empty
    };
    const Case cases[] = {
        { AppRadio, nullptr, false, "" },
        { AppUSB, nullptr, true, "hide NUM_OF_PAGES -1" },
        { AppiPod, Bundle::obtain(), true, "hide NUM_OF_PAGES -1" },
        { AppDisc, pageShow(), true, "show mbFM -1" },
        { AppAuxIn, extra, false, "hide NUM_OF_PAGES 3" },
        { AppNavi, pageShow(), false, "" }, // not one of the unit's own
    };
    for (const auto& each : cases)
    {
        SCOPED_TRACE(appTypeName(each.appType));
        ASSERT_TRUE(monitor.launchApp(each.appType, mbFM, radioPath, each.bundle, each.background));
        const auto arguments = ProcessDouble::takeLaunches().at(0).arguments;
        std::string commandLine;
        if (arguments.size() == 2 && arguments[0] == "--command-line")
        {
            const auto said =
                RemoteObjFormat::generateCommandLine(Platform::CmdLineHelper::parseCommandLine(arguments[1]));
            ASSERT_NE(said, nullptr);
            const int favourite = said->hasExtraData() ? said->getExtraData()->getInt("Favourite", -1) : -1;
            commandLine = std::string(said->isPageHide() ? "hide " : "show ") +
                          (said->getPage() == NUM_OF_PAGES ? "NUM_OF_PAGES" : pageName(said->getPage())) + " " +
                          std::to_string(favourite);
        }
        EXPECT_EQ(commandLine, each.commandLine);
        EXPECT_EQ(arguments.isEmpty(), each.commandLine.empty());
    }
}

/** A program that somebody else started is taken over: no second process, and its end is noticed. */
TEST_F(ExeMonitorTest, TakesOverAProgramThatRunsAlready)
{
    const int radio = ProcessDouble::addProcess();
    const int navigation = ProcessDouble::addProcess();
    IpcDouble::setPresent(AppRadio, true, radio);
    WindowDouble::add("AppNavi", navigation);
    EXPECT_TRUE(launchRadio(pageShow()));
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppRadio, RMSG_COMMAND_LINE, 0 }));
    EXPECT_TRUE(monitor.launchApp(AppNavi, mbNavi, "/programs/navi", nullptr, false));
    EXPECT_TRUE(ProcessDouble::takeLaunches().empty());
    for (const auto& [program, process] : { std::pair(AppRadio, radio), std::pair(AppNavi, navigation) })
    {
        EXPECT_EQ(monitor.getAppState(program), kConnected);
        ProcessDouble::end(process);
        awaitState(program, kDisconnect);
    }
    // The bus may not have noticed yet that the process is gone.
    EXPECT_TRUE(launchRadio());
    EXPECT_EQ(ProcessDouble::takeLaunches().size(), 1u);
}

TEST_F(ExeMonitorTest, HandsARunningProgramTheCommandLineOnly)
{
    startRadio();
    EXPECT_TRUE(launchRadio(nullptr, true));
    expectNothingPosted();
    EXPECT_TRUE(launchRadio(pageShow()));
    expectPosted(Kernel::viewManagerId, setNextPageMessage, mbFM, 0);
    EXPECT_TRUE(monitor.showOrLaunchApp(AppRadio, mbAM, radioPath, pageShow()));
    expectPosted(Kernel::viewManagerId, setNextPageMessage, mbAM, 0);
    EXPECT_THAT(takeSent(),
                ElementsAre(Sent { AppRadio, RMSG_COMMAND_LINE, 0 }, Sent { AppRadio, RMSG_COMMAND_LINE, 0 }));
    EXPECT_TRUE(ProcessDouble::takeLaunches().empty());

    EXPECT_TRUE(monitor.showOrLaunchApp(AppUSB, mbUSBAudio, "/programs/usb", nullptr));
    EXPECT_EQ(ProcessDouble::takeLaunches().size(), 1u);
}

TEST_F(ExeMonitorTest, AFailedLaunchChangesNothing)
{
    EXPECT_FALSE(monitor.launchApp(AppRadio, mbFM, "", nullptr, false));
    ProcessDouble::failCreation(true);
    EXPECT_FALSE(launchRadio());
    EXPECT_EQ(monitor.getAppState(AppRadio), kDisconnect);
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(IpcDouble::expectedProcess(AppRadio), -1);
    expectNothingPosted();
}

/**
    The radio was told to quit and hangs when it is wanted again, twice. It is ended by force, then starts once; the
    second wish only gives the new process its command line.
*/
TEST_F(ExeMonitorTest, RunsALaunchBehindAClosingProgramOnce)
{
    const int hanging = startRadio();
    monitor.setAppState(AppRadio, kClosing);
    EXPECT_FALSE(launchRadio());
    EXPECT_FALSE(launchRadio(pageShow()));
    expectNothingPosted();
    EXPECT_EQ(monitor.getTimerInterval(Extend::ExeMonitor::closingTimer), 1500);

    IpcDouble::setPresent(AppRadio, false);
    fire(monitor, Extend::ExeMonitor::closingTimer);
    EXPECT_THAT(ProcessDouble::takeTerminated(), Contains(hanging));
    awaitState(AppRadio, kStarting);
    const auto launches = ProcessDouble::takeLaunches();
    ASSERT_EQ(launches.size(), 1u);
    EXPECT_FALSE(monitor.isTimerRunning(Extend::ExeMonitor::closingTimer));

    IpcDouble::setPresent(AppRadio, true, launches[0].pid);
    fromProgram(AppRadio, RMSG_APP_HELLO, AppRadio);
    EXPECT_EQ(takeSent().size(), 2u) << "the command line and the answer to the hello";
    ProcessDouble::end(launches[0].pid);
    awaitState(AppRadio, kDisconnect);
    EXPECT_TRUE(ProcessDouble::takeLaunches().empty());
}

/** Meanwhile another page is wanted in front. */
TEST_F(ExeMonitorTest, ALaunchThatHasWaitedDoesNotTakeTheFrontOfALaterPage)
{
    const int first = startRadio();
    monitor.setAppState(AppRadio, kClosing);
    EXPECT_FALSE(launchRadio());
    monitor.launchApp(AppUSB, mbUSBAudio, "/programs/usb", nullptr, false);
    run();
    takePosted();
    ProcessDouble::takeLaunches();
    ProcessDouble::end(first);
    awaitState(AppRadio, kStarting);
    EXPECT_EQ(ProcessDouble::takeLaunches().size(), 1u) << "its music is still wanted";
    expectNothingPosted();
}

/**
    Five cycles without an answer are borne, each further one stops the heartbeat to the microcontroller. A frozen program
    is named once, until it has answered again.
*/
TEST_F(ExeMonitorTest, NamesAFrozenProgramAndReportsTheSixthFailingHeartbeat)
{
    startRadio();
    const ErrorLog errors;
    send(Kernel::exeMonitorId, Kernel::MSG_SYS_READY);
    EXPECT_EQ(monitor.getTimerInterval(Extend::ExeMonitor::heartbeatTimer), 6000);
    const auto cycles = [this](int count)
    {
        for (int cycle = 0; cycle < count; ++cycle)
            fire(monitor, Extend::ExeMonitor::heartbeatTimer);
    };
    cycles(1 + 5);
    expectNothingPosted();
    cycles(1);
    expectPosted(Kernel::deviceStatusManagerId, Kernel::MSG_HEARTBEAT_STOP, 0, 0);
    cycles(1);
    expectPosted(Kernel::deviceStatusManagerId, Kernel::MSG_HEARTBEAT_STOP, 0, 0);
    EXPECT_THAT(takeSent(), AllOf(SizeIs(8), Each(Sent { -1, RMSG_HEARTBEAT, 0 })));
    EXPECT_THAT(ErrorLog::take(), Contains("AppType: AppRadio | does not answer the heartbeat").Times(1));

    fromProgram(AppRadio, RMSG_HEARTBEAT_REPLY, AppRadio);
    cycles(1);
    EXPECT_THAT(ErrorLog::take(), IsEmpty());
    cycles(5);
    expectNothingPosted();
    EXPECT_THAT(ErrorLog::take(), Contains("AppType: AppRadio | does not answer the heartbeat").Times(1));
    // A program that is gone owes no answer.
    monitor.setAppState(AppRadio, kDisconnect);
    cycles(3);
    expectNothingPosted();
}

/** A program that is told to quit and has ended before the engine goes on can be started again. */
TEST_F(ExeMonitorTest, IsNotLeftClosingByAProgramThatEndsAtOnce)
{
    startRadio();
    IpcDouble::onPost(
        [this](const IpcDouble::Posted& message)
        {
            if (message.what == RMSG_SOURCE_STOP)
                monitor.setAppState(AppRadio, kDisconnect);
        });
    monitor.closeApp(AppRadio);
    run();
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppRadio, RMSG_SOURCE_STOP, 0 }));
    EXPECT_THAT(told, ElementsAre(Pair(AppRadio, kClosing), Pair(AppRadio, kDisconnect)));
    monitor.closeApp(AppRadio);
    EXPECT_EQ(monitor.getAppState(AppRadio), kDisconnect) << "nobody is there to be closed";
    EXPECT_TRUE(takeSent().empty());
}

/** The bus says who speaks: a radio that calls itself the USB player stays the radio. */
TEST_F(ExeMonitorTest, BelievesTheBusAboutWhoSaysHello)
{
    IpcDouble::setPresent(AppRadio, true, ProcessDouble::addProcess());
    fromProgram(AppRadio, RMSG_APP_HELLO, AppUSB);
    EXPECT_EQ(monitor.getAppState(AppRadio), kConnected);
    EXPECT_EQ(monitor.getAppState(AppUSB), kDisconnect);
}

/**
    What is sent to a program that has just been started reaches it, though its start is told only then; what waited for
    the one before does not.
*/
TEST_F(ExeMonitorTest, KeepsWhatIsSentToTheNewProcess)
{
    sendRemoteMessage(AppRadio, RMSG_KEY, 1, 0);
    monitor.launchApp(AppRadio, mbFM, radioPath, nullptr, true);
    sendRemoteMessage(AppRadio, RMSG_KEY, 2, 0);
    run();
    IpcDouble::setPresent(AppRadio, true, ProcessDouble::takeLaunches().front().pid);
    takeSent();
    fromProgram(AppRadio, RMSG_APP_HELLO, AppRadio);
    const auto sent = takeSent();
    EXPECT_THAT(sent, Contains(Sent { AppRadio, RMSG_KEY, 2 }));
    EXPECT_THAT(sent, Not(Contains(Sent { AppRadio, RMSG_KEY, 1 })));
}

/**
    A program dies, and its page is asked for before that has been noticed: it starts anew. Waiting may fail for a while,
    as it does when the system is short of descriptors: no end of a process is missed.
*/
TEST_F(ExeMonitorTest, StartsAnewWhatHasJustDied)
{
    const int pid = startRadio();
    ProcessDouble::failWaits(3); // which keeps the watching thread busy for a while
    launchRadio(nullptr, true);
    monitor.launchApp(AppUSB, mbUSBAudio, "/programs/usb", nullptr, true);
    ProcessDouble::takeLaunches();
    IpcDouble::setPresent(AppRadio, false);
    ProcessDouble::end(pid);
    monitor.showOrLaunchApp(AppRadio, mbFM, radioPath, pageShow());
    awaitState(AppRadio, kStarting);
    EXPECT_EQ(monitor.getAppState(AppUSB), kStarting);
    const auto launches = ProcessDouble::takeLaunches();
    ASSERT_EQ(launches.size(), 1u);
    ProcessDouble::end(launches[0].pid);
    awaitState(AppRadio, kDisconnect);
}

/**
    A process that ends has left the channel before it is gone. What is asked for in between is not told to nobody: it
    waits for the end, or for the program if that comes back; and what is asked for later waits behind it.
*/
TEST_F(ExeMonitorTest, WaitsForAProgramThatHasLeftTheChannel)
{
    const int pid = startRadio();
    IpcDouble::setPresent(AppRadio, false);
    monitor.showOrLaunchApp(AppRadio, mbFM, radioPath, pageShow());
    run();
    EXPECT_TRUE(ProcessDouble::takeLaunches().empty());
    IpcDouble::setPresent(AppRadio, true, pid);
    fire(monitor, ExeMonitor::closingTimer);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppRadio, RMSG_COMMAND_LINE, 0 }));

    IpcDouble::setPresent(AppRadio, false);
    monitor.showOrLaunchApp(AppRadio, mbFM, radioPath, pageShow());
    ProcessDouble::end(pid);
    ASSERT_TRUE(eventually([&] { return monitor.getAppState(AppRadio) == kDisconnect; }));
    EXPECT_FALSE(monitor.launchApp(AppRadio, mbAM, radioPath, pageShow(), false)) << "it would overtake the first";
    awaitState(AppRadio, kStarting);
    EXPECT_EQ(ProcessDouble::takeLaunches().size(), 1u);
}

/** Several threads want the same program at the same moment while others come and go: it starts once. */
TEST_F(ExeMonitorTest, StartsAProgramOnceForManyThreads)
{
    std::vector<std::thread> threads;
    std::atomic<int> launched { 0 };
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back(
            [&]
            {
                launched += monitor.launchApp(AppRadio, mbFM, radioPath, nullptr, true) ? 1 : 0;
                monitor.launchApp(AppUSB, mbUSBAudio, "/programs/usb", nullptr, true);
                monitor.terminateApp(AppUSB);
            });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(launched, 4);
    const auto launches = ProcessDouble::takeLaunches();
    EXPECT_EQ(std::count_if(launches.begin(), launches.end(), [](const auto& each) { return each.path == radioPath; }),
              1);
}
