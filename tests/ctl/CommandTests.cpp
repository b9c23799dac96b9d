#include "FakeEngine.h"

#include "bench/unit/Child.h"
#include "support/Golden.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <regex>

namespace
{

using testing::HasSubstr;
using testing::Not;
using Json = Diagnostics::Json;
namespace Wire = Diagnostics::Wire;

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return { std::istreambuf_iterator(file), {} };
}

/** The command itself, beside an engine's answers of answers.json. */
class Command : public testing::Test
{
protected:
    struct Result
    {
        std::string text; ///< of both outputs
        int status = -1;
    };

    Command() { std::filesystem::create_directory(folder); }
    ~Command() override { std::filesystem::remove_all(folder); }

    /** Starts it with these words, which are separated by blanks. */
    void start(const std::string& words, std::map<std::string, std::string> environment = {})
    {
        std::vector<std::string> arguments;
        std::istringstream each(words);
        for (std::string word; each >> word;)
            arguments.push_back(word);
        environment.try_emplace("HEADUNIT_BUS", address);
        const auto ended = [this](int status) { exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1; };
        std::filesystem::remove(output);
        ASSERT_EQ(child.start({ HEADUNIT_BUILD_DIR "/bin/headunit-ctl", arguments, environment, output, {} }, ended),
                  "");
    }
    Result finish()
    {
        EXPECT_TRUE(child.waitForEnd(std::chrono::minutes(1)));
        child.end({});
        return { contentOf(output), exitStatus };
    }
    Result run(const std::string& words, const std::map<std::string, std::string>& environment = {})
    {
        start(words, environment);
        return finish();
    }
    std::string soFar() const { return contentOf(output); }
    bool says(const std::string& text)
    {
        return eventually([&] { return soFar().find(text) != std::string::npos; });
    }

    const std::string folder = juce::File::createTempFile("ctl").getFullPathName().toStdString();
    const std::string output = folder + "/output";
    const Json canned = Json::parse(contentOf(HEADUNIT_SOURCE_DIR "/tests/ctl/answers.json"));
    TestBus bus;
    const std::string address = bus.address().toStdString();
    std::unique_ptr<FakeEngine> engine = std::make_unique<FakeEngine>(address, canned);
    Bench::Child child;

private:
    std::atomic<int> exitStatus { -1 };
};

} // namespace

/** What a person sees of every answer. */
TEST_F(Command, PrintsWhatTheEngineAnswers)
{
    std::string all;
    for (const auto* words :
         { "state", "pages", "programs", "requests", "link", "remote", "dsp", "settings", "groups", "queues",
           "counters", "counters --all", "latency", "why page auxin2", "log debug Extend/ViewManager" })
    {
        const auto [text, status] = run(words);
        all += std::string("$ headunit-ctl ") + words + "\n" + text + "\n";
        EXPECT_EQ(status, 0) << words;
    }
    expectGolden("ctl/golden/commands.txt", juce::String::fromUTF8(all.c_str()));
    EXPECT_EQ(engine->called("SetLog"), Json({ "debug", "Extend/ViewManager" }));
}

TEST_F(Command, PrintsTheSameAsJson)
{
    for (const auto& [words, method] :
         { std::pair("--json state", "State"), std::pair("pages --json", "Pages"),
           std::pair("counters --all --json", "Counters"), std::pair("why silent --json", "Why") })
        EXPECT_EQ(Json::parse(run(words).text), canned[method]) << words;
    EXPECT_EQ(Json::parse(run("counters --json").text).size(), 1u) << "those above 0";
}

/** Names are the engine's, in capitals or not, and without what all of a kind begin with. */
TEST_F(Command, AsksWithTheEnginesNames)
{
    const std::pair<const char*, Json> cases[] = {
        { "why page fm", { "page", "mbFM" } },       { "why page MBMAINMENU", { "page", "mbMainMenu" } },
        { "why source tape", { "source", "tape" } }, { "why not running usb", { "program", "AppUSB" } },
        { "why silent", { "silent", "" } },          { "why request 12", { "request", "12" } },
    };
    for (const auto& [words, parameters] : cases)
    {
        EXPECT_EQ(run(words).status, 0) << words;
        EXPECT_EQ(engine->called("Why"), parameters) << words;
    }
    run("settings EQ-Preset");
    EXPECT_EQ(engine->called("Settings"), Json({ "eq-preset" }));
}

TEST_F(Command, SaysWhatIsWrongInOneLine)
{
    engine->refuse("Why", Wire::unknownError, "There is no page mbTape.");
    engine->refuse("Dsp", Wire::failedError, "The chip is on fire.");
    engine->refuse("Latency", SD_BUS_ERROR_UNKNOWN_METHOD, "Unknown method Latency");
    engine->refuse("Link", SD_BUS_ERROR_ACCESS_DENIED, "not for you");
    engine->keepSilent("Remote");
    const std::tuple<const char*, const char*, int> cases[] = {
        { "why page mbTape", "headunit-ctl: There is no page mbTape.\n", 2 },
        { "dsp", "headunit-ctl: The chip is on fire.\n", 1 },
        { "latency", "headunit-ctl: the engine is of another version, it has no Latency\n", 2 },
        { "link", "headunit-ctl: the bus does not allow to ask the engine: not for you\n", 1 },
        { "remote", "headunit-ctl: the engine does not answer\n", 1 },
        { "state --bus unix:path=/nowhere/bus",
          "headunit-ctl: there is no connection to the bus at unix:path=/nowhere/bus: No such file or directory\n", 3 },
        { "state --bus nonsense", "headunit-ctl: there is no connection to the bus at nonsense: Connection refused\n",
          3 },
    };
    for (const auto& [words, text, status] : cases)
    {
        const auto result = run(words);
        EXPECT_EQ(result.text, text) << words;
        EXPECT_EQ(result.status, status) << words;
    }
    for (const auto* words : { "", "tape", "why", "why not", "why page", "log", "trace f 601", "trace f 0", "state 1" })
        EXPECT_GT(run(words).status, 100) << words;

    engine.reset();
    EXPECT_EQ(run("state").text, "headunit-ctl: no engine answers on the bus at " + address + "\n");
    EXPECT_EQ(run("state").status, 3);
    engine = std::make_unique<FakeEngine>(address, canned, Wire::version + 1);
    EXPECT_THAT(run("state").text, HasSubstr("answers in version 2, and this headunit-ctl reads 1"));
}

TEST_F(Command, FindsTheBus)
{
    const auto file = folder + "/engine.toml";
    const auto write = [&](const std::string& text) { std::ofstream(file) << text; };
    const auto withFile = [&](const std::string& environment) {
        return run("--config " + file + " state", { { "HEADUNIT_BUS", environment } });
    };

    write("[unit]\nosd = 1\n[ipc]\naddress = '" + address + "'\n");
    EXPECT_EQ(withFile("").status, 0) << "in the configuration";
    EXPECT_EQ(withFile("unix:path=/nowhere").status, 3) << "the environment comes first";
    EXPECT_EQ(run("--bus " + address + " state", { { "HEADUNIT_BUS", "unix:path=/nowhere" } }).status, 0);
    write("[ipc]\naddress = 4\n");
    EXPECT_EQ(withFile("").text, "headunit-ctl: " + file + ": ipc.address: a text is wanted\n");
    write("[ipc]\naddress = \n");
    EXPECT_THAT(withFile("").text, HasSubstr(file + ":2: "));
    write("");
    EXPECT_EQ(
        run("--config " + file + " state", { { "HEADUNIT_BUS", "" }, { "DBUS_SESSION_BUS_ADDRESS", address } }).status,
        0)
        << "the session's";
    EXPECT_EQ(withFile("").text,
              "headunit-ctl: there is no connection to the session bus: the environment names none\n");
}

/** What a reader of the documents types is understood. To watch has no end, and no bus is there that would answer. */
TEST_F(Command, UnderstandsWhatTheDocumentsSay)
{
    namespace fs = std::filesystem;
    std::vector<fs::path> documents { HEADUNIT_SOURCE_DIR "/README.md", HEADUNIT_SOURCE_DIR "/bench/README.md" };
    for (const auto& entry : fs::directory_iterator(HEADUNIT_SOURCE_DIR "/docs"))
        if (entry.path().extension() == ".md")
            documents.push_back(entry.path());
    const std::regex said("(?:`|\n +)headunit-ctl ([^`|#\n]+)");
    int count = 0;
    for (const auto& document : documents)
    {
        const auto text = contentOf(document.string());
        for (std::sregex_iterator each(text.begin(), text.end(), said), end; each != end; ++each)
            if (const auto words = (*each)[1].str(); words.find("watch") == std::string::npos)
            {
                EXPECT_EQ(run(words, { { "HEADUNIT_BUS", "unix:path=/nowhere" } }).status, 3) << document << words;
                ++count;
            }
    }
    EXPECT_GT(count, 10);
}

/** A text of a program must not take the terminal over, nor an answer of another form end the command. */
TEST_F(Command, MindsNothingThatAnAnswerHolds)
{
    const Json records[] = {
        { { "version", "\x1b[2J\xc2\x9b" }, { "front", 7 }, { "muteReasons", "x" }, { "runningForMs", "soon" } },
        { { "volume1", { "a", "b" } }, { "runningForMs", std::numeric_limits<std::int64_t>::max() } },
        { { "runningForMs", -1 }, { "front", "" }, { "changing", 3 } },
        Json::object(),
    };
    for (const auto& record : records)
        for (const auto& answer : { record, Json::array({ record, record }), Json::array() })
            for (const auto* words : { "state", "pages", "settings", "why silent" })
            {
                for (const auto* method : { "State", "Pages", "Settings", "Why" })
                    engine->answer(method, answer);
                const auto result = run(words);
                EXPECT_EQ(result.status, 0) << words << answer;
                EXPECT_THAT(result.text, Not(HasSubstr("\x1b"))) << words << answer;
                EXPECT_THAT(result.text, Not(HasSubstr("\xc2\x9b"))) << words << answer;
            }
}

TEST_F(Command, TakesATrace)
{
    const auto file = folder + "/trace.json";
    std::ofstream(file) << "an older one";
    engine->refuse("StartTrace", Wire::failedError, "A trace is taken already.");
    EXPECT_EQ(run("trace " + file).text, "headunit-ctl: A trace is taken already.\n");
    EXPECT_EQ(contentOf(file), "an older one");
    EXPECT_EQ(std::ranges::distance(std::filesystem::directory_iterator(folder)), 2) << "it and the output";
}

/** It ends by itself, by Ctrl-C, or with the engine; what was written is there each time. */
TEST_F(Command, EndsATrace)
{
    const auto file = folder + "/trace.json";
    engine->answer("StartTrace", nullptr);
    start("trace " + file + " 600");
    ASSERT_TRUE(eventually([this] { return engine->isTracing(); }));
    EXPECT_EQ(engine->called("StartTrace"), Json({ 600 }));
    engine->endTrace({ { "events", 2345 }, { "lost", 12 }, { "ms", 10000 }, { "failure", "disk full" } });
    const auto ended = finish();
    EXPECT_THAT(ended.text,
                HasSubstr("2345 events in 10 s, written to " + file + "  12 lost\nIt ended early: disk full\n"));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(contentOf(file), "[]");

    std::filesystem::remove(file);
    start("trace " + file + " 600");
    ASSERT_TRUE(
        eventually([&] { return std::filesystem::exists(file + ".part") && !contentOf(file + ".part").empty(); }));
    child.signal(SIGINT);
    EXPECT_THAT(finish().text, HasSubstr("17 events in 400 ms"));
    EXPECT_EQ(contentOf(file), "[]");

    std::filesystem::remove(file);
    start("trace " + file + " 600");
    ASSERT_TRUE(
        eventually([&] { return std::filesystem::exists(file + ".part") && !contentOf(file + ".part").empty(); }));
    engine.reset();
    const auto left = finish();
    EXPECT_THAT(left.text, HasSubstr("the engine has left the bus"));
    EXPECT_EQ(left.status, 3);
    EXPECT_EQ(contentOf(file), "[]");
}

/**
    Somebody looks on while the engine changes a page, has another name on another bus, goes, and comes back with another
    page in front. The address names the identity of a bus that was there before.
*/
TEST_F(Command, WatchesAnEngineThatGoesAndComesBack)
{
    start("watch", { { "HEADUNIT_BUS", address + ",guid=0123456789abcdef0123456789abcdef" } });
    ASSERT_TRUE(says("the engine runs"));
    auto state = canned["State"];
    state["front"] = "mbEQ";
    state["runningForMs"] = 193000;
    engine->answer("State", state);
    ASSERT_TRUE(says("mbFM → mbEQ"));

    const auto leaves = [this](std::ptrdiff_t times)
    {
        engine.reset();
        return eventually(
            [&]
            {
                const auto text = soFar();
                const std::regex said("no engine answers");
                return std::distance(std::sregex_iterator(text.begin(), text.end(), said), {}) == times;
            });
    };
    ASSERT_TRUE(leaves(1));
    auto answers = canned;
    answers["State"] = state;
    engine = std::make_unique<FakeEngine>(address, answers);
    ASSERT_TRUE(says("the engine answers again"));

    ASSERT_TRUE(leaves(2));
    engine = std::make_unique<FakeEngine>(
        address,
        Json({ { "State", { { "front", "mbMainMenu" }, { "muted", true } } },
               { "Pages", { { { "page", "mbFM" }, { "play", "stopped" } }, { { "busy", "the view manager" } } } },
               { "Programs", Json::array() } }));
    ASSERT_TRUE(says("playing → stopped"));
    child.signal(SIGTERM);
    const auto [text, status] = finish();
    EXPECT_EQ(status, 0);
    const auto* time = "[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}  ";
    for (const auto* line :
         { "the engine runs", "unit            front           mbFM → mbEQ", "the engine answers again",
           "no engine answers on .*", "the engine was started anew",
           "unit            front           mbEQ → mbMainMenu", "mbFM            play            playing → stopped" })
        EXPECT_THAT(text, testing::ContainsRegex(std::string("(^|\n)") + time + line + "\n"));
    EXPECT_EQ(std::ranges::count(text, '\n'), 8) << text;
}

TEST_F(Command, WatchesInJson)
{
    start("watch --json");
    ASSERT_TRUE(eventually([this] { return !engine->called("Programs").is_null(); }));
    engine->answer("Programs", Json::array({ { { "program", "AppRadio" }, { "process", 0 } } }));
    ASSERT_TRUE(says("AppRadio"));
    child.signal(SIGINT);
    std::istringstream lines(finish().text);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(Json::parse(line)["event"], "the engine runs");
    std::getline(lines, line);
    const auto change = Json::parse(line);
    EXPECT_EQ(change["name"], "AppRadio");
    EXPECT_EQ(change["key"], "process");
    EXPECT_EQ(change["before"], 4711);
    EXPECT_EQ(change["after"], 0);
}
