#pragma once

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <juce_core/juce_core.h>
#include <mutex>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <vector>

using Packet = std::vector<std::uint8_t>;

/** A simulated device: answers each request packet with what its behaviour says, or keeps silent. */
class PacketServer
{
public:
    using Behaviour = std::function<std::optional<Packet>(const Packet&)>;

    PacketServer(const juce::String& path, Behaviour deviceBehaviour)
        : behaviour(std::move(deviceBehaviour))
    {
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        path.copyToUTF8(address.sun_path, sizeof(address.sun_path));
        unlink(address.sun_path);
        const int listener = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
        EXPECT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        EXPECT_EQ(listen(listener, 8), 0);
        EXPECT_EQ(pipe(ending), 0);
        thread = std::thread([this, listener] { serve(listener); });
    }

    ~PacketServer()
    {
        close(ending[1]);
        thread.join();
        close(ending[0]);
    }

    std::vector<Packet> takeRequests()
    {
        const std::lock_guard guard(lock);
        return std::exchange(requests, {});
    }

    std::atomic<int> accepted { 0 };

private:
    void serve(int listener)
    {
        std::vector<pollfd> waiting { { ending[0], POLLIN, 0 }, { listener, POLLIN, 0 } };
        while (poll(waiting.data(), waiting.size(), -1) >= 0 && waiting[0].revents == 0)
        {
            for (size_t index = 2; index < waiting.size(); ++index)
                if (waiting[index].revents != 0 && !answer(waiting[index].fd))
                {
                    close(waiting[index].fd);
                    waiting[index].fd = -1;
                }
            if (waiting[1].revents != 0)
            {
                ++accepted;
                waiting.push_back({ accept(listener, nullptr, nullptr), POLLIN, 0 });
            }
        }
        for (size_t index = 1; index < waiting.size(); ++index)
            close(waiting[index].fd);
    }

    bool answer(int connection)
    {
        Packet request(longestRequest);
        const auto length = recv(connection, request.data(), request.size(), 0);
        if (length <= 0)
            return false;
        request.resize(static_cast<size_t>(length));
        {
            const std::lock_guard guard(lock);
            requests.push_back(request);
        }
        if (const auto reply = behaviour(request))
            send(connection, reply->data(), reply->size(), MSG_NOSIGNAL);
        return true;
    }

    static constexpr size_t longestRequest = 256;

    Behaviour behaviour;
    int ending[2] {};
    std::thread thread;
    std::mutex lock;
    std::vector<Packet> requests;
};
