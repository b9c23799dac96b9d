#include "EngineApi/KeyCodes.h"
#include "bench/unit/ProgramWatch.h"
#include "platform/channel/RemoteMessageIds.h"
#include "support/TestBus.h"

#include <optional>

namespace
{

using namespace Bench;
using namespace Platform;
using namespace Pubhead;
using namespace std::chrono_literals;

/** An engine and programs that tell the bench nothing. */
class ProgramWatchTest : public testing::Test
{
protected:
    ProgramWatchTest()
    {
        engine.emplace(bus);
        aux.emplace(bus);
    }

    bool comes(const char* stream, const std::string& text)
    {
        const auto event = journal.waitFor(from, Clock::now() + 60s, isEvent(stream, text));
        if (event)
            from = event->behind();
        return event.has_value();
    }
    bool auxIs(const std::string& text) { return comes("program AppAuxIn", text); }
    /** Of a stream, as far as it has come. */
    std::string all(const char* stream) const
    {
        std::string text;
        for (const auto& event : journal.find({}, Journal::capacity, isIn(stream)))
            text += event.text + "; ";
        return text;
    }
    /** The engine's message to every program. */
    void broadcast(int what)
    {
        sd_bus_message* raw = nullptr;
        BusPeer::check(
            sd_bus_message_new_signal(engine->get(), &raw, "/com/corvane/Endpoint", "com.corvane.Endpoint", "Message"));
        const SdBusMessage message(raw);
        BusPeer::check(sd_bus_message_append(raw, "iiia{sv}", what, 0, 0, 0));
        engine->send(message);
    }
    void connect()
    {
        aux->post("AppMain", RMSG_APP_HELLO, AppAuxIn);
        engine->post("AppAuxIn", RMSG_APP_HELLO_ACK, AppAuxIn);
        EXPECT_TRUE(auxIs("connected"));
    }

    TestBus bus;
    std::optional<BusPeer> engine, aux;
    Loop loop;
    Journal journal;
    Place from;
    Programs programs { loop, journal };
    ProgramWatch watch { programs, journal };
};

} // namespace

/** A program comes, asks for its page, shows it, is told a key, and is covered: all of it from the bus. */
TEST_F(ProgramWatchTest, SeesAPageComeAndGo)
{
    engine->own("AppMain");
    watch.start(bus.address().toStdString(), { AppAuxIn });
    aux->own("AppAuxIn");
    EXPECT_TRUE(auxIs("running"));
    EXPECT_EQ(programs.running().at(AppAuxIn).pid, ::getpid());
    connect();
    aux->post("AppMain", RMSG_PAGE_REQUEST_SHOW, mbAuxin2);
    EXPECT_TRUE(auxIs("says RMSG_PAGE_REQUEST_SHOW 1724 " + std::to_string(mbAuxin2) + " 0"));
    engine->post("AppAuxIn", RMSG_PAGE_SHOW, mbAuxin2);
    aux->post("AppMain", RMSG_PAGE_SHOW_READY, mbAuxin2);
    EXPECT_TRUE(comes("page mbAuxin2", "shown"));
    EXPECT_EQ(programs.pageInFront(), mbAuxin2);
    engine->post("AppAuxIn", RMSG_KEY, EngineApi::KEY_NEXT);
    EXPECT_TRUE(auxIs("key next"));
    engine->post("AppAuxIn", RMSG_PAGE_COVERED, mbAuxin2);
    EXPECT_TRUE(comes("page mbAuxin2", "covered"));
    EXPECT_EQ(programs.pageInFront(), NUM_OF_PAGES);

    aux->post("AppMain", RMSG_PAGE_SHOW_READY, mbAuxin2);
    EXPECT_TRUE(comes("page mbAuxin2", "shown"));
    broadcast(RMSG_HEARTBEAT);
    broadcast(RMSG_ENGINE_STARTED); // its screen is empty
    EXPECT_TRUE(comes("page mbAuxin2", "hidden"));
    engine->post("AppAuxIn", RMSG_SOURCE_STOP);
    EXPECT_TRUE(auxIs("stop"));
    EXPECT_FALSE(programs.setSilent(AppAuxIn, true));
    EXPECT_NE(programs.whyRefused(AppAuxIn).find("not the bench's own"), std::string::npos);
    EXPECT_NE(programs.requestPage(mbAuxin2), "") << "it asks for nothing on the bench's order";
}

/** Programs that report to the bench themselves, and strangers, are none of its business. */
TEST_F(ProgramWatchTest, HearsOnlyWhatGoesBetweenTheEngineAndItsPrograms)
{
    engine->own("AppMain");
    aux->own("AppAuxIn"); // there before somebody listens
    watch.start(bus.address().toStdString(), { AppAuxIn });
    EXPECT_TRUE(auxIs("running"));
    BusPeer radio(bus), stranger(bus);
    radio.own("AppRadio");
    radio.post("AppMain", RMSG_PAGE_SHOW_READY, mbFM);
    stranger.post("AppAuxIn", RMSG_APP_HELLO_ACK);
    stranger.post("AppMain", RMSG_PAGE_SHOW_READY, mbAuxin2);
    connect();
    EXPECT_EQ(all("page mbFM") + all("page mbAuxin2") + all("program AppRadio"), "");
    EXPECT_EQ(all("program AppAuxIn"),
              "running; says RMSG_APP_HELLO 1745 " + std::to_string(AppAuxIn) + " 0; connected; ");
}

/** The bus goes and comes back, at the same place: the program is the same, and is heard again. */
TEST_F(ProgramWatchTest, ComesBackWithTheBus)
{
    engine->own("AppMain");
    aux->own("AppAuxIn");
    watch.start(bus.address().toStdString(), { AppAuxIn });
    EXPECT_TRUE(auxIs("running"));
    connect();
    bus.stop();
    bus.start();
    engine.emplace(bus);
    aux.emplace(bus);
    engine->own("AppMain");
    aux->own("AppAuxIn");
    // It may be there before the watch listens: the heartbeat comes until it does.
    EXPECT_TRUE(eventually(
        [&]
        {
            aux->post("AppMain", RMSG_HEARTBEAT_REPLY, AppAuxIn);
            return programs.running().at(AppAuxIn).heartbeats > 0;
        }));
    connect();
    EXPECT_EQ(all("program AppAuxIn").find("running", 1), std::string::npos) << "its process has not ended";
}
