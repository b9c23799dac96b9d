#include "bench/unit/Child.h"
#include "bench/unit/HeldThread.h"
#include "support/Eventually.h"
#include "support/PacketServer.h"
#include "support/Terminal.h"
#include "support/XServer.h"

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>

#include <algorithm>
#include <csignal>
#include <poll.h>
#include <set>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{

constexpr const char* engineProgram = HEADUNIT_BUILD_DIR "/bin/headunit-engine";

/** What a finished process said and how it ended. */
struct Outcome
{
    std::string status;
    juce::String output;
};

/** The engine as a process of its own, with a pseudo-terminal in the microcontroller's place. */
class EngineProcessTest : public testing::Test
{
protected:
    EngineProcessTest() { folder.createDirectory(); }

    ~EngineProcessTest() override
    {
        engine.reset();
        shm_unlink(sysInfoName().toRawUTF8());
        folder.deleteRecursively();
    }

    /** `extra` begins with keys of the buses. */
    juce::File writeConfiguration(const juce::String& extra = {}, const char* display = "none") const
    {
        const auto file = folder.getChildFile("engine.toml");
        file.replaceWithText(
            "[unit]\nsystem_path = \"system/\"\nresource_path = \"" HEADUNIT_BUILD_DIR "/resources/\"\n"
            "registry_path = \"registry/\"\ndisplay = \"" +
            juce::String(display) +
            "\"\nmedia_root = \"media/\"\n"
            "camera_hold_file = \"camera\"\nlog_library = \"" HEADUNIT_BUILD_DIR "/lib/libVX_Logcat.so\"\n"
            "[mcu]\nport = \"" +
            terminal.name + "\"\n[ipc]\naddress = \"unix:path=" + folder.getChildFile("no-bus").getFullPathName() +
            "\"\n[bus]\ni2c1 = \"socket:i2c\"\ngpio = \"socket:gpio\"\n" + extra);
        return file;
    }

    void start(const juce::StringArray& arguments)
    {
        // Drops what an engine that is gone has sent.
        while (terminal.hears(0))
            terminal.receive(1);
        output = folder.getNonexistentChildFile("output", {});
        Bench::Child::Options options;
        options.program = engineProgram;
        for (const auto& argument : arguments)
            options.arguments.push_back(argument.toStdString());
        options.environment = { { "HEADUNIT_LOG_FILE", folder.getChildFile("log").getFullPathName().toStdString() },
                                { "HEADUNIT_SYSINFO", sysInfoName().toStdString() } };
        options.outputFile = output.getFullPathName().toStdString();
        engine = std::make_unique<Bench::Child>();
        ASSERT_EQ(engine->start(options, [this](int raw) { status = Bench::describeStatus(raw); }), "");
    }

    /** Waits for its end; the limit only bounds a hang. */
    Outcome finish()
    {
        EXPECT_TRUE(engine->waitForEnd(std::chrono::seconds(60)));
        engine.reset();
        return { status, output.loadFileAsString() };
    }

    Outcome terminate()
    {
        engine->signal(SIGTERM);
        return finish();
    }

    /** What the system calls the threads of the engine. */
    std::set<juce::String> threadNames() const
    {
        std::set<juce::String> names;
        const juce::File tasks("/proc/" + juce::String(engine->pid()) + "/task");
        for (const auto& task : tasks.findChildFiles(juce::File::findDirectories, false))
            names.insert(task.getChildFile("comm").loadFileAsString().trim());
        return names;
    }

    juce::File folder = juce::File::createTempFile("engine");
    const Terminal terminal;
    std::unique_ptr<Bench::Child> engine;

private:
    juce::String sysInfoName() const { return "/" + folder.getFileName(); }

    std::string status; ///< of the last one that ended
    juce::File output;
};

/** What the service manager hears; the processes of this one report to it while it lives. */
class ServiceManager
{
public:
    explicit ServiceManager(const juce::File& folder)
        : path(folder.getChildFile("notify").getFullPathName().toStdString())
    {
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        EXPECT_EQ(bind(messages, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        setenv("NOTIFY_SOCKET", path.c_str(), 1);
        setenv("WATCHDOG_USEC", "800000", 1);
    }
    ~ServiceManager()
    {
        unsetenv("NOTIFY_SOCKET");
        unsetenv("WATCHDOG_USEC");
        close(messages);
    }

    /** The next message; "" when none comes for so long. */
    std::string hear(int milliseconds)
    {
        std::array<char, 256> message {};
        pollfd waiting { messages, POLLIN, 0 };
        if (poll(&waiting, 1, milliseconds) != 1)
            return {};
        return { message.data(),
                 static_cast<std::size_t>(std::max<ssize_t>(read(messages, message.data(), message.size()), 0)) };
    }

    bool hears(const std::string& expected)
    {
        for (auto message = hear(limit); !message.empty(); message = hear(limit))
            if (message == expected)
                return true;
        return false;
    }

    /** Until nothing comes for twice the watchdog's time. */
    bool becomesSilent()
    {
        return eventually([this] { return hear(1600).empty(); });
    }

private:
    static constexpr int limit = 60000;

    const int messages = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const std::string path;
};

/** A display that takes connections and never says a word; DISPLAY names it while it lives. */
class SilentDisplay
{
public:
    SilentDisplay()
    {
        mkdir(folder, 0777);
        name = ":" + std::to_string(firstNumber + getpid());
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        path = std::string(folder) + "/X" + name.substr(1);
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        unlink(path.c_str());
        EXPECT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        EXPECT_EQ(listen(listener, 8), 0);
        setenv("DISPLAY", name.c_str(), 1);
    }
    ~SilentDisplay()
    {
        close(listener);
        unlink(path.c_str());
        unsetenv("DISPLAY");
    }

    /** Whether anybody has connected. */
    bool wasOpened() const
    {
        pollfd waiting { listener, POLLIN, 0 };
        return poll(&waiting, 1, 0) == 1;
    }

private:
    static constexpr const char* folder = "/tmp/.X11-unix";
    static constexpr int firstNumber = 1000; ///< nobody's

    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::string name;
    std::string path;
};

} // namespace

TEST_F(EngineProcessTest, SaysItsVersionAndRefusesABadConfigurationInOneLine)
{
    start({ "--version" });
    const auto version = finish();
    EXPECT_EQ(version.status, "exit 0");
    EXPECT_TRUE(version.output.contains("2.0.28")) << version.output;

    const auto file = writeConfiguration("[mystery]\nkey = 1\n");
    start({ "--config", file.getFullPathName() });
    const auto refused = finish();
    EXPECT_EQ(refused.status, "exit 2");
    EXPECT_TRUE(refused.output.contains("engine.toml") && refused.output.contains("mystery")) << refused.output;
    EXPECT_EQ(refused.output.trim().indexOfChar('\n'), -1) << "one line, not more";

    start({ "--config", folder.getChildFile("absent.toml").getFullPathName() });
    EXPECT_EQ(finish().status, "exit 2");
}

/** A driver that hangs, here a key that nobody ever writes, costs one row and some seconds; the others are looked at. */
TEST_F(EngineProcessTest, ACheckComesToItsEndWhateverHangs)
{
    const auto resources = folder.getChildFile("resources");
    resources.createDirectory();
    ASSERT_EQ(mkfifo(resources.getChildFile("CommonRes.spp").getFullPathName().toRawUTF8(), 0600), 0);
    const auto file = writeConfiguration();
    file.replaceWithText(
        file.loadFileAsString().replace(HEADUNIT_BUILD_DIR "/resources/", resources.getFullPathName() + "/"));
    start({ "--check", "--config", file.getFullPathName() });
    const auto checked = finish();
    EXPECT_EQ(checked.status, "exit 1");
    for (const auto* row : { "no answer within 8 seconds", "pages without a program",
                             "power and wiring of the microcontroller", "The unit lacks something" })
        EXPECT_TRUE(checked.output.contains(row)) << row << " in " << checked.output;
    EXPECT_FALSE(folder.getChildFile("registry").exists()) << "a look makes nothing";
}

/**
    The boot stage's camera holds the screen: nothing starts. It lets go: the engine asks the microcontroller for the
    last memory.
*/
TEST_F(EngineProcessTest, WaitsForTheCameraAndEndsCleanlyOnSigterm)
{
    const auto hold = folder.getChildFile("camera");
    hold.create();
    start({ "--config", writeConfiguration().getFullPathName() });
    EXPECT_FALSE(terminal.hears(1500));
    hold.deleteFile();
    EXPECT_TRUE(terminal.hears());
    const std::set<juce::String> expected { "GeneralHigh", "GeneralNormal", "GeneralLow", "System",
                                            "MonitorSend", "serial",        "ipc",        "MonitorThread" };
    // The engine speaks while the last of them begin.
    EXPECT_TRUE(eventually([&] { return std::ranges::includes(threadNames(), expected); }));
    EXPECT_EQ(folder.getChildFile("registry/Drivers/AppleAccessory/HardwareType").loadFileAsString(), "1\n");
    const auto outcome = terminate();
    EXPECT_EQ(outcome.status, "exit 0") << outcome.output;
}

/** At the start of a board a driver may be later than the engine. */
TEST_F(EngineProcessTest, WaitsForThePortOfTheMicrocontroller)
{
    const auto late = folder.getChildFile("mcu");
    const auto file = writeConfiguration();
    file.replaceWithText(file.loadFileAsString().replace(terminal.name, late.getFullPathName()));
    start({ "--config", file.getFullPathName() });
    EXPECT_TRUE(eventually([&] { return folder.getChildFile("log").loadFileAsString().contains("cannot open"); }));
    ASSERT_TRUE(juce::File(terminal.name).createSymbolicLink(late, false));
    EXPECT_TRUE(terminal.hears());
    EXPECT_EQ(terminate().status, "exit 0");
}

/** The service manager's watchdog is fed while the camera has the screen, and later as long as every thread gets on. */
TEST_F(EngineProcessTest, FeedsTheWatchdogUntilAThreadIsStuck)
{
    ServiceManager manager(folder);
    const auto hold = folder.getChildFile("camera");
    hold.create();
    start({ "--config", writeConfiguration().getFullPathName() });
    constexpr auto* waits = "READY=1\nWATCHDOG=1\nSTATUS=The camera has the screen.";
    EXPECT_TRUE(manager.hears(waits));
    EXPECT_TRUE(manager.hears(waits)) << "again";
    hold.deleteFile();
    EXPECT_TRUE(manager.hears("READY=1\nWATCHDOG=1\nSTATUS=The engine runs."));
    EXPECT_TRUE(manager.hears("WATCHDOG=1"));

    ASSERT_TRUE(eventually([&] { return threadNames().contains("System"); })) << "a thread names itself";
    Bench::HeldThread held;
    ASSERT_EQ(held.hold(engine->pid(), "System", std::chrono::seconds(60), [] {}), "");
    terminal.send(std::string("\xA0\x55\x01\x08\x00\x01\x00\xFF", 8));
    EXPECT_TRUE(manager.becomesSilent());
    EXPECT_TRUE(eventually(
        [&] { return folder.getChildFile("log").loadFileAsString().contains("SystemGroup does not take up "); }));
    held.release();
    EXPECT_TRUE(manager.hears("WATCHDOG=1"));
    EXPECT_EQ(terminate().status, "exit 0");
    EXPECT_TRUE(manager.hears("STOPPING=1"));
}

/** The audio DSP takes a block and never answers: neither a handler nor the exit waits for it. */
TEST_F(EngineProcessTest, EndsAlthoughADeviceNeverAnswers)
{
    PacketServer chip(folder.getChildFile("spi").getFullPathName(), [](const Packet&) { return std::nullopt; });
    start({ "--config", writeConfiguration("spi2 = \"socket:spi\"\n").getFullPathName() });
    ASSERT_TRUE(terminal.hears());
    terminal.send(std::string("\xA0\x55\x01\x08\x00\x01\x00\xFF", 8));
    ASSERT_TRUE(eventually([&chip] { return !chip.takeRequests().empty(); }));
    const auto outcome = terminate();
    EXPECT_EQ(outcome.status, "exit 0");
    EXPECT_FALSE(outcome.output.contains("fault:")) << outcome.output;
    for (const auto* waiting : { "SystemGroup does not stop", "DSP does not stop" })
        EXPECT_FALSE(outcome.output.contains(waiting)) << outcome.output;
}

/** Whoever has no log library still learns what the engine says. */
TEST_F(EngineProcessTest, LogsToStandardErrorWithoutTheLibrary)
{
    const auto file = writeConfiguration();
    file.replaceWithText(file.loadFileAsString().replace("libVX_Logcat.so", "no-such-library.so"));
    start({ "--config", file.getFullPathName() });
    EXPECT_TRUE(terminal.hears());
    const auto outcome = terminate();
    EXPECT_EQ(outcome.status, "exit 0");
    EXPECT_TRUE(outcome.output.contains("headunit-engine: no log library: ")) << outcome.output;
    EXPECT_TRUE(outcome.output.contains("E SerialPort platform/SerialPort:")) << outcome.output;
}

/** A second engine of the same unit is refused; a link in the place of the lock is not followed, and stops no start. */
TEST_F(EngineProcessTest, RunsOnceAUnit)
{
    const auto configuration = writeConfiguration().getFullPathName();
    start({ "--config", configuration });
    ASSERT_TRUE(terminal.hears());
    auto first = std::move(engine);
    start({ "--config", configuration });
    const auto second = finish();
    EXPECT_EQ(second.status, "exit 1");
    EXPECT_TRUE(second.output.contains("another engine of this unit is running")) << second.output;
    first.reset();

    const auto target = folder.getChildFile("target");
    const auto lock = folder.getChildFile("registry/engine.lock");
    ASSERT_TRUE(lock.deleteFile() && target.createSymbolicLink(lock, true));
    start({ "--config", configuration });
    EXPECT_TRUE(terminal.hears());
    EXPECT_FALSE(target.existsAsFile());
    EXPECT_EQ(terminate().status, "exit 0");
}

/**
    With the display "none" one that is there is left alone; with "auto" one that never answers is waited for beside the
    unit's work, and holds up neither its start nor its end.
*/
TEST_F(EngineProcessTest, NoDisplayHoldsItUp)
{
    const SilentDisplay silent;
    const auto runOnce = [&](const char* display)
    {
        start({ "--config", writeConfiguration({}, display).getFullPathName() });
        EXPECT_TRUE(terminal.hears());
        const auto begin = juce::Time::getMillisecondCounter();
        const auto outcome = terminate();
        EXPECT_EQ(outcome.status, "exit 0") << outcome.output;
        EXPECT_FALSE(outcome.output.contains("fault")) << outcome.output;
        EXPECT_LT(juce::Time::getMillisecondCounter() - begin, 8000u);
    };
    runOnce("none");
    EXPECT_FALSE(silent.wasOpened());
    runOnce("auto");
    EXPECT_TRUE(silent.wasOpened());
}

/** The display comes after the engine and ends under it: the unit takes it up, goes on, and ends as it is told to. */
TEST_F(EngineProcessTest, TakesUpALateDisplayAndOutlivesIt)
{
    if (!XServer::isInstalled())
        GTEST_SKIP() << "Xvfb is not installed";
    XServer server;
    server.stop();
    start({ "--config", writeConfiguration({}, "auto").getFullPathName() });
    ASSERT_TRUE(terminal.hears());
    server.start();
    ASSERT_TRUE(server.isRunning());
    const auto log = folder.getChildFile("log");
    EXPECT_TRUE(eventually([&log] { return log.loadFileAsString().contains("found the X display"); }));
    server.stop();
    EXPECT_FALSE(engine->waitForEnd(std::chrono::seconds(1)));
    const auto outcome = terminate();
    EXPECT_EQ(outcome.status, "exit 0") << outcome.output;
    EXPECT_FALSE(outcome.output.contains("fault")) << outcome.output;
}
