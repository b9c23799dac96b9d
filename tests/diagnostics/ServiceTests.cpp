#include "diagnostics/Service.h"

#include "EngineApi/Provided.h"
#include "EngineLayer/hostlink/HostSessionManager.h"
#include "EngineLayer/keys/KeyManager.h"
#include "EngineLayer/wiredremote/TLX70Dev.h"
#include "Extend/ExeMonitor.h"
#include "diagnostics/TraceDocument.h"
#include "doubles/ProcessDouble.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "platform/base/Threads.h"
#include "support/FakeAudio.h"
#include "support/LogCapture.h"
#include "support/StateFixture.h"
#include "support/TestBus.h"

#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>

using namespace std::chrono_literals;
using Diagnostics::Json;
using testing::Contains;
using testing::HasSubstr;

namespace
{

namespace Wire = Diagnostics::Wire;

/** Somebody on the bus who asks the engine. */
class Client : public BusPeer
{
public:
    using BusPeer::BusPeer;

    struct Answer
    {
        Json content;
        std::string types; ///< of what it carries
        std::string error; ///< its name; "" for none
        std::string sentence;
    };

    template <typename... Arguments>
    Platform::SdBusMessage newCall(const char* method, const char* types = "", Arguments... arguments) const
    {
        sd_bus_message* raw = nullptr;
        check(
            sd_bus_message_new_method_call(get(), &raw, Wire::busName, Wire::objectPath, Wire::interfaceName, method));
        Platform::SdBusMessage call(raw);
        if (*types != '\0')
            check(sd_bus_message_append(raw, types, arguments...));
        return call;
    }

    template <typename... Arguments>
    Answer ask(const char* method, const char* types = "", Arguments... arguments)
    {
        constexpr std::uint64_t limitUs = 60'000'000;
        const auto call = newCall(method, types, arguments...);
        sd_bus_error error = SD_BUS_ERROR_NULL;
        sd_bus_message* raw = nullptr;
        const int result = sd_bus_call(get(), call.get(), limitUs, &error, &raw);
        const Platform::SdBusMessage reply(raw);
        Answer answer;
        if (result < 0)
        {
            answer.error = error.name == nullptr ? strerror(-result) : error.name;
            answer.sentence = error.message == nullptr ? "" : error.message;
        }
        else
        {
            answer.types = sd_bus_message_get_signature(raw, 1);
            answer.content = Wire::read(raw);
        }
        sd_bus_error_free(&error);
        return answer;
    }
};

/** Its status has a lock, which a test keeps. */
class SlowAudio : public FakeAudio
{
public:
    Dsp::DspStatus getStatus() const override
    {
        const std::lock_guard guard(lock);
        return {};
    }
    Platform::Mutex lock;
};

class Hanging : public Kernel::ComponentTask
{
public:
    void handleMessage(juce::int32, juce::int32, juce::int32, const Kernel::Payload&) override
    {
        entered.signal();
        released.wait();
    }
    Platform::Event entered, released { true };
};

class ServiceTest : public StateFixture
{
protected:
    ServiceTest()
    {
        // As in an engine that runs: nobody who asks is the first to need them.
        EngineLayer::HostSessionManager::getInstance();
        EngineLayer::KeyManager::getInstance();
        add(EngineLayer::TLX70Dev::getInstance(), Kernel::wiredRemoteId);
        Extend::ViewManager::getInstance();
        Dsp::DSPSettingHelperImpl::getInstance();
        EngineApi::Provided<Dsp::ChipManager>::set(&audio);
        service.start();
        EXPECT_TRUE(isThere());
    }
    ~ServiceTest() override
    {
        service.stop();
        EngineApi::Provided<Dsp::ChipManager>::set(nullptr);
        std::remove(path.c_str());
    }

    bool isThere()
    {
        return eventually([this] { return Client(bus).ask("State").error.empty(); });
    }

    std::string startTrace(Client& client, unsigned seconds = 60)
    {
        const Platform::Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT, 0600));
        return client.ask("StartTrace", "hu", file.get(), seconds).error;
    }

    LogCapture log;
    TestBus bus;
    SlowAudio audio;
    const std::string path = testing::TempDir() + "/" + juce::Uuid().toString().toStdString();
    Diagnostics::Service service;
};

/** The line of docs/interfaces.md about what this method answers. */
std::string documented(const std::string& method)
{
    std::ifstream file(HEADUNIT_SOURCE_DIR "/docs/interfaces.md");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("| `" + method + "`") && line.find("()") == std::string::npos)
            return line;
    return {};
}

void expectDocumented(const std::string& method, const Json& content)
{
    const auto line = documented(method);
    ASSERT_NE(line, "") << method;
    for (const auto& record : content.is_array() ? content : Json::array({ content }))
        for (const auto& each : record.items())
            EXPECT_THAT(line, HasSubstr("`" + each.key() + "`")) << method;
}

} // namespace

TEST_F(ServiceTest, AnswersEveryCallWithWhatIsDocumented)
{
    enterNormalRun();
    complete(Pubhead::mbFM);
    using Platform::doubles::ProcessDouble;
    ProcessDouble::setUsage(
        Platform::ProcessUsage { .memoryBytes = 5'000'000, .memoryLimitBytes = 8'000'000, .cpuMs = 1200 });
    auto& programs = *Extend::ExeMonitor::getInstance();
    ASSERT_TRUE(programs.launchApp(Pubhead::AppRadio, Pubhead::mbFM, "/radio", nullptr, false));
    Client client(bus);
    const std::map<std::string, const char*> plain {
        { "State", "a{sv}" },   { "Pages", "aa{sv}" },  { "Programs", "aa{sv}" }, { "Requests", "aa{sv}" },
        { "Groups", "aa{sv}" }, { "Queues", "aa{sv}" }, { "Counters", "aa{sv}" }, { "Latency", "aa{sv}" },
        { "Link", "a{sv}" },    { "Remote", "a{sv}" },  { "Dsp", "a{sv}" },       { "StopTrace", "a{sv}" },
    };
    for (const auto& [method, types] : plain)
    {
        const auto answer = client.ask(method.c_str());
        EXPECT_EQ(answer.error + answer.sentence, "") << method;
        EXPECT_EQ(answer.types, types) << method;
        expectDocumented(method, answer.content);
    }
    const auto state = client.ask("State").content;
    EXPECT_EQ(state.at("state"), "kNormalRun");
    EXPECT_EQ(state.at("front"), "mbFM");
    EXPECT_EQ(state.at("muteReasons"), Json::array());
    EXPECT_EQ(client.ask("Requests").content.back().at("status"), "done");
    const auto known = client.ask("Programs").content;
    const auto radio = std::ranges::find(known, "AppRadio", [](const Json& each) { return each.at("program"); });
    ASSERT_NE(radio, known.end());
    EXPECT_EQ(radio->at("memoryBytes"), 5'000'000);
    EXPECT_EQ(radio->at("memoryLimitBytes"), 8'000'000);
    EXPECT_EQ(radio->at("cpuMs"), 1200);
    ProcessDouble::reset();

    const auto settings = client.ask("Settings", "s", "");
    EXPECT_EQ(settings.types, "aa{sv}");
    expectDocumented("Settings", settings.content);
    ASSERT_GT(settings.content.size(), 10u);
    const auto name = settings.content[3].at("name").get<std::string>();
    EXPECT_EQ(client.ask("Settings", "s", name.c_str()).content, Json::array({ settings.content[3] }));
    const auto why = client.ask("Why", "ss", "page", "mbFM");
    EXPECT_EQ(why.types, "a{sv}");
    expectDocumented("Why", why.content);
    EXPECT_EQ(client.ask("SetLog", "ss", "default", "").types, "");

    std::uint32_t version = 0;
    ASSERT_GE(sd_bus_get_property_trivial(client.get(), Wire::busName, Wire::objectPath, Wire::interfaceName, "Version",
                                          nullptr, 'u', &version),
              0);
    EXPECT_EQ(version, Wire::version);
}

/** Who makes its calls from the description gets the answers that it says. */
TEST_F(ServiceTest, ItsDescriptionIsTheDocumentedOne)
{
    const Client client(bus);
    sd_bus_message* raw = nullptr;
    ASSERT_GE(sd_bus_call_method(client.get(), Wire::busName, Wire::objectPath, "org.freedesktop.DBus.Introspectable",
                                 "Introspect", nullptr, &raw, nullptr),
              0);
    const Platform::SdBusMessage reply(raw);
    const auto xml = juce::parseXML(juce::String(Wire::read(raw).get<std::string>()));
    ASSERT_NE(xml, nullptr);
    const auto* interface = xml->getChildByAttribute("name", Wire::interfaceName);
    ASSERT_NE(interface, nullptr);
    std::map<std::string, std::string> described;
    for (const auto* member : interface->getChildIterator())
    {
        auto& types = described[member->getStringAttribute("name").toStdString()];
        for (const auto* argument : member->getChildWithTagNameIterator("arg"))
            types += (argument->getStringAttribute("direction") == "in" ? "<" : ">") +
                     argument->getStringAttribute("type").toStdString();
    }
    const std::map<std::string, std::string> expected {
        { "State", ">a{sv}" },      { "Pages", ">aa{sv}" },  { "Programs", ">aa{sv}" }, { "Requests", ">aa{sv}" },
        { "Groups", ">aa{sv}" },    { "Queues", ">aa{sv}" }, { "Counters", ">aa{sv}" }, { "Latency", ">aa{sv}" },
        { "Link", ">a{sv}" },       { "Remote", ">a{sv}" },  { "Dsp", ">a{sv}" },       { "Settings", "<s>aa{sv}" },
        { "Why", "<s<s>a{sv}" },    { "SetLog", "<s<s" },    { "StartTrace", "<h<u" },  { "StopTrace", ">a{sv}" },
        { "TraceEnded", ">a{sv}" }, { "Version", "" },
    };
    EXPECT_EQ(described, expected);
}

TEST_F(ServiceTest, WhatItDoesNotKnowOrCannotDoHasTheNameOfItsErrorAndASentence)
{
    Client client(bus);
    const auto expectError = [](const Client::Answer& answer, const char* name, const char* part)
    {
        EXPECT_EQ(answer.error, name);
        EXPECT_THAT(answer.sentence, HasSubstr(part));
    };
    expectError(client.ask("Why", "ss", "page", "mbNothing"), Wire::unknownError, "mbNothing");
    expectError(client.ask("Why", "ss", "source", ""), Wire::unknownError, "page");
    expectError(client.ask("Why", "ss", "weather", "x"), Wire::unknownError, "weather");
    expectError(client.ask("Why", "ss", "request", "999"), Wire::unknownError, "999");
    expectError(client.ask("Why", "ss", "program", "AppNothing"), Wire::unknownError, "AppNothing");
    expectError(client.ask("Settings", "s", "NoSuchSetting"), Wire::unknownError, "NoSuchSetting");
    expectError(client.ask("SetLog", "ss", "loud", ""), Wire::unknownError, "loud");
    Client::Answer last;
    for (std::size_t i = 0; i <= Platform::Logger::mostFiles; ++i)
        last = client.ask("SetLog", "ss", "debug", ("file" + std::to_string(i)).c_str());
    expectError(last, Wire::failedError, "Too many files");
    EXPECT_EQ(client.ask("SetLog", "ss", "default", "").error, "");
    EXPECT_EQ(startTrace(client, 0), Wire::unknownError);
    EXPECT_EQ(startTrace(client, 601), Wire::unknownError);
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    expectError(client.ask("StartTrace", "hu", ends[1], 10), Wire::failedError, "regular file");
    ::close(ends[0]);
    ::close(ends[1]);
    expectError(client.ask("Settings"), SD_BUS_ERROR_INVALID_ARGS, "");
    expectError(client.ask("Reboot"), SD_BUS_ERROR_UNKNOWN_METHOD, "Reboot");
    EXPECT_EQ(client.ask("State").error, "");
}

/** The unit hangs: a handler does not come back, and another thread keeps the lock of the sound. Whoever asks learns that. */
TEST_F(ServiceTest, AStuckEngineStillSaysWhatItIsStuckIn)
{
    auto* hanging = new Hanging;
    add(hanging, Kernel::keyManagerId);
    engine().start(); // which the first message tells of
    hanging->entered.wait();
    Kernel::postSystemMessage(Kernel::keyManagerId, Kernel::MSG_APP_KEY, 0, 0);
    audio.lock.lock();
    Client client(bus);
    const auto state = client.ask("State");
    EXPECT_THAT(state.content.value("busy", Json()), Contains("the audio control"));
    EXPECT_FALSE(state.content.contains("muted"));
    EXPECT_TRUE(state.content.contains("front") && state.content.contains("waitingRequests")) << "all the rest";
    EXPECT_THAT(client.ask("Dsp").content.value("busy", Json()), Contains("the audio control"));
    EXPECT_TRUE(eventually(
        [&]
        {
            const auto why = client.ask("Why", "ss", "silent", "");
            EXPECT_TRUE(why.error.empty() || why.error == Wire::failedError) << why.error;
            return why.error.empty() &&
                   why.content.at("sentence")
                           .get<std::string>()
                           .find("Tested is busy with MSG_SYS_START of KeyManager") != std::string::npos;
        }));
    const auto groups = client.ask("Groups").content;
    const auto tested = std::ranges::find_if(groups, [](const auto& each) { return each.at("group") == "Tested"; });
    ASSERT_NE(tested, groups.end());
    expectDocumented("Groups", *tested);
    EXPECT_EQ(tested->value("component", ""), "KeyManager");
    EXPECT_EQ(tested->value("message", ""), "MSG_SYS_START");
    EXPECT_GE(tested->value("queued", 0), 1);
    EXPECT_THAT(tested->value("next", ""), HasSubstr(" for "));
    audio.lock.unlock();
    EXPECT_FALSE(client.ask("State").content.contains("busy"));
    hanging->released.signal();
}

/** Nobody who asks too much, or does not listen, keeps the answers from the others. */
TEST_F(ServiceTest, OneWhoFloodsItHoldsUpNobody)
{
    constexpr int calls = 500;
    int answered = 0;
    const auto count = [](sd_bus_message* reply, void* number, sd_bus_error*)
    {
        *static_cast<int*>(number) += sd_bus_message_is_method_error(reply, nullptr) == 0 ? 1 : 0;
        return 1;
    };
    Client patient(bus), other(bus);
    auto deaf = std::make_unique<Client>(bus);
    for (int i = 0; i < calls; ++i)
    {
        for (auto* client : { &patient, deaf.get() })
            sd_bus_call_async(client->get(), nullptr, client->newCall("Pages").get(), count,
                              client == &patient ? &answered : nullptr, 0);
        sd_bus_process(patient.get(), nullptr);
    }
    sd_bus_flush(deaf->get());
    EXPECT_EQ(other.ask("State").error, "");
    deaf.reset();
    EXPECT_TRUE(eventually(
        [&]
        {
            while (sd_bus_process(patient.get(), nullptr) > 0)
                ;
            return answered == calls;
        }))
        << answered;
    EXPECT_EQ(other.ask("State").error, "");
}

/** The bus is started anew, and the trace of one who was on it has nobody any more. */
TEST_F(ServiceTest, ComesBackWithTheBus)
{
    {
        Client client(bus);
        ASSERT_EQ(startTrace(client), "");
    }
    ASSERT_TRUE(eventually([] { return !Kernel::Trace::isOn(); })) << "its owner has left";
    Client client(bus);
    ASSERT_EQ(startTrace(client), "");
    bus.stop();
    EXPECT_TRUE(eventually([] { return !Kernel::Trace::isOn(); })) << "its owner has gone with the bus";
    bus.start();
    EXPECT_TRUE(isThere());
    service.stop();
    EXPECT_EQ(Client(bus).ask("State").error, SD_BUS_ERROR_SERVICE_UNKNOWN);
    service.start();
    EXPECT_TRUE(isThere());
}

TEST_F(ServiceTest, ATraceBelongsToOneAndEndsWithItsTime)
{
    Client owner(bus), other(bus);
    EXPECT_EQ(other.ask("StopTrace").content.at("events"), 0) << "there is none";
    owner.listen("type='signal',interface='com.corvane.Diagnostics'");
    ASSERT_EQ(startTrace(owner, 1), "");
    EXPECT_EQ(startTrace(other), Wire::failedError) << "one at a time";
    Kernel::Trace::note(Kernel::Trace::Kind::job, 1);
    const auto signal = owner.next("TraceEnded");
    EXPECT_STREQ(sd_bus_message_get_signature(signal.get(), 1), Wire::recordType);
    const auto summary = Wire::read(signal.get());
    EXPECT_GE(summary.at("events"), 1);
    EXPECT_GE(summary.at("ms"), 1000);
    EXPECT_FALSE(summary.contains("failure"));
    EXPECT_EQ(TraceDocument(path).facts().at("events"), summary.at("events"));

    ASSERT_EQ(startTrace(owner), "");
    EXPECT_LT(owner.ask("StopTrace").content.at("ms"), 60'000);
    EXPECT_FALSE(Kernel::Trace::isOn());
}

/** An engine that hangs in its end still has the name when the next one starts. */
TEST_F(ServiceTest, TakesTheNameWhenItIsFree)
{
    service.stop();
    const auto waits = std::string("another process has the name ") + Wire::busName + ": waiting for it";
    auto former = std::make_unique<Client>(bus);
    former->own("Diagnostics");
    service.start();
    EXPECT_TRUE(eventually([&] { return LogCapture::count(waits) > 0; }));
    former.reset();
    EXPECT_TRUE(isThere());
    EXPECT_EQ(LogCapture::count(waits), 1) << "not with every attempt";
}
