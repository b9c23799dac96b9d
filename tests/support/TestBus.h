#pragma once

#include "platform/channel/linux/IpcSdBus.h"
#include "platform/config/Configuration.h"
#include "support/Eventually.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

/** A message bus of the test's own, which the message channel of this process is pointed at. */
class TestBus
{
public:
    TestBus()
    {
        folder.createDirectory();
        Platform::Configuration::get().ipcAddress = address();
        start();
    }
    ~TestBus()
    {
        stop();
        Platform::Configuration::get().ipcAddress = {};
        folder.deleteRecursively();
    }

    juce::String address() const { return "unix:path=" + socket().getFullPathName(); }

    void start()
    {
        std::string program = "dbus-daemon";
        std::string kind = "--session";
        std::string fork = "--nofork";
        std::string listen = ("--address=" + address()).toStdString();
        char* arguments[] = { program.data(), kind.data(), fork.data(), listen.data(), nullptr };
        ASSERT_EQ(posix_spawnp(&process, program.c_str(), nullptr, nullptr, arguments, environ), 0);
        ASSERT_TRUE(eventually([this] { return takesConnections(); }));
    }

    void stop()
    {
        if (process <= 0)
            return;
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
        process = -1;
        socket().deleteFile();
    }

    void signal(int number) const { kill(process, number); }

    JUCE_DECLARE_NON_COPYABLE(TestBus)

private:
    juce::File socket() const { return folder.getChildFile("bus"); }

    /** Its socket is there a moment before it listens. */
    bool takesConnections() const
    {
        sockaddr_un name {};
        name.sun_family = AF_UNIX;
        socket().getFullPathName().copyToUTF8(name.sun_path, sizeof name.sun_path);
        const int connection = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const bool taken = ::connect(connection, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0;
        ::close(connection);
        return taken;
    }

    const juce::File folder = juce::File::getSpecialLocation(juce::File::tempDirectory)
                                  .getChildFile("headunit-bus-" + juce::Uuid().toString());
    pid_t process = -1;
};

/** A connection that plays a program, an engine or a stranger, and keeps the calls and signals that reach it. */
class BusPeer
{
public:
    explicit BusPeer(const TestBus& target)
    {
        sd_bus* raw = nullptr;
        check(sd_bus_new(&raw));
        bus.reset(raw);
        check(sd_bus_set_address(raw, target.address().toRawUTF8()));
        check(sd_bus_set_bus_client(raw, 1));
        check(sd_bus_start(raw));
        check(sd_bus_add_filter(bus.get(), nullptr, keep, this));
    }

    void own(const char* program) { check(sd_bus_request_name(bus.get(), name(program).c_str(), 0)); }
    void release(const char* program) { check(sd_bus_release_name(bus.get(), name(program).c_str())); }
    void listen(const char* rule) { check(sd_bus_add_match(bus.get(), nullptr, rule, nullptr, nullptr)); }

    Platform::SdBusMessage newPost(const char* receiver)
    {
        sd_bus_message* raw = nullptr;
        check(sd_bus_message_new_method_call(bus.get(), &raw, name(receiver).c_str(), "/com/corvane/Endpoint",
                                             "com.corvane.Endpoint", "Post"));
        check(sd_bus_message_set_expect_reply(raw, 0));
        return Platform::SdBusMessage(raw);
    }

    /** A message without a bundle. */
    void post(const char* receiver, int what, int arg1 = 0, int arg2 = 0)
    {
        const auto message = newPost(receiver);
        check(sd_bus_message_append(message.get(), "iiia{sv}", what, arg1, arg2, 0));
        send(message);
    }

    void send(const Platform::SdBusMessage& message)
    {
        check(sd_bus_send(bus.get(), message.get(), nullptr));
        check(sd_bus_flush(bus.get()));
    }

    /** The next call or signal of this member. The message is read from its beginning. */
    Platform::SdBusMessage next(const std::string& member)
    {
        Platform::SdBusMessage found;
        eventually(
            [&]
            {
                while (sd_bus_process(bus.get(), nullptr) > 0)
                    ;
                for (auto each = heard.begin(); each != heard.end(); ++each)
                    if (sd_bus_message_get_member(each->get()) == member)
                    {
                        found = std::move(*each);
                        heard.erase(each);
                        return true;
                    }
                return false;
            });
        if (found == nullptr)
            throw std::runtime_error("no " + member + " came");
        sd_bus_message_rewind(found.get(), 1);
        return found;
    }

    sd_bus* get() const { return bus.get(); }
    static void check(int result)
    {
        if (result < 0)
            throw std::runtime_error(std::string("bus peer: ") + strerror(-result));
    }

private:
    static std::string name(const char* program) { return std::string("com.corvane.") + program; }

    static int keep(sd_bus_message* message, void* self, sd_bus_error*)
    {
        const char* sender = sd_bus_message_get_sender(message);
        if (sd_bus_message_get_member(message) == nullptr ||
            (sender != nullptr && std::string(sender) == "org.freedesktop.DBus"))
            return 0;
        static_cast<BusPeer*>(self)->heard.emplace_back(sd_bus_message_ref(message));
        return 1;
    }

    Platform::SdBus bus;
    std::vector<Platform::SdBusMessage> heard;
};
