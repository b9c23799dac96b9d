#include "platform/Lines.h"

#include "platform/Configuration.h"
#include "support/ErrorLog.h"

#include <atomic>
#include <functional>
#include <gmock/gmock.h>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

using namespace Platform;
using testing::ElementsAre;

namespace
{

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
        Packet request(64);
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

    Behaviour behaviour;
    int ending[2] {};
    std::thread thread;
    std::mutex lock;
    std::vector<Packet> requests;
};

class LinesTest : public testing::Test
{
protected:
    LinesTest()
    {
        Configuration::get().gpio = Configuration::get().i2c1 = "socket:" + path();
        Configuration::get().gpioLines = { { 32768, 7 } };
    }
    ~LinesTest() override
    {
        // Lets go of the chip of this test.
        Configuration::get() = {};
        GpioFunc::readPin(0);
        unlink(path().toRawUTF8());
    }

    juce::String path() const { return place.getFile().getFullPathName(); }

    static PacketServer::Behaviour answering(Packet reply)
    {
        return [reply](const Packet&) { return reply; };
    }

    ErrorLog log;

private:
    juce::TemporaryFile place;
};

const Packet gpioDone { 0, 0, 0, 0, 0, 0, 0, 0 };

} // namespace

TEST_F(LinesTest, GpioRequestsNameTheMappedLineOnOneConnection)
{
    PacketServer chip(path(), answering({ 0, 0, 0, 0, 1, 0, 0, 0 }));
    EXPECT_TRUE(GpioFunc::setPinFunc(32768, 32));
    EXPECT_TRUE(GpioFunc::writePin(32768, 1));
    EXPECT_EQ(GpioFunc::readPin(32856), 1);
    EXPECT_THAT(chip.takeRequests(), ElementsAre(Packet { 7, 0, 0, 0, 0, 0, 0, 0, 32, 0, 0, 0 },
                                                 Packet { 7, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0 },
                                                 Packet { 0x58, 0x80, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0 }));
    EXPECT_EQ(chip.accepted, 1);
    EXPECT_TRUE(log.take().empty());
}

TEST_F(LinesTest, ARestartedChipIsConnectedAgainWithoutLosingACall)
{
    auto chip = std::make_unique<PacketServer>(path(), answering(gpioDone));
    EXPECT_TRUE(GpioFunc::writePin(1, 1));
    chip.reset();
    chip = std::make_unique<PacketServer>(path(), answering(gpioDone));
    EXPECT_TRUE(GpioFunc::writePin(1, 0));
    EXPECT_THAT(chip->takeRequests(), ElementsAre(Packet { 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0 }));
    EXPECT_TRUE(log.take().empty());

    chip.reset();
    EXPECT_FALSE(GpioFunc::writePin(1, 1));
    EXPECT_EQ(GpioFunc::readPin(1), -1);
    EXPECT_EQ(log.take().size(), 1u) << "one line for each GPIO line that fails";
    EXPECT_FALSE(GpioFunc::writePin(2, 1));
    EXPECT_EQ(log.take().size(), 1u);

    chip = std::make_unique<PacketServer>(path(), answering(gpioDone));
    EXPECT_TRUE(GpioFunc::writePin(1, 1));
    EXPECT_TRUE(log.take().empty());
}

TEST_F(LinesTest, GpioRepliesThatAreNoSuccessFail)
{
    const Packet replies[] { { 0xfb, 0xff, 0xff, 0xff, 1, 0, 0, 0 }, { 0, 0, 0, 0 }, { 0, 0 }, Packet(9) };
    for (const auto& reply : replies)
    {
        PacketServer chip(path(), answering(reply));
        EXPECT_FALSE(GpioFunc::setPinFunc(3, 32));
        EXPECT_EQ(GpioFunc::readPin(3), -1);
        EXPECT_EQ(log.take().size(), &reply == replies ? 1u : 0u);
    }
}

TEST_F(LinesTest, I2cRequestsCarryTheEightBitAddress)
{
    PacketServer decoder(path(),
                         [](const Packet& request) {
                             return request[1] == 0 ? Packet { 0, 0, 0, 0 } : Packet { 0, 0, 0, 0, 0x48 };
                         });
    for (int round = 1; round <= 2; ++round)
    {
        I2CDevice device;
        ASSERT_TRUE(device.open("I2C1:", 10000));
        EXPECT_TRUE(device.writeRegister(0x88, 0x2f, 0xe0));
        std::uint8_t value = 0;
        EXPECT_TRUE(device.readRegister(0x88, 0x01, value));
        EXPECT_EQ(value, 0x48);
        EXPECT_THAT(decoder.takeRequests(), ElementsAre(Packet { 0x88, 0, 0x2f, 0xe0 }, Packet { 0x88, 1, 0x01 }));
        EXPECT_EQ(decoder.accepted, round);
        device.close();
        EXPECT_FALSE(device.readRegister(0x88, 0x01, value));
    }
    EXPECT_TRUE(decoder.takeRequests().empty());
}

TEST_F(LinesTest, I2cFailuresAreReportedOnceUntilTheDeviceAnswers)
{
    std::atomic<bool> broken { true };
    PacketServer decoder(path(),
                         [&](const Packet&) {
                             return broken ? Packet { 0xff, 0xff, 0xff, 0xff, 0x48 } : Packet { 0, 0, 0, 0, 0x48 };
                         });
    I2CDevice device;
    std::uint8_t value = 0x11;
    const auto poll = [&] { return device.open("I2C1:", 10000) && device.readRegister(0x88, 1, value); };
    EXPECT_FALSE(poll());
    EXPECT_FALSE(poll());
    EXPECT_EQ(value, 0x11);
    EXPECT_EQ(log.take().size(), 1u);
    broken = false;
    EXPECT_TRUE(poll());
    broken = true;
    EXPECT_FALSE(poll());
    EXPECT_EQ(log.take().size(), 1u);
}

TEST_F(LinesTest, ASilentI2cDeviceTimesOutAndItsConnectionIsNotUsedAgain)
{
    std::atomic<bool> silent { true };
    PacketServer decoder(path(),
                         [&](const Packet&) {
                             return silent ? std::nullopt : std::optional(Packet { 0, 0, 0, 0, 0x48 });
                         });
    I2CDevice device;
    std::uint8_t value = 0;
    ASSERT_TRUE(device.open("I2C1:", 50));
    EXPECT_FALSE(device.readRegister(0x8a, 1, value));
    EXPECT_EQ(log.count("timed out"), 1);
    silent = false;
    EXPECT_FALSE(device.readRegister(0x8a, 1, value)) << "a late reply could be taken for this one's";
    ASSERT_TRUE(device.open("I2C1:", 50));
    EXPECT_TRUE(device.readRegister(0x8a, 1, value));
}

TEST_F(LinesTest, WhatIsNotThereCannotBeOpened)
{
    const juce::String paths[] { "socket:" + path(), "socket:" + juce::String::repeatedString("x", 200), "/dev/null",
                                 "/dev/no-such-bus" };
    for (const auto& each : paths)
    {
        Configuration::get().gpio = Configuration::get().i2c1 = each;
        I2CDevice device;
        EXPECT_FALSE(device.open("I2C1:", 100)) << each;
        EXPECT_FALSE(device.writeRegister(0x88, 0, 0));
        EXPECT_FALSE(GpioFunc::setPinFunc(32856, 32)) << each;
        EXPECT_EQ(GpioFunc::readPin(32856), -1) << each;
    }
    EXPECT_EQ(log.count("I2C1:"), 1);
    EXPECT_EQ(log.count("line 32856"), 1);

    PacketServer bus(path(), answering(gpioDone));
    Configuration::get().i2c1 = "socket:" + path();
    I2CDevice device;
    EXPECT_FALSE(device.open("I2C2:", 100));
    EXPECT_TRUE(device.open("I2C1:", 100));
}
