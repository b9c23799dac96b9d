#include "platform/base/Process.h"
#include "platform/base/Pubhead.h"
#include "platform/channel/Ipc.h"
#include "platform/channel/RemoteMessageIds.h"
#include "support/ErrorLog.h"
#include "support/TestBus.h"

#include <gmock/gmock.h>
#include <mutex>

using namespace Platform;
using namespace Pubhead;
using IPCMsg::MessageHelper;
using testing::ElementsAre;

namespace
{

constexpr int hello = RMSG_APP_HELLO;
constexpr int someMessage = RMSG_APP_EVENT;

/** What the receiver was told, in order. */
class Recorder : public IMsgProc
{
public:
    struct Event
    {
        enum class Kind { message, presence, broadcast } kind;
        int appType = 0;
        int what = 0; ///< of a presence 1 for present
        int arg1 = 0;
        Bundle::Ptr bundle;
        juce::String text;
    };

    void onRemoteMessage(RemoteMessage::Ptr message) override
    {
        note({ Event::Kind::message, message->appType, message->what, message->arg1, message->bundle, {} });
        RemoteMessage::recycle(std::move(message));
    }
    void onWindowMessage(juce::int32, juce::int32, juce::int32) override {}
    void onPresence(int appType, bool present) override
    {
        note({ Event::Kind::presence, appType, present ? 1 : 0, 0, nullptr, {} });
    }
    void onBroadcast(const juce::String& text) override { note({ Event::Kind::broadcast, 0, 0, 0, nullptr, text }); }

    /** Waits for the next event, whatever it is. */
    Event next()
    {
        Event event {};
        if (!eventually([&] { return take(event); }))
            throw std::runtime_error("nothing came");
        return event;
    }
    void expectPresence(int appType, bool present)
    {
        const auto event = next();
        EXPECT_EQ(event.kind, Event::Kind::presence);
        EXPECT_EQ(event.appType, appType);
        EXPECT_EQ(event.what, present ? 1 : 0);
    }
    Event expectMessage(int appType, int what)
    {
        const auto event = next();
        EXPECT_EQ(event.kind, Event::Kind::message);
        EXPECT_EQ(event.appType, appType);
        EXPECT_EQ(event.what, what);
        return event;
    }

private:
    void note(Event event)
    {
        const std::lock_guard guard(lock);
        events.push_back(std::move(event));
    }
    bool take(Event& event)
    {
        const std::lock_guard guard(lock);
        if (events.empty())
            return false;
        event = std::move(events.front());
        events.pop_front();
        return true;
    }

    std::mutex lock;
    std::deque<Event> events;
};

RemoteMessage::Ptr makeMessage(int what, int arg1 = 0, Bundle::Ptr bundle = nullptr)
{
    auto message = RemoteMessage::obtain();
    message->what = what;
    message->arg1 = arg1;
    message->bundle = std::move(bundle);
    return message;
}

/** An engine's session on a bus of its own. */
class IpcTest : public testing::Test
{
protected:
    IpcTest() { MessageHelper::config(AppMain, MessageHelper::getDestName); }

    TestBus bus;
    Recorder recorder;
    MsgSession session;
};

/** Reads what, arg1, arg2; the bundle is what follows. */
std::array<int, 3> readHead(const SdBusMessage& message)
{
    std::array<int, 3> head {};
    BusPeer::check(sd_bus_message_read(message.get(), "iii", head.data(), &head[1], &head[2]));
    return head;
}

} // namespace

/** A program lies about what it is; a stranger without a name speaks. The bus knows better. */
TEST_F(IpcTest, TheSenderIsWhoOwnsTheName)
{
    const ErrorLog log;
    ASSERT_TRUE(session.init(&recorder));
    BusPeer usb(bus);
    BusPeer stranger(bus);
    usb.own("AppUSB");
    usb.post("AppMain", hello, AppRadio);
    recorder.expectPresence(AppUSB, true);
    EXPECT_EQ(recorder.expectMessage(AppUSB, hello).arg1, AppRadio);

    stranger.post("AppMain", hello, AppRadio);
    BusPeer::check(sd_bus_call_method(stranger.get(), "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId",
                                      nullptr, nullptr, ""));
    usb.post("AppMain", someMessage);
    recorder.expectMessage(AppUSB, someMessage);
    EXPECT_EQ(ErrorLog::count("it owns no program's name"), 1);
}

/** The engine starts anew while programs run: it knows them from the first moment. */
TEST_F(IpcTest, WhoWasThereBeforeIsKnownOnceTheSessionIsOpen)
{
    BusPeer radio(bus);
    radio.own("AppRadio");
    ASSERT_TRUE(session.init(&recorder));
    EXPECT_TRUE(MessageHelper::isPresent(AppRadio));
    EXPECT_EQ(MessageHelper::ownerProcess(AppRadio), getpid());
    EXPECT_FALSE(MessageHelper::isPresent(AppUSB));
    EXPECT_EQ(MessageHelper::ownerProcess(AppUSB), -1);
    recorder.expectPresence(AppRadio, true);

    MsgSession second;
    EXPECT_FALSE(second.init(&recorder)) << "one endpoint a process";
    second.close();
    radio.post("AppMain", someMessage);
    recorder.expectMessage(AppRadio, someMessage);
}

TEST_F(IpcTest, PostsGoToPresentProgramsOnly)
{
    ASSERT_TRUE(session.init(&recorder));
    EXPECT_FALSE(MessageHelper::postMessage(AppRadio, makeMessage(someMessage)));
    EXPECT_FALSE(MessageHelper::postMessage(-1, makeMessage(someMessage)));
    EXPECT_FALSE(MessageHelper::postMessage(numOfAppTypes, makeMessage(someMessage)));
    {
        BusPeer radio(bus);
        radio.own("AppRadio");
        recorder.expectPresence(AppRadio, true);
        EXPECT_TRUE(MessageHelper::postMessage(AppRadio, makeMessage(someMessage, 7)));
        EXPECT_THAT(readHead(radio.next("Post")), ElementsAre(someMessage, 7, 0));
        radio.release("AppRadio");
        recorder.expectPresence(AppRadio, false);
        radio.own("AppRadio");
        recorder.expectPresence(AppRadio, true);
    }
    // The connection has gone with its process.
    recorder.expectPresence(AppRadio, false);
    EXPECT_FALSE(MessageHelper::postMessage(AppRadio, makeMessage(someMessage)));
}

/** Another process takes the name of a program that the engine started, before or after it has spoken. */
TEST_F(IpcTest, AnUnexpectedProcessMayNotSpeakForAProgram)
{
    const ErrorLog log;
    const auto other = createProcess("/bin/sleep", { "60" });
    ASSERT_NE(other, nullptr);
    ASSERT_TRUE(session.init(&recorder));

    // From the start.
    MessageHelper::expectProcess(AppUSB, other->getPid());
    BusPeer usb(bus);
    usb.own("AppUSB");
    usb.post("AppMain", hello, AppUSB);
    ASSERT_TRUE(eventually([] { return ErrorLog::count("dropped, its owner") == 1; }));
    EXPECT_FALSE(MessageHelper::isPresent(AppUSB));
    EXPECT_FALSE(MessageHelper::postMessage(AppUSB, makeMessage(someMessage)));

    // The right one is heard from its first word on, however fast it is.
    MessageHelper::expectProcess(AppRadio, getpid());
    BusPeer radio(bus);
    radio.own("AppRadio");
    radio.post("AppMain", hello, AppRadio);
    recorder.expectPresence(AppRadio, true);
    recorder.expectMessage(AppRadio, hello);

    // And found out later.
    MessageHelper::expectProcess(AppRadio, other->getPid());
    recorder.expectPresence(AppRadio, false);
    radio.post("AppMain", someMessage);
    ASSERT_TRUE(eventually([] { return ErrorLog::count("dropped, its owner") == 2; }));
    MessageHelper::expectProcess(AppRadio, -1);
    recorder.expectPresence(AppRadio, true);
    radio.post("AppMain", someMessage + 1);
    recorder.expectMessage(AppRadio, someMessage + 1);
    other->terminate();
}

/** A large message stalls neither its followers nor the sender, in both directions. */
TEST_F(IpcTest, LargeMessagesArriveWholeAndInOrder)
{
    constexpr int count = 100;
    constexpr int largeOne = 50;
    ASSERT_TRUE(session.init(&recorder));
    BusPeer radio(bus);
    radio.own("AppRadio");
    recorder.expectPresence(AppRadio, true);

    juce::MemoryBlock large(1 << 20);
    for (std::size_t at = 0; at < large.getSize(); ++at)
        large[at] = static_cast<char>(at * 31 >> 3);
    const auto bundle = Bundle::obtain();
    bundle->putByteArray("bytes", large.getData(), static_cast<int>(large.getSize()));
    for (int number = 0; number < count; ++number)
        ASSERT_TRUE(MessageHelper::postMessage(
            AppRadio, makeMessage(someMessage, number, number == largeOne ? bundle : nullptr)));

    for (int number = 0; number < count; ++number)
    {
        const auto received = radio.next("Post");
        ASSERT_EQ(readHead(received)[1], number);
        // And back as it came.
        const auto answer = radio.newPost("AppMain");
        BusPeer::check(sd_bus_message_append(answer.get(), "iii", someMessage, number, 0));
        BusPeer::check(sd_bus_message_copy(answer.get(), received.get(), 0));
        radio.send(answer);
    }
    for (int number = 0; number < count; ++number)
    {
        const auto event = recorder.expectMessage(AppRadio, someMessage);
        ASSERT_EQ(event.arg1, number);
        ASSERT_EQ(event.bundle != nullptr, number == largeOne);
        if (number == largeOne)
        {
            EXPECT_EQ(event.bundle->getByteArray("bytes"), large);
        }
    }
}

TEST_F(IpcTest, BundlesKeepEveryTypeAndTextsThatNoBusTakesAreMended)
{
    ASSERT_TRUE(session.init(&recorder));
    BusPeer radio(bus);
    radio.own("AppRadio");
    recorder.expectPresence(AppRadio, true);

    const auto nested = Bundle::obtain();
    nested->putInt("deep", -5);
    const auto bundle = Bundle::obtain();
    bundle->putInt("int", std::numeric_limits<juce::int32>::min());
    bundle->putBool("bool", true);
    bundle->putString("text", juce::CharPointer_UTF8("S\xc3\xa9lection"));
    // A non-character is valid UTF-8, and the end of a connection that sends it.
    bundle->putString("odd", juce::String("a") + juce::String::charToString(0xffff) + "b");
    bundle->putByteArray("bytes", "\0\xff\x7f", 3);
    bundle->putByteArray("none", nullptr, 0);
    bundle->putBundle("bundle", nested);
    bundle->putBundleList("list", { nested, Bundle::obtain() });
    bundle->putBundleList("empty", {});
    ASSERT_TRUE(MessageHelper::postMessage(AppRadio, makeMessage(someMessage, 0, bundle)));

    const auto received = radio.next("Post");
    EXPECT_STREQ(sd_bus_message_get_signature(received.get(), 1), "iiia{sv}");
    readHead(received);
    const auto answer = radio.newPost("AppMain");
    BusPeer::check(sd_bus_message_append(answer.get(), "iii", someMessage, 0, 0));
    BusPeer::check(sd_bus_message_copy(answer.get(), received.get(), 0));
    radio.send(answer);

    const auto back = recorder.expectMessage(AppRadio, someMessage).bundle;
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->getValues().size(), 9u);
    EXPECT_EQ(back->getInt("int", 0), std::numeric_limits<juce::int32>::min());
    EXPECT_TRUE(back->getBool("bool", false));
    EXPECT_EQ(back->getString("text", {}), juce::String(juce::CharPointer_UTF8("S\xc3\xa9lection")));
    EXPECT_EQ(back->getString("odd", {}), juce::String(juce::CharPointer_UTF8("a\xef\xbf\xbd"
                                                                              "b")));
    EXPECT_EQ(back->getByteArray("bytes"), juce::MemoryBlock("\0\xff\x7f", 3));
    EXPECT_TRUE(std::holds_alternative<juce::MemoryBlock>(back->getValues().at("none")));
    EXPECT_EQ(back->getBundle("bundle")->getInt("deep", 0), -5);
    ASSERT_EQ(back->getBundleList("list").size(), 2u);
    EXPECT_EQ(back->getBundleList("list")[0]->getInt("deep", 0), -5);
    EXPECT_TRUE(back->getBundleList("list")[1]->isEmpty());
    EXPECT_TRUE(std::holds_alternative<std::vector<Bundle::Ptr>>(back->getValues().at("empty")));

    // What a bundle has no type for is left out, and nothing behind it is lost.
    const auto foreign = radio.newPost("AppMain");
    BusPeer::check(sd_bus_message_append(foreign.get(), "iiia{sv}", someMessage, 1, 0, 4, "d", "d", 1.5, "u", "u", 7u,
                                         "as", "as", 1, "x", "i", "i", 42));
    radio.send(foreign);
    const auto rest = recorder.expectMessage(AppRadio, someMessage).bundle;
    ASSERT_NE(rest, nullptr);
    EXPECT_EQ(rest->getValues().size(), 1u);
    EXPECT_EQ(rest->getInt("i", 0), 42);
}

TEST_F(IpcTest, SpeaksTheDocumentedFormOnTheWire)
{
    ASSERT_TRUE(session.init(&recorder));
    BusPeer listener(bus);
    listener.listen("type='signal',path_namespace='/com/corvane'");

    ASSERT_TRUE(MessageHelper::broadcastMessage(makeMessage(RMSG_HEARTBEAT, 3)));
    const auto toAll = listener.next("Message");
    EXPECT_STREQ(sd_bus_message_get_path(toAll.get()), "/com/corvane/Endpoint");
    EXPECT_STREQ(sd_bus_message_get_interface(toAll.get()), "com.corvane.Endpoint");
    EXPECT_STREQ(sd_bus_message_get_signature(toAll.get(), 1), "iiia{sv}");
    EXPECT_THAT(readHead(toAll), ElementsAre(RMSG_HEARTBEAT, 3, 0));

    const auto bundle = Bundle::obtain();
    bundle->putInt("index", 22);
    ASSERT_TRUE(MessageHelper::sendBroadcast("com.corvane.SystemInfo", bundle));
    const auto named = listener.next("SystemInfo");
    EXPECT_STREQ(sd_bus_message_get_path(named.get()), "/com/corvane/Broadcast");
    EXPECT_STREQ(sd_bus_message_get_interface(named.get()), "com.corvane");
    const char* key = "";
    int value = 0;
    BusPeer::check(sd_bus_message_read(named.get(), "a{sv}", 1, &key, "i", &value));
    EXPECT_STREQ(key, "index");
    EXPECT_EQ(value, 22);
    EXPECT_FALSE(MessageHelper::sendBroadcast("no action", bundle));

    // A tool that asks for replies gets them; its text is taken when it is a program's.
    const auto broadcast = [&](const char* text)
    {
        BusPeer::check(sd_bus_call_method(listener.get(), "com.corvane.AppMain", "/com/corvane/Endpoint",
                                          "com.corvane.Endpoint", "Broadcast", nullptr, nullptr, "s", text));
    };
    broadcast("hideWindow");
    listener.own("AppSetup");
    recorder.expectPresence(AppSetup, true);
    broadcast("showWindow");
    EXPECT_EQ(recorder.next().text, "showWindow");
}

/** The bus stands still: what a program is to get waits for it, the newest of it, and everything in its order. */
TEST_F(IpcTest, WhatTheBusDoesNotTakeWaits)
{
    constexpr int sent = 20'000;
    constexpr int certain = 4096;
    // Large enough for the socket to be full before the queues are.
    const std::string text(4096, 'x');
    const auto bundle = Bundle::obtain();
    bundle->putByteArray("bytes", text.data(), static_cast<int>(text.size()));
    const ErrorLog log;
    ASSERT_TRUE(session.init(&recorder));
    BusPeer radio(bus);
    radio.own("AppRadio");
    recorder.expectPresence(AppRadio, true);
    bus.signal(SIGSTOP);
    for (int number = 0; number < sent; ++number)
        ASSERT_TRUE(MessageHelper::postMessage(AppRadio, makeMessage(someMessage, number, bundle)));
    bus.signal(SIGCONT);

    int last = -1;
    int received = 0;
    while (last < sent - 1)
    {
        const int number = readHead(radio.next("Post"))[1];
        ASSERT_GT(number, last);
        ASSERT_TRUE(number == last + 1 || number <= sent - certain);
        last = number;
        ++received;
    }
    EXPECT_LT(received, sent) << "memory has an end";
    EXPECT_EQ(ErrorLog::count("messages wait for AppRadio: the oldest go"), 1);
}

/**
    The bus dies and another comes at its place: everybody was gone, who comes again is heard again, and the engine is
    found by its name.
*/
TEST_F(IpcTest, FindsTheBusAgain)
{
    const ErrorLog log;
    Configuration::get().ipcAddress = "unix:guid=" + juce::String::repeatedString("0", 32) + "," +
                                      bus.address().fromFirstOccurrenceOf(":", false, false) +
                                      ",guid=" + juce::String::repeatedString("1", 32);
    ASSERT_TRUE(session.init(&recorder));
    {
        BusPeer radio(bus);
        radio.own("AppRadio");
        recorder.expectPresence(AppRadio, true);
        bus.stop();
        recorder.expectPresence(AppRadio, false);
    }
    EXPECT_FALSE(MessageHelper::postMessage(AppRadio, makeMessage(someMessage)));
    EXPECT_FALSE(MessageHelper::broadcastMessage(makeMessage(someMessage)));
    bus.start();
    BusPeer radio(bus);
    radio.own("AppRadio");
    recorder.expectPresence(AppRadio, true);
    EXPECT_TRUE(MessageHelper::postMessage(AppRadio, makeMessage(someMessage)));
    EXPECT_EQ(readHead(radio.next("Post"))[0], someMessage);
    ASSERT_TRUE(eventually([&] { return sd_bus_get_name_creds(radio.get(), "com.corvane.AppMain", 0, nullptr) >= 0; }));
    radio.post("AppMain", hello);
    recorder.expectMessage(AppRadio, hello);
    EXPECT_EQ(ErrorLog::count("trying again"), 1) << "one line for a loss, not one for each attempt";
}

TEST_F(IpcTest, GoesOnTryingWhenThereIsNoBusAtFirst)
{
    const ErrorLog log;
    bus.stop();
    EXPECT_FALSE(session.init(&recorder));
    bus.start();
    BusPeer radio(bus);
    radio.own("AppRadio");
    recorder.expectPresence(AppRadio, true);
    session.close();

    // A closed session answers nobody and may be opened again.
    EXPECT_FALSE(MessageHelper::isPresent(AppRadio));
    EXPECT_FALSE(MessageHelper::postMessage(AppRadio, makeMessage(someMessage)));
    EXPECT_TRUE(session.init(&recorder));
    EXPECT_TRUE(MessageHelper::isPresent(AppRadio));
}

/** An engine that has not quite ended still holds the name: the next one waits for it. */
TEST_F(IpcTest, TakesItsNameOverFromWhoHeldIt)
{
    const ErrorLog log;
    BusPeer former(bus);
    former.own("AppMain");
    EXPECT_FALSE(session.init(&recorder));
    EXPECT_EQ(ErrorLog::count("has another owner"), 1);
    former.release("AppMain");
    BusPeer radio(bus);
    radio.own("AppRadio");
    recorder.expectPresence(AppRadio, true);
    radio.post("AppMain", hello);
    recorder.expectMessage(AppRadio, hello);
}

/** The same classes in a source program: it hears the engine as application type 0, and nobody else to all. */
TEST_F(IpcTest, ServesAProgramAsWell)
{
    MessageHelper::config(AppRadio, MessageHelper::getDestName);
    BusPeer engine(bus);
    BusPeer usb(bus);
    engine.own("AppMain");
    usb.own("AppUSB");
    ASSERT_TRUE(session.init(&recorder));
    EXPECT_EQ(recorder.next().appType + recorder.next().appType, AppMain + AppUSB) << "in any order";
    for (auto* sender : { &usb, &engine })
        BusPeer::check(sd_bus_emit_signal(sender->get(), "/com/corvane/Endpoint", "com.corvane.Endpoint", "Message",
                                          "iiia{sv}", sender == &usb ? 1 : int { RMSG_HEARTBEAT }, 0, 0, 0));
    recorder.expectMessage(AppMain, RMSG_HEARTBEAT);
}

/** Sends from several threads while the receiver is told things; run with the thread sanitizer. */
TEST_F(IpcTest, ManyThreadsMaySend)
{
    constexpr int threads = 4;
    constexpr int each = 200;
    ASSERT_TRUE(session.init(&recorder));
    BusPeer radio(bus);
    radio.own("AppRadio");
    recorder.expectPresence(AppRadio, true);
    std::vector<std::thread> senders;
    for (int sender = 0; sender < threads; ++sender)
        senders.emplace_back(
            [sender]
            {
                for (int number = 0; number < each; ++number)
                    while (!MessageHelper::postMessage(AppRadio, makeMessage(sender, number)))
                        std::this_thread::yield();
            });
    std::array<int, threads> expected {};
    for (int received = 0; received < threads * each; ++received)
    {
        const auto head = readHead(radio.next("Post"));
        ASSERT_EQ(head[1], expected[static_cast<std::size_t>(head[0])]++) << "each thread's messages stay in order";
        if (received % 10 == 0)
            radio.post("AppMain", someMessage, received);
    }
    for (auto& sender : senders)
        sender.join();
    for (int received = 0; received < threads * each; received += 10)
        EXPECT_EQ(recorder.expectMessage(AppRadio, someMessage).arg1, received);
}
