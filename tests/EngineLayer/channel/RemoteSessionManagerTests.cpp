#include "EngineLayer/channel/RemoteSessionManager.h"

#include "EngineLayer/system/SystemInfo.h"
#include "lowlayer/RemotecommDev.h"
#include "platform/base/Pool.h"
#include "platform/settings/SysInfo.h"
#include "platform/settings/SysInfoItems.h"
#include "support/ErrorLog.h"
#include "support/FakePageHandler.h"
#include "support/ProgramsFixture.h"

using namespace EngineApi;
using namespace Pubhead;
using Platform::AppCommandLine;
using Platform::RemoteMessage;
using Platform::RemoteObjFormat;
using testing::ElementsAre;
using testing::IsEmpty;
namespace IpcDouble = Platform::IpcDouble;

namespace
{

/** With a radio and a USB page, so that there is somebody to hear of programs. */
class RemoteSessionTest : public ProgramsFixture
{
protected:
    RemoteSessionTest()
    {
        registerHandler(new FakePageHandler(mbFM));
        registerHandler(new FakePageHandler(mbUSBAudio));
        takePosted();
    }

    /** As the executable monitor tells it. */
    static void state(int appType, int state) { session().onAppConnectState(appType, state); }
    static EngineLayer::RemoteSessionManager& session() { return *EngineLayer::RemoteSessionManager::getInstance(); }

    /** What was posted to pages: their numbers and the messages. */
    std::vector<std::pair<juce::int32, juce::int32>> takePageMessages()
    {
        std::vector<std::pair<juce::int32, juce::int32>> messages;
        for (const auto& each : takePosted())
            messages.emplace_back(each.handlerIndex, each.id);
        return messages;
    }

    static bool sendCommandLine(int appType, const AppCommandLine::Ptr& commandLine)
    {
        return sendRemoteMessage(appType, RMSG_COMMAND_LINE, 0, 0, RemoteObjFormat::formatCommandLine(*commandLine));
    }
};

using PageMessage = std::pair<juce::int32, juce::int32>;

std::size_t sparePoolObjects(std::string_view pool)
{
    for (const auto& each : Platform::ListedPool::all())
        if (each.name == pool)
            return each.spare;
    return 0;
}

struct Filter : RemoteMsgFilterInterface
{
    void onFilterMessage(const RemoteMessage& message) override
    {
        senders.push_back(message.appType);
        last = { message.arg1, message.arg2 };
    }
    std::vector<int> senders;
    std::pair<int, int> last;
};

} // namespace

/** Messages wait, in order, for the program they are for; what makes no sense to one that does not run is dropped. */
TEST_F(RemoteSessionTest, KeepsMessagesUntilTheProgramRegisters)
{
    IpcDouble::setAllPresent(true);
    EXPECT_FALSE(sendRemoteMessage(AppRadio, RMSG_KEY, 1, 0));
    EXPECT_FALSE(sendRemoteMessage(AppUSB, RMSG_KEY, 100, 0));
    EXPECT_FALSE(sendRemoteMessage(AppRadio, RMSG_SOURCE_STOP, 2, 0)) << "dropped";
    EXPECT_FALSE(sendCommandLine(AppRadio, AppCommandLine::genCmdSourceExit(mbFM, mbUSBAudio))) << "dropped";
    EXPECT_FALSE(sendCommandLine(AppRadio, AppCommandLine::genCmdSourceEnter(mbFM, false, true)));
    EXPECT_FALSE(sendRemoteMessage(AppRadio, RMSG_COMMAND_LINE, 3, 0)) << "kept: it holds no command line";
    EXPECT_FALSE(session().sendToApp(numOfAppTypes, RemoteMessage::obtain()));
    EXPECT_FALSE(sendRemoteMessage(AppRadio, nullptr));
    EXPECT_THAT(takeSent(), IsEmpty());

    state(AppRadio, kConnected);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppRadio, RMSG_KEY, 1 }, Sent { AppRadio, RMSG_COMMAND_LINE, 0 },
                                        Sent { AppRadio, RMSG_COMMAND_LINE, 3 }));
    EXPECT_TRUE(sendRemoteMessage(AppRadio, RMSG_SOURCE_STOP, 4, 0));
    EXPECT_TRUE(sendCommandLine(AppRadio, AppCommandLine::genCmdSourceExit(mbFM, mbUSBAudio)));
    EXPECT_THAT(takeSent(),
                ElementsAre(Sent { AppRadio, RMSG_SOURCE_STOP, 4 }, Sent { AppRadio, RMSG_COMMAND_LINE, 0 }));
}

/** Whatever becomes of a message, it is counted, and what does not go out goes back to the pool. */
TEST_F(RemoteSessionTest, CountsWhatItAccepts)
{
    const auto before = session().getCounts();
    const auto expect = [&](std::uint64_t accepted, std::uint64_t posted, std::uint64_t dropped, std::uint64_t waiting)
    {
        const auto now = session().getCounts();
        EXPECT_EQ(now.accepted - before.accepted, accepted);
        EXPECT_EQ(now.posted - before.posted, posted);
        EXPECT_EQ(now.dropped - before.dropped, dropped);
        EXPECT_EQ(now.waiting - before.waiting, waiting);
    };
    sendRemoteMessage(AppRadio, RMSG_KEY, 1, 0);
    sendRemoteMessage(AppRadio, RMSG_KEY, 2, 0);
    sendRemoteMessage(AppRadio, RMSG_SOURCE_STOP, 2, 0);
    expect(2, 0, 0, 2);
    const auto spare = sparePoolObjects("channel messages");
    state(AppRadio, kDisconnect);
    expect(2, 0, 2, 0);
    EXPECT_EQ(sparePoolObjects("channel messages"), spare + 2);

    IpcDouble::setAllPresent(true);
    sendRemoteMessage(AppRadio, RMSG_KEY, 3, 0);
    state(AppRadio, kConnected);
    sendRemoteMessage(AppRadio, RMSG_KEY, 4, 0);
    IpcDouble::setAllPresent(false);
    state(AppRadio, kConnected);
    sendRemoteMessage(AppRadio, RMSG_KEY, 5, 0);
    expect(5, 2, 3, 0);
}

TEST_F(RemoteSessionTest, FollowsTheProgramsStates)
{
    struct Case
    {
        int state;
        bool registered; ///< afterwards, when it was so before
        bool keeps;      ///< what waits, when it was not registered before
        std::vector<PageMessage> pageHears;
    };
    const Case cases[] = {
        { kDisconnect, false, false, { { mbFM, Kernel::MSG_APP_DISCONNECTED } } },
        { kStarting, true, false, {} },
        { kDead, true, true, {} },
        { kClosing, false, false, {} },
    };
    IpcDouble::setAllPresent(true);
    for (const auto& each : cases)
    {
        SCOPED_TRACE(each.state);
        state(AppRadio, kDisconnect);
        sendRemoteMessage(AppRadio, RMSG_KEY, 1, 0);
        takePosted();
        state(AppRadio, each.state);
        EXPECT_EQ(takePageMessages(), each.pageHears);
        state(AppRadio, kConnected);
        EXPECT_EQ(takePageMessages(), (std::vector { PageMessage { mbFM, Kernel::MSG_APP_CONNECTED } }));
        EXPECT_EQ(takeSent().size(), each.keeps ? 1u : 0u);

        EXPECT_TRUE(isAppConnected(AppRadio));
        state(AppRadio, each.state);
        EXPECT_EQ(isAppConnected(AppRadio), each.registered);
        EXPECT_EQ(takePageMessages(), each.pageHears);
    }
    state(AppUSB, kConnected);
    state(AppRadio, kConnected);
    EXPECT_THAT(getRegisteredApps(), ElementsAre(AppRadio, AppUSB));
}

/** The program of an earlier engine is connected before the session's thread has begun. */
TEST_F(RemoteSessionTest, TakesUpWhoWasConnectedBeforeTheStart)
{
    removeConnectListener(&session());
    connect(AppRadio);
    EXPECT_FALSE(session().isAppRegistered(AppRadio));
    send(Kernel::remoteSessionManagerId, Kernel::MSG_SYS_START);
    EXPECT_TRUE(session().isAppRegistered(AppRadio));
    EXPECT_FALSE(session().isAppRegistered(AppUSB));
}

/** A program loses the bus and finds it again; one that has only just got its name waits for its hello. */
TEST_F(RemoteSessionTest, ANameAloneRegistersOnlyWhoIsConnected)
{
    IpcDouble::setPresent(AppUSB, true);
    EXPECT_FALSE(isAppConnected(AppUSB));
    EXPECT_THAT(takePageMessages(), IsEmpty());

    connect(AppRadio);
    takePosted();
    IpcDouble::setPresent(AppRadio, false);
    EXPECT_FALSE(isAppConnected(AppRadio));
    EXPECT_FALSE(sendRemoteMessage(AppRadio, RMSG_KEY, 1, 0));
    IpcDouble::setPresent(AppRadio, true);
    EXPECT_TRUE(isAppConnected(AppRadio));
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppRadio, RMSG_KEY, 1 }));
    EXPECT_THAT(takePageMessages(), ElementsAre(PageMessage { mbFM, Kernel::MSG_APP_DISCONNECTED },
                                                PageMessage { mbFM, Kernel::MSG_APP_CONNECTED }));
}

TEST_F(RemoteSessionTest, RoutesWhatProgramsSend)
{
    Filter filter;
    addRemoteMsgFilter(RMSG_PAGE_SHOW_READY, &filter);
    const ErrorLog log;

    fromProgram(AppRadio, RMSG_PAGE_SHOW_READY);
    fromProgram(AppMain, RMSG_PAGE_SHOW_READY);
    EXPECT_THAT(filter.senders, ElementsAre(AppRadio)) << "the engine's own is ignored";
    EXPECT_THAT(takePageMessages(), IsEmpty());
    EXPECT_EQ(ErrorLog::count("AppType error"), 0);

    for (const int invalid : { -1, numOfAppTypes })
        fromProgram(invalid, RMSG_PAGE_SHOW_READY);
    EXPECT_THAT(filter.senders, testing::SizeIs(1));
    EXPECT_EQ(ErrorLog::count("MSG_REMOTE_MSG_REV AppType error"), 2);

    fromProgram(AppUSB, RMSG_APP_EVENT, 7, 8);
    const auto posted = takePosted();
    ASSERT_EQ(posted.size(), 1u);
    EXPECT_EQ(posted[0].handlerIndex, mbUSBAudio);
    EXPECT_EQ(posted[0].id, Kernel::MSG_APP_REMOTE);
    const auto* message = Kernel::payloadAs<RemoteMessage>(posted[0].payload);
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->what, RMSG_APP_EVENT);
    EXPECT_EQ(message->arg1, 7);
    EXPECT_EQ(message->arg2, 8);
    EXPECT_EQ(message->appType, AppUSB);
}

TEST_F(RemoteSessionTest, ReportsAFailedPostAndABacklogOnce)
{
    const ErrorLog log;
    state(AppRadio, kConnected);
    EXPECT_FALSE(sendRemoteMessage(AppRadio, RMSG_KEY, 1, 0)) << "registered, but not on the bus";
    EXPECT_EQ(ErrorLog::count("postMessage error! dest: AppRadio"), 1);

    IpcDouble::setPresent(AppUSB, true);
    constexpr int sent = 10'000;
    constexpr int kept = 4096;
    for (const int lines : { 1, 2 })
    {
        state(AppUSB, kDisconnect);
        for (int number = 0; number < sent; ++number)
            sendRemoteMessage(AppUSB, RMSG_KEY, number, 0);
        EXPECT_EQ(ErrorLog::count("4096 messages wait for AppUSB: the oldest go"), lines);
        state(AppUSB, kConnected);
        const auto received = takeSent();
        ASSERT_EQ(received.size(), std::size_t { kept });
        EXPECT_EQ(received.front().arg1, sent - kept);
        EXPECT_EQ(received.back().arg1, sent - 1);
    }
}

TEST_F(RemoteSessionTest, UnderstandsPlainWindowMessages)
{
    const std::array<int, 5> toComponents[] = { { RMSG_MENU_COMMAND_WINDOW, 1, Kernel::MSG_MENU_COMMAND, 11, 12 },
                                                { RMSG_EQ_PAGE_SHOW, 2, Kernel::MSG_EQ_WINDOW_SHOW, 0, 0 },
                                                { RMSG_EQ_PAGE_HIDE, 2, Kernel::MSG_EQ_WINDOW_HIDE, 0, 0 },
                                                { RMSG_DEVICE_WINDOW, 21, Kernel::MSG_DEVICE_WINDOW_EVENT, 11, 12 } };
    for (const auto& [windowMessage, receiver, id, arg1, arg2] : toComponents)
    {
        SCOPED_TRACE(windowMessage);
        IpcDouble::injectWindowMessage(windowMessage, 11, 12);
        expectPosted(receiver, id, arg1, arg2);
        expectNothingPosted();
    }
    constexpr int many = 256;
    for (int number = 0; number < many; ++number)
        IpcDouble::injectWindowMessage(RMSG_MENU_COMMAND_WINDOW, 12, number);
    EXPECT_TRUE(LowLayer::RemotecommDev::getInstance()->isBusy()) << "the next ones wait outside";
    takePosted();
    EXPECT_FALSE(LowLayer::RemotecommDev::getInstance()->isBusy());

    Filter filter;
    for (const auto& [windowMessage, appType] :
         { std::pair(RMSG_SETUP_WINDOW_EVENT, AppSetup), std::pair(RMSG_NAVI_EVENT, AppNavi),
           std::pair(WM_MESSAGE_IPOD_DRIVER, AppiPod) })
    {
        SCOPED_TRACE(windowMessage);
        addRemoteMsgFilter(windowMessage, &filter);
        IpcDouble::injectWindowMessage(windowMessage, 11, 12);
        EXPECT_EQ(std::exchange(filter.senders, {}), std::vector<int> { appType });
        EXPECT_EQ(filter.last, std::pair(11, 12));
    }

    connect(AppMainMenu);
    takePosted();
    for (const int windowMessage : { int { RMSG_IGNORED }, int { RMSG_MAINMENU_RELAY }, 1, 0 })
        IpcDouble::injectWindowMessage(windowMessage, 11, 12);
    EXPECT_THAT(takeSent(), ElementsAre(Sent { AppMainMenu, RMSG_MAINMENU_NOTIFY, 4, 11 }));
    expectNothingPosted();
}

/** The navigation program has a window and no endpoint; it may have been started anew since the last message. */
TEST_F(RemoteSessionTest, ReachesTheNavigationProgramByItsWindow)
{
    using Platform::doubles::WindowDouble;
    EXPECT_FALSE(sendRemoteMessage(AppNavi, RMSG_KEY, 1, 2));
    const auto first = WindowDouble::add("AppNavi");
    EXPECT_TRUE(sendRemoteMessage(AppNavi, RMSG_KEY, 1, 2));
    WindowDouble::remove(first);
    const auto second = WindowDouble::add("AppNavi");
    auto message = RemoteMessage::obtain();
    message->arg1 = 3;
    message->arg2 = 4;
    EXPECT_TRUE(sendRemoteMessage(AppNavi, message));
    EXPECT_THAT(WindowDouble::takePosted(), ElementsAre(WindowDouble::Posted { first, RMSG_NAVI_WINDOW, 1, 2 },
                                                        WindowDouble::Posted { second, RMSG_NAVI_WINDOW, 3, 4 }));
    EXPECT_THAT(takeSent(), IsEmpty());
}

TEST_F(RemoteSessionTest, AnnouncesEachWriteOfSystemInformationAfterItIsStored)
{
    using Platform::doubles::WindowDouble;
    auto& info = *EngineLayer::SystemInfo::getInstance();
    info.set(Platform::sysInfoiPodLink, 3);
    info.set(Platform::sysInfoiPodLink, 3);
    EXPECT_EQ(info.get(Platform::sysInfoiPodLink), 3);
    const auto broadcasts = IpcDouble::takeNamedBroadcasts();
    ASSERT_EQ(broadcasts.size(), 2u) << "without a check for a change";
    EXPECT_EQ(broadcasts[0].action, "com.corvane.SystemInfo");
    EXPECT_EQ(broadcasts[0].bundle->getInt("index", 0), 22);
    EXPECT_EQ(broadcasts[0].bundle->getInt("value", 0), 3);
    EXPECT_EQ(WindowDouble::takePosted().at(0), (WindowDouble::Posted { Platform::allWindows, 0x52a, 22, 3 }));
}
