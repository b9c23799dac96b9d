#pragma once

#include "platform/base/Descriptor.h"

#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <juce_core/juce_core.h>
#include <mutex>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <vector>

inline Platform::Descriptor listenAt(const juce::String& path)
{
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    path.copyToUTF8(address.sun_path, sizeof(address.sun_path));
    Platform::Descriptor listener { socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0) };
    EXPECT_EQ(bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_EQ(listen(listener.get(), 8), 0);
    return listener;
}

/**
    A socket as the service manager has it: every connection gets a process of the program, with the connection as standard
    input, and is kept open until that process ends. Without a program connections are closed at once.
*/
class ServiceManager
{
public:
    ServiceManager(const juce::String& path, std::vector<std::string> commandLine, std::vector<std::string> environment)
        : words(std::move(commandLine))
        , variables(std::move(environment))
        , listener(listenAt(path))
    {
        EXPECT_EQ(pipe2(ending, O_CLOEXEC), 0);
        thread = std::thread([this] { serve(); });
    }

    ~ServiceManager()
    {
        close(ending[1]);
        thread.join();
        close(ending[0]);
        for (const auto& each : services)
        {
            kill(each.pid, SIGKILL);
            waitpid(each.pid, nullptr, 0);
        }
    }

private:
    struct Service
    {
        pid_t pid;
        Platform::Descriptor connection;
    };

    void serve()
    {
        pollfd waiting[] { { ending[0], POLLIN, 0 }, { listener.get(), POLLIN, 0 } };
        constexpr int lookAfterMs = 10;
        while (poll(waiting, 2, lookAfterMs) >= 0 && waiting[0].revents == 0)
        {
            if (waiting[1].revents != 0)
                start(Platform::Descriptor { accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC) });
            std::erase_if(services,
                          [](const Service& each) { return waitpid(each.pid, nullptr, WNOHANG) == each.pid; });
        }
    }

    void start(Platform::Descriptor connection)
    {
        if (words.empty())
            return;
        const auto pointers = [](std::vector<std::string>& texts)
        {
            std::vector<char*> result;
            for (auto& text : texts)
                result.push_back(text.data());
            result.push_back(nullptr);
            return result;
        };
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, connection.get(), STDIN_FILENO);
        pid_t pid = -1;
        EXPECT_EQ(
            posix_spawn(&pid, words[0].c_str(), &actions, nullptr, pointers(words).data(), pointers(variables).data()),
            0);
        posix_spawn_file_actions_destroy(&actions);
        services.push_back({ pid, std::move(connection) });
    }

    std::vector<std::string> words;
    std::vector<std::string> variables;
    Platform::Descriptor listener;
    int ending[2] {};
    std::thread thread;
    std::vector<Service> services;
};
