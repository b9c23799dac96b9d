#include "diagnostics/TraceSession.h"

#include "EngineApi/Catalogue.h"
#include "EngineApi/HostCommands.h"
#include "EngineApi/Remote.h"
#include "EngineApi/ScheduleRecords.h"
#include "diagnostics/TraceDocument.h"
#include "kernel/MessageIds.h"
#include "platform/base/Pubhead.h"
#include "platform/base/Threads.h"
#include "support/KernelFixture.h"

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>

using namespace Kernel;
using Diagnostics::TraceFile;
using Diagnostics::TraceSession;
using testing::TempDir;

namespace
{

using Kind = Trace::Kind;

class TraceSessionTest : public KernelFixture
{
protected:
    ~TraceSessionTest() override { std::remove(path.c_str()); }

    static constexpr std::chrono::seconds aMinute { 60 };

    std::string begin(int flags = O_RDWR | O_CREAT | O_TRUNC)
    {
        const Platform::Descriptor file(::open(path.c_str(), flags, 0600));
        return session.begin(file.get(), aMinute);
    }
    bool isOver() { return session.poll(Platform::Clock::now()).has_value(); }

    const std::string path = TempDir() + "/" + juce::Uuid().toString().toStdString();
    TraceSession session;
};

using Names = std::vector<std::string>;

} // namespace

TEST_F(TraceSessionTest, NamesWhatWasHandledAndLeadsThereFromItsCause)
{
    ASSERT_EQ(begin(), "");
    EXPECT_NE(begin(O_RDWR), "") << "there is one already";
    postHandlerMessage(radioApplicationId, Pubhead::mbFM, MSG_APP_KEY, 4, 1);
    postSystemMessage(keyManagerId, MSG_HOST_EVENT, EngineApi::EVENT_KEY, 2);
    takePosted();
    EXPECT_FALSE(isOver());
    {
        const TraceScope received(Kind::remoteReceived, Pubhead::AppRadio, EngineApi::RMSG_PAGE_SHOW_READY, 3, 0);
        TraceScope sent(Kind::remoteSent, Pubhead::AppRadio, EngineApi::RMSG_HEARTBEAT, 0, 0, false);
        sent.set(4, true);
    }
    DeviceWorker worker("Slow");
    worker.post(7, [] { const TraceScope block(Kind::block, 0x800123, 6, 1, true); });
    DeviceWorker::drainAll();
    const auto summary = session.stop();
    EXPECT_EQ(summary.events, 6u);
    EXPECT_EQ(summary.lost, 0u);
    EXPECT_EQ(summary.failure, "");

    const TraceDocument document(path);
    EXPECT_EQ(document.facts().at("events"), 6);
    const auto thread = Platform::Thread::currentName().toStdString();
    const auto slices = document.slices(thread);
    EXPECT_EQ(document.names(thread), (Names { "MSG_APP_KEY to RadioApplication",
                                               "MSG_HOST_EVENT IND_KEY to KeyManager", "RadioApplication: MSG_APP_KEY",
                                               "KeyManager: MSG_HOST_EVENT IND_KEY", "received RMSG_PAGE_SHOW_READY",
                                               "send RMSG_HEARTBEAT", "job for " + thread, "job", "block 800123" }));
    EXPECT_EQ(slices[2].at("args").at("handler"), "mbFM");
    EXPECT_GT(slices[2].at("args").at("waitedUs"), 0.0);
    EXPECT_EQ(document.cause(slices[2]), thread + ": MSG_APP_KEY to RadioApplication");
    EXPECT_EQ(document.cause(slices[4]), "AppRadio: RMSG_PAGE_SHOW_READY");
    EXPECT_EQ(document.cause(slices[7]), thread + ": job for " + thread);
    EXPECT_EQ(slices[8].at("args").at("verified"), true);
    const auto program = document.slices("AppRadio");
    ASSERT_EQ(program.size(), 2u);
    EXPECT_EQ(document.cause(program[1]), thread + ": send RMSG_HEARTBEAT");
}

/** What lasts: a frame until its acknowledgement, a switch with its orders, the view's waits, the life of a program. */
TEST_F(TraceSessionTest, WhatLastsHasItsOutcome)
{
    using EngineApi::AppAction;
    using EngineApi::SwitchType;
    Trace::note(Kind::programState, Pubhead::AppUSB, EngineApi::kStarting); // before the trace
    ASSERT_EQ(begin(), "");
    const auto origin = Trace::here();
    Trace::noteFrom(origin, Kind::frameSent, EngineApi::EVENT_HEAT_BEAT, 7, 8);
    Trace::note(Kind::frameResent, EngineApi::EVENT_HEAT_BEAT, 7);
    Trace::note(Kind::frameReceived, EngineApi::EVENT_KEY, 3, 10);
    Trace::note(Kind::confirmationSent, 3);
    Trace::note(Kind::frameAcknowledged, 7);
    Trace::note(Kind::frameSent, EngineApi::EVENT_MUTE_STATE, 8, 9);
    Trace::note(Kind::frameGivenUp, EngineApi::EVENT_MUTE_STATE, 8);
    Trace::note(Kind::switchBegun, Pubhead::mbFM, AppAction::ToRun, true);
    Trace::note(Kind::orderSent, Pubhead::mbAM, SwitchType::ToStop);
    Trace::note(Kind::orderSent, Pubhead::mbFM, SwitchType::ToRun);
    Trace::note(Kind::pageHiding, Pubhead::mbMainMenu);
    Trace::note(Kind::viewTold, EngineApi::RMSG_PAGE_HIDE, Pubhead::mbMainMenu);
    Trace::note(Kind::viewAnswered, EngineApi::RMSG_PAGE_HIDE_READY, Pubhead::mbMainMenu);
    Trace::note(Kind::pageShowing, Pubhead::mbFM);
    Trace::note(Kind::pageSettled, Pubhead::mbFM);
    Trace::note(Kind::orderReported, Pubhead::mbAM, true);
    Trace::note(Kind::switchEnded, Pubhead::mbFM, EngineApi::scheduleFailed);
    for (const int state :
         { EngineApi::kStarting, EngineApi::kConnected, EngineApi::kDisconnect, EngineApi::kStarting })
        Trace::note(Kind::programState, Pubhead::AppRadio, state);
    session.stop();

    const TraceDocument document(path);
    using Outcomes = std::vector<std::pair<std::string, std::string>>;
    const auto outcomes = [&](const std::string& track)
    {
        Outcomes all;
        for (const auto& slice : document.slices(track))
            if (slice.at("dur") > 0.0)
                all.emplace_back(slice.at("name"), slice.contains("args") ? slice["args"].value("outcome", "") : "");
        return all;
    };
    EXPECT_EQ(outcomes("sent"),
              (Outcomes { { "EVENT_HEAT_BEAT", "acknowledged" }, { "EVENT_MUTE_STATE", "given up" } }));
    EXPECT_EQ(document.names("sent")[1], "again");
    EXPECT_EQ(document.names("received"), Names { "IND_KEY" });
    EXPECT_EQ(document.names("acknowledgements sent"), Names { "acknowledgement" });
    EXPECT_EQ(outcomes("request"), (Outcomes { { "mbFM ToRun", "failed" } }));
    EXPECT_EQ(outcomes("mbAM"), (Outcomes { { "ToStop", "" } }));
    EXPECT_EQ(outcomes("mbFM"), (Outcomes { { "ToRun", "no report" } }));
    EXPECT_EQ(outcomes("view"), (Outcomes { { "hide mbMainMenu", "" }, { "show mbFM", "" } }));
    EXPECT_EQ(outcomes("AppRadio"),
              (Outcomes { { "kStarting", "" }, { "kConnected", "" }, { "kStarting", "under way" } }));
    EXPECT_TRUE(document.slices("AppUSB").empty());
    EXPECT_EQ(document.cause(document.slices("mbFM")[0]), Platform::Thread::currentName().toStdString() + ": ToRun");
}

namespace
{

/** Its handler takes until the test lets it go. */
class Hanging : public ComponentTask
{
public:
    void handleMessage(juce::int32 id, juce::int32, juce::int32, const Payload&) override
    {
        if (id != MSG_APP_KEY)
            return;
        entered.signal();
        released.wait();
    }
    Platform::Event entered, released { true };
};

} // namespace

/** A handler that hangs: it has not ended when the trace does, and is what somebody looks for. */
TEST_F(TraceSessionTest, ShowsWhatHangs)
{
    auto* hanging = new Hanging;
    add(hanging, keyManagerId);
    engine().start();
    DeviceWorker worker("Slow");
    ASSERT_EQ(begin(), "");
    postSystemMessage(keyManagerId, MSG_APP_KEY, 0, 0);
    hanging->entered.wait();
    worker.post(7, [&] { hanging->entered.signal(), hanging->released.wait(); });
    hanging->entered.wait();
    session.stop();
    hanging->released.signal();
    const TraceDocument document(path);
    ASSERT_FALSE(document.slices("Tested").empty());
    const auto last = document.slices("Tested").back();
    EXPECT_EQ(last.at("name"), "KeyManager: MSG_APP_KEY");
    EXPECT_EQ(last.at("args").at("outcome"), "under way");
    EXPECT_EQ(document.names("Slow"), Names { "job" });
}

/** Whoever looks at the file while the trace goes on, or after the engine has died, has a whole document. */
TEST_F(TraceSessionTest, IsWholeAtEveryTimeAndSaysWhatIsMissing)
{
    ASSERT_EQ(begin(), "");
    Trace::note(Kind::programState, Pubhead::AppRadio, EngineApi::kStarting); // not over yet
    for (std::size_t count = 1; count < 4; ++count)
    {
        Trace::note(Kind::frameReceived, EngineApi::EVENT_KEY, 3, 10);
        EXPECT_FALSE(isOver());
        EXPECT_EQ(TraceDocument(path).slices("received").size(), count);
    }
    constexpr std::uint64_t tooMany = 5;
    for (std::size_t i = 0; i < Trace::capacity + tooMany; ++i)
        Trace::note(Kind::job, 1);
    EXPECT_EQ(session.poll(Platform::Clock::now() + aMinute).value().lost, tooMany) << "its time is over";
    EXPECT_FALSE(session.isOn() || Trace::isOn());
    const TraceDocument document(path);
    EXPECT_EQ(document.facts().at("lost"), tooMany);
    EXPECT_EQ(document.names("lost"), Names { "5 events lost" });
}

/** The limit of a file's size stands for a full disk: there is room for a part of what is written. */
TEST_F(TraceSessionTest, EndsEarlyOnAFullDiskAndSaysSo)
{
    ASSERT_EQ(begin(), "");
    Trace::note(Kind::frameReceived, EngineApi::EVENT_KEY, 3, 10);
    EXPECT_FALSE(isOver());
    const auto formerHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit former {};
    ::getrlimit(RLIMIT_FSIZE, &former);
    auto full = former;
    full.rlim_cur = 10'000;
    ::setrlimit(RLIMIT_FSIZE, &full);
    for (std::size_t i = 0; i < 1000; ++i)
        Trace::note(Kind::job, 1);
    const auto summary = session.poll(Platform::Clock::now());
    ::setrlimit(RLIMIT_FSIZE, &former);
    std::signal(SIGXFSZ, formerHandler);
    ASSERT_TRUE(summary.has_value());
    EXPECT_NE(summary->failure, "");
    EXPECT_FALSE(Trace::isOn());
    const TraceDocument document(path);
    EXPECT_EQ(document.facts().at("failure"), summary->failure);
    EXPECT_EQ(document.names("received"), Names { "IND_KEY" }) << "what was there before stays";
}

TEST_F(TraceSessionTest, AFileThatCannotHoldItIsRefused)
{
    ASSERT_EQ(begin(), "");
    session.stop();
    EXPECT_NE(begin(O_RDONLY), "");
    EXPECT_NE(begin(O_WRONLY | O_APPEND), "");
    EXPECT_NE(session.begin(-1, aMinute), "");
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    EXPECT_NE(session.begin(ends[1], aMinute), "") << "its reader could hold up the engine";
    ::close(ends[0]);
    ::close(ends[1]);
    EXPECT_FALSE(Trace::isOn());

    constexpr std::size_t limit = 4096;
    const Platform::Descriptor file(::open(path.c_str(), O_RDWR));
    TraceFile small(file.get(), limit);
    ASSERT_EQ(small.getFailure(), "");
    for (int i = 0; i < 100; ++i)
    {
        small.add({ small.track("group", "track"), std::string(100, 'x') + "\xff\"", std::chrono::microseconds(i) });
        small.flush();
    }
    small.finish({});
    EXPECT_NE(small.getFailure(), "");
    const auto count = TraceDocument(path).slices("track").size();
    EXPECT_GT(count, 10u);
    EXPECT_LT(count, 30u);
}
