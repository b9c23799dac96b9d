#pragma once

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>
#include <poll.h>
#include <pty.h>
#include <string>
#include <unistd.h>

/** A pseudo-terminal; the test holds the end that a device would have. */
class Terminal
{
public:
    Terminal()
    {
        char path[128] {};
        termios raw {};
        cfmakeraw(&raw);
        EXPECT_EQ(openpty(&device, &unit, path, &raw, nullptr), 0);
        name = path;
    }
    ~Terminal()
    {
        close(device);
        close(unit);
    }

    void send(const std::string& bytes) const
    {
        for (size_t sent = 0; sent < bytes.size();)
        {
            const auto count = ::write(device, bytes.data() + sent, bytes.size() - sent);
            ASSERT_GT(count, 0);
            sent += static_cast<size_t>(count);
        }
    }

    /** True when the unit writes anything within the time; the longest is one that a loaded machine does not need. */
    bool hears(int milliseconds = 60000) const
    {
        pollfd waiting { device, POLLIN, 0 };
        return poll(&waiting, 1, milliseconds) > 0;
    }

    /** Waits for so many bytes. */
    std::string receive(size_t length) const
    {
        std::string bytes;
        while (bytes.size() < length && hears())
        {
            char part[4096];
            const auto count = ::read(device, part, sizeof(part));
            if (count <= 0)
                break;
            bytes.append(part, static_cast<size_t>(count));
        }
        return bytes;
    }

    juce::String name;

private:
    int device = -1;
    int unit = -1;
};
