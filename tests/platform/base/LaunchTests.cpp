// Programs that the service manager starts, by the launcher as it is built.
#include "platform/base/LaunchRequest.h"
#include "platform/base/Process.h"
#include "platform/config/Configuration.h"
#include "support/ErrorLog.h"
#include "support/Eventually.h"
#include "support/ServiceManager.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/syscall.h>
// This header does not say by itself that its functions are C ones.
extern "C"
{
#include <sys/pidfd.h>
}

using namespace Platform;
using testing::HasSubstr;

namespace
{

constexpr int programUid = 54321;

/** The launcher in a world with the users of a unit, when the tests run as the superuser; else it stays this user. */
class LaunchTest : public testing::Test
{
protected:
    LaunchTest()
    {
        std::filesystem::create_directory(folder);
        std::filesystem::permissions(folder, std::filesystem::perms::all);
        write("passwd", "root:x:0:0::/root:/bin/sh\n"
                        "headunit-program:x:54321:54321::/home/program:/bin/sh\n"
                        "stranger:x:54322:54322::/:/bin/sh\n");
        write("group", "headunit:x:54320:headunit-program,root\n");
        Configuration::get().launchSocket = folder + "/launch";
    }
    ~LaunchTest() override
    {
        Configuration::get() = before;
        manager.reset();
        std::filesystem::remove_all(folder);
    }

    std::string write(const std::string& name, const std::string& content)
    {
        std::ofstream(folder + "/" + name) << content;
        return folder + "/" + name;
    }

    void serve()
    {
        std::vector<std::string> environment { "PATH=/usr/bin:/bin", "SERVICE=launcher" };
        if (isRoot)
            environment.insert(environment.end(),
                               { "LD_PRELOAD=libnss_wrapper.so", "NSS_WRAPPER_PASSWD=" + folder + "/passwd",
                                 "NSS_WRAPPER_GROUP=" + folder + "/group", "ASAN_OPTIONS=verify_asan_link_order=0" });
        manager.emplace(Configuration::get().launchSocket,
                        std::vector<std::string> { HEADUNIT_BUILD_DIR "/bin/headunit-launch" }, environment);
    }

    Descriptor connect() const
    {
        Descriptor connection { socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0) };
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        Configuration::get().launchSocket.copyToUTF8(address.sun_path, sizeof(address.sun_path));
        EXPECT_EQ(::connect(connection.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        return connection;
    }

    std::string answerTo(const std::string& request, int passed = STDERR_FILENO) const
    {
        const auto connection = connect();
        EXPECT_EQ(LaunchPacket::send(connection.get(), request, passed), 0);
        LaunchPacket answer;
        EXPECT_EQ(answer.receive(connection.get()), 0);
        return answer.text;
    }

    ProcessHandle sleeper() { return createProcess("/bin/sleep", { "600" }); }

    const Configuration before = Configuration::get();
    const juce::TemporaryFile place;
    const std::string folder = place.getFile().getFullPathName().toStdString();
    const bool isRoot = geteuid() == 0;
    std::optional<ServiceManager> manager;
};

} // namespace

TEST_F(LaunchTest, AProgramIsAServiceOfItsOwn)
{
    Configuration::get().ipcAddress = "unix:path=/run/boat,guid=0123456789abcdef0123456789abcdef";
    setenv("NOTIFY_SOCKET", "/run/engine", 1);
    setenv("OF_ENGINE", "stays", 1);
    serve();
    const auto program =
        createProcess("/bin/sh", { "-c",
                                   "{ echo $$ $# \"$1\"; id -u; echo $HEADUNIT_BUS $DBUS_SESSION_BUS_ADDRESS; "
                                   "echo ${NOTIFY_SOCKET-none} ${SERVICE-none} $OF_ENGINE; readlink /proc/$$/fd/0; for "
                                   "n in 3 4 5 6 7 8 9; do test ! -e /proc/$$/fd/$n || readlink /proc/$$/fd/$n; done; "
                                   "} >$0/new; mv $0/new $0/facts; exec sleep 60",
                                   folder, "a b" });
    unsetenv("NOTIFY_SOCKET");
    unsetenv("OF_ENGINE");
    ASSERT_NE(program, nullptr);
    const auto facts = juce::File(folder + "/facts");
    ASSERT_TRUE(eventually([&] { return facts.existsAsFile(); }));
    const auto user = isRoot ? programUid : static_cast<int>(geteuid());
    EXPECT_EQ(facts.loadFileAsString().toStdString(), std::to_string(program->getPid()) + " 1 a b\n" +
                                                          std::to_string(user) +
                                                          "\nunix:path=/run/boat unix:path=/run/boat\n"
                                                          "none none stays\n/dev/null\n");
    EXPECT_TRUE(program->isRunning());
    program->terminate();
    EXPECT_EQ(ProcessWaiter().wait({ program }), 0);
    EXPECT_EQ(program->getExitCode(), -1) << "it is nobody's child here";
}

TEST_F(LaunchTest, WhatCannotBeStartedIsSaidOnce)
{
    serve();
    const auto plain = write("plain", "no program");
    const std::pair<std::string, const char*> cases[] { { "/no/such/program", "No such file or directory" },
                                                        { plain, "Permission denied" },
                                                        { "/usr", "Permission denied" },
                                                        { "relative",
                                                          "the request's \"path\" is not as it should be" } };
    for (const auto& [path, reason] : cases)
    {
        ErrorLog log;
        EXPECT_EQ(createProcess(path, {}), nullptr);
        EXPECT_THAT(ErrorLog::take(), testing::ElementsAre("cannot start " + path + ": " + reason));
    }
    ErrorLog log;
    EXPECT_EQ(createProcess("/bin/true", { juce::String::repeatedString("x", 128 * 1024) }), nullptr);
    EXPECT_EQ(log.count("the request: Message too long"), 1);
}

TEST_F(LaunchTest, OtherUsersAreRefused)
{
    serve();
    const std::vector<const char*> users =
        isRoot ? std::vector { "root", "stranger", "nobody-at-all" } : std::vector { "root", "nobody-at-all" };
    for (const auto* user : users)
    {
        ErrorLog log;
        Configuration::get().launchUser = user;
        EXPECT_EQ(createProcess("/bin/true", {}), nullptr) << user;
        EXPECT_EQ(log.count("cannot start /bin/true: "), 1);
        EXPECT_EQ(log.count(std::string("user ") + user), 1) << user;
    }
    if (isRoot)
    {
        Configuration::get().launchUser = "headunit-program";
        EXPECT_NE(createProcess("/bin/true", {}), nullptr);
    }
}

TEST_F(LaunchTest, ARequestOfAnotherFormIsRefused)
{
    serve();
    const std::pair<std::string, const char*> cases[] {
        { "{", "no JSON object" },
        { "[]", "no JSON object" },
        { "{}", "neither for a start nor for an end" },
        { R"({"path":"/bin/true","end":true})", "neither for a start nor for an end" },
        { R"({"path":"bin/true"})", "\\\"path\\\"" },
        { R"({"path":"/bin/true\u0000x"})", "\\\"path\\\"" },
        { R"({"path":["/bin/true"]})", "\\\"path\\\"" },
        { R"({"path":"/bin/true","arguments":"x"})", "\\\"arguments\\\"" },
        { R"({"path":"/bin/true","arguments":[1]})", "\\\"arguments\\\"" },
        { R"({"path":"/bin/true","environment":["NAME"]})", "\\\"environment\\\"" },
        { R"({"path":"/bin/true","environment":["=x"]})", "\\\"environment\\\"" },
        { R"({"path":"/bin/true","environment":[""]})", "\\\"environment\\\"" },
        { R"({"path":"/bin/true","user":7})", "\\\"user\\\"" },
        { R"({"path":"/bin/true","shell":true})", "\\\"shell\\\"" },
        { R"({"end":false})", "\\\"end\\\"" },
        { std::string(LaunchRequest::maxBytes + 1, ' '), "Message too long" },
    };
    for (const auto& [request, reason] : cases)
        EXPECT_THAT(answerTo(request), testing::AllOf(HasSubstr("{\"error\":"), HasSubstr(reason)))
            << request.substr(0, 80);
    EXPECT_THAT(answerTo(R"({"path":"/bin/true"})", -1), HasSubstr("without a descriptor"));
}

/** The engine's user may not send signals to the programs' user. */
TEST_F(LaunchTest, OnlyProgramsOfTheUserAreEnded)
{
    serve();
    const auto program = sleeper();
    ASSERT_NE(program, nullptr);
    const auto request = LaunchRequest { .ends = true }.toText();
    const Descriptor pidfd { pidfd_open(program->getPid(), 0) };
    EXPECT_EQ(answerTo(request, pidfd.get()), LaunchAnswer { .ended = true }.toText());
    EXPECT_EQ(ProcessWaiter().wait({ program }), 0);
    EXPECT_EQ(answerTo(request, pidfd.get()), LaunchAnswer { .ended = true }.toText()) << "as it has ended";
    EXPECT_THAT(answerTo(request, STDERR_FILENO), HasSubstr("cannot end it: Bad file descriptor"));
    if (!isRoot)
        return;
    const Descriptor test { pidfd_open(getpid(), 0) };
    EXPECT_THAT(answerTo(request, test.get()), HasSubstr("cannot end it: Operation not permitted"));

    std::filesystem::permissions(folder + "/launch", std::filesystem::perms::all);
    const auto other = sleeper();
    ASSERT_NE(other, nullptr);
    ErrorLog log;
    std::thread engine(
        [&]
        {
            constexpr int engineUid = 54320;
            // The system call itself changes this thread's user alone.
            EXPECT_EQ(syscall(SYS_setresuid, engineUid, engineUid, engineUid), 0);
            other->terminate();
        });
    engine.join();
    EXPECT_EQ(ProcessWaiter().wait({ other }), 0);
    EXPECT_EQ(log.count(""), 0);
}

TEST_F(LaunchTest, ALauncherThatDoesNotAnswerIsAFailure)
{
    ErrorLog log;
    EXPECT_EQ(sleeper(), nullptr);
    EXPECT_EQ(log.count("/launch: No such file or directory"), 1) << "nobody listens";

    manager.emplace(Configuration::get().launchSocket, std::vector<std::string> {}, std::vector<std::string> {});
    EXPECT_EQ(sleeper(), nullptr);
    EXPECT_EQ(log.count("cannot start /bin/sleep: "), 2) << "it went away";
}

/** It may come later, when nobody knows of it any more. */
TEST_F(LaunchTest, AProgramThatDoesNotComeInTimeIsEnded)
{
    const auto path = std::exchange(Configuration::get().launchSocket, juce::String());
    const auto slow = sleeper();
    ASSERT_NE(slow, nullptr);
    Configuration::get().launchSocket = path;
    const auto listener = listenAt(path);
    std::thread launcher(
        [&]
        {
            const Descriptor connection { accept(listener.get(), nullptr, nullptr) };
            LaunchPacket request;
            EXPECT_EQ(request.receive(connection.get()), 0);
            const Descriptor pidfd { pidfd_open(slow->getPid(), 0) };
            EXPECT_EQ(
                LaunchPacket::send(connection.get(), LaunchAnswer { .pid = slow->getPid() }.toText(), pidfd.get()), 0);
            EXPECT_EQ(ProcessWaiter().wait({ slow }), 0);
        });
    ErrorLog log;
    EXPECT_EQ(createProcess("/bin/sleep", { "60" }), nullptr);
    EXPECT_EQ(log.count("cannot start /bin/sleep: Connection timed out"), 1);
    launcher.join();
    EXPECT_EQ(slow->getExitCode(), 137);
}
