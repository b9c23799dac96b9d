#include "EngineApi/RemoteMessageIds.h"
#include "bench/Bus.h"
#include "bench/Programs.h"
#include "platform/CommandLine.h"
#include "platform/Configuration.h"
#include "platform/Ipc.h"
#include "platform/Pubhead.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace
{

using namespace Bench;
using namespace EngineApi;
using namespace Platform;
using namespace Pubhead;
using namespace std::chrono_literals;

/** The engine's end of the message channel, played by the test: what the program says goes into the journal. */
class FakeEngine : public IMsgProc
{
public:
    explicit FakeEngine(Journal& journalToUse)
        : journal(journalToUse)
    {
    }

    void onRemoteMessage(RemoteMessage::Ptr message) override
    {
        journal.add("said", std::to_string(message->what) + " " + std::to_string(message->arg1));
        RemoteMessage::recycle(message);
    }
    void onWindowMessage(juce::int32, juce::int32, juce::int32) override {}
    void onPresence(int type, bool present) override
    {
        journal.add("presence", appTypeName(type) + std::string(present ? " here" : " gone"));
    }
    void onBroadcast(const juce::String&) override {}

private:
    Journal& journal;
};

class SourceProgramTest : public testing::Test
{
protected:
    Journal journal;
    std::filesystem::path folder;
    Bus bus;
    Programs programs { journal };
    FakeEngine engine { journal };
    MsgSession session;
    Child program;

    void SetUp() override
    {
        auto pattern = (std::filesystem::temp_directory_path() / "bench-XXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        ASSERT_EQ(bus.start(folder), "");
        ASSERT_EQ(programs.start((folder / "control").string()), "");
        Configuration::get().ipcAddress = bus.address();
        IPCMsg::MessageHelper::config(AppMain, IPCMsg::MessageHelper::getDestName);
        ASSERT_TRUE(session.init(&engine));
        // The name that it is started by makes it the program of AUX.
        std::filesystem::create_symlink(HEADUNIT_BUILD_DIR "/bin/headunit-bench-program", folder / "AppAuxIn");
        const auto line = AppCommandLine::genCmdSourceEnter(mbAuxin2, false, true);
        const auto json = CmdLineHelper::genCommandLine(RemoteObjFormat::formatCommandLine(*line));
        ASSERT_EQ(program.start({ (folder / "AppAuxIn").string(),
                                  { "--command-line", json.toStdString() },
                                  { { "DBUS_SESSION_BUS_ADDRESS", bus.address() },
                                    { "HEADUNIT_BENCH_CONTROL", (folder / "control").string() },
                                    { "HEADUNIT_BENCH_DISPLAY", "none" } },
                                  (folder / "out").string(),
                                  {} }),
                  "");
        ASSERT_TRUE(journal.waitFor(0, Clock::now() + 10s, isEvent("program AppAuxIn", "running")));
    }

    void TearDown() override
    {
        if (HasFailure())
            for (const auto& event : journal.find(0, Journal::capacity, [](const Event&) { return true; }))
                std::cerr << event.stream << ": " << event.text << "\n";
        session.close();
        programs.stop();
        program.end(1s);
        bus.stop();
        Configuration::get() = {};
        std::filesystem::remove_all(folder);
    }

    static void tell(int what, int arg1, const Bundle::Ptr& bundle = nullptr)
    {
        const auto message = RemoteMessage::obtain();
        message->what = what;
        message->arg1 = arg1;
        message->bundle = bundle;
        EXPECT_TRUE(IPCMsg::MessageHelper::postMessage(AppAuxIn, message));
        RemoteMessage::recycle(message);
    }

    /** The program's next words, after those heard before. */
    std::string hears(std::chrono::milliseconds limit = 10s)
    {
        const auto event = journal.waitFor(next, Clock::now() + limit, isIn("said"));
        next = event ? event->number + 1 : next;
        return event ? event->text : "nothing";
    }

    /** The program reports to the bench on another channel than it answers the engine, so this is waited for. */
    bool hasInFront(const std::string& page) const { return journal.waitForLatest("front", page, Clock::now() + 10s); }

    static std::string words(int what, int arg1) { return std::to_string(what) + " " + std::to_string(arg1); }

private:
    std::uint64_t next = 0;
};

// A whole life: started for FM, it says hello before it asks for its page, goes through the page handshake, confirms a
// page that is taken from the top, keeps the screen until it is told to hide, and quits when its source is stopped.
TEST_F(SourceProgramTest, livesAsTheEngineExpects)
{
    EXPECT_EQ(hears(), words(RMSG_APP_HELLO, AppAuxIn));
    EXPECT_EQ(hears(), words(RMSG_PAGE_REQUEST_SHOW, mbAuxin2));
    tell(RMSG_APP_HELLO_ACK, AppAuxIn);
    tell(RMSG_PAGE_SHOW, mbAuxin2);
    EXPECT_EQ(hears(), words(RMSG_PAGE_SHOW_READY, mbAuxin2));
    EXPECT_TRUE(hasInFront("mbAuxin2"));
    tell(RMSG_HEARTBEAT, 0);
    EXPECT_EQ(hears(), words(RMSG_HEARTBEAT_REPLY, AppAuxIn));

    const auto hide = AppCommandLine::genCmdPageHide(mbAuxin2, mbEQ);
    tell(RMSG_COMMAND_LINE, 0, RemoteObjFormat::formatCommandLine(*hide));
    EXPECT_EQ(hears(), words(RMSG_PAGE_TOP_SHOWN, mbAuxin2));
    EXPECT_TRUE(hasInFront("mbAuxin2"));
    tell(RMSG_PAGE_HIDE, mbAuxin2);
    EXPECT_EQ(hears(), words(RMSG_PAGE_HIDE_READY, mbAuxin2));
    EXPECT_TRUE(hasInFront("none"));

    tell(RMSG_PAGE_NOTIFY, mbAuxin2);
    EXPECT_EQ(hears(), words(RMSG_STATE_TO_SYSTEM, mbAuxin2));
    EXPECT_TRUE(journal.waitFor(0, Clock::now() + 10s, isEvent("program AppAuxIn", "connected")));
    tell(RMSG_SOURCE_STOP, 0);
    EXPECT_TRUE(program.waitForEnd(10s));
}

// On order it takes everything and answers nothing, or answers late; a crash is a real one.
TEST_F(SourceProgramTest, misbehavesOnOrder)
{
    EXPECT_EQ(hears(), words(RMSG_APP_HELLO, AppAuxIn));
    EXPECT_EQ(hears(), words(RMSG_PAGE_REQUEST_SHOW, mbAuxin2));
    ASSERT_TRUE(programs.setSilent(AppAuxIn, true));
    // Orders keep their order, so this one meets a program that is silent already.
    ASSERT_TRUE(programs.sendMessage(AppAuxIn, RMSG_KEY, 0, 0));
    EXPECT_EQ(hears(300ms), "nothing");
    tell(RMSG_PAGE_SHOW, mbAuxin2);
    EXPECT_TRUE(journal.waitFor(0, Clock::now() + 10s, isEvent("page mbAuxin2", "shown"))) << "it does what it is told";
    EXPECT_EQ(hears(300ms), "nothing") << "but does not say so";

    ASSERT_TRUE(programs.setSilent(AppAuxIn, false));
    ASSERT_TRUE(programs.setSlow(AppAuxIn, 300ms));
    const auto before = Clock::now();
    ASSERT_TRUE(programs.sendMessage(AppAuxIn, RMSG_RADIO_EVENT, 7, 0));
    EXPECT_EQ(hears(), words(RMSG_RADIO_EVENT, 7));
    EXPECT_GE(Clock::now() - before, 290ms);

    ASSERT_TRUE(programs.crash(AppAuxIn));
    EXPECT_TRUE(journal.waitFor(0, Clock::now() + 10s, isEvent("program AppAuxIn", "gone")));
    EXPECT_TRUE(hasInFront("none"));
}

// The engine goes away: the page leaves the screen, and the program comes back with a hello when the engine does.
TEST_F(SourceProgramTest, waitsForTheEngineToComeBack)
{
    EXPECT_EQ(hears(), words(RMSG_APP_HELLO, AppAuxIn));
    EXPECT_EQ(hears(), words(RMSG_PAGE_REQUEST_SHOW, mbAuxin2));
    tell(RMSG_PAGE_SHOW, mbAuxin2);
    EXPECT_EQ(hears(), words(RMSG_PAGE_SHOW_READY, mbAuxin2));
    session.close();
    EXPECT_TRUE(journal.waitFor(0, Clock::now() + 10s, isEvent("page mbAuxin2", "hidden")));
    const auto restart = journal.end();
    ASSERT_TRUE(session.init(&engine));
    ASSERT_TRUE(journal.waitFor(restart, Clock::now() + 10s, isEvent("presence", "AppAuxIn here")));
    // A hello may be lost while the engine does not know its neighbours yet; its own announcement brings another.
    const auto message = RemoteMessage::obtain();
    message->what = RMSG_ENGINE_STARTED;
    EXPECT_TRUE(IPCMsg::MessageHelper::broadcastMessage(message));
    RemoteMessage::recycle(message);
    EXPECT_EQ(hears(), words(RMSG_APP_HELLO, AppAuxIn));
}

} // namespace
