#include "platform/devices/UnitLines.h"

#include "platform/config/Configuration.h"
#include "support/ErrorLog.h"
#include "support/PacketServer.h"

#include <atomic>
#include <gmock/gmock.h>
#include <unistd.h>

using namespace Platform;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

namespace
{

class LinesTest : public testing::Test
{
protected:
    LinesTest()
    {
        Configuration::get().gpio = Configuration::get().i2c1 = "socket:" + path();
        Configuration::get().gpioLines = { { remoteTransmitLine, 7 } };
    }
    ~LinesTest() override
    {
        // Lets go of the chip of this test.
        Configuration::get().gpio = "/dev/null";
        GpioFunc::writePin(0, 0);
        Configuration::get() = {};
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
    PacketServer chip(path(), answering(gpioDone));
    EXPECT_TRUE(GpioFunc::setPinFunc(remoteTransmitLine, 32));
    EXPECT_TRUE(GpioFunc::writePin(remoteTransmitLine, 1));
    EXPECT_TRUE(GpioFunc::writePin(output1Line, 0));
    EXPECT_THAT(chip.takeRequests(), ElementsAre(Packet { 7, 0, 0, 0, 0, 0, 0, 0, 32, 0, 0, 0 },
                                                 Packet { 7, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0 },
                                                 Packet { 0x58, 0x80, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0 }));
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
    EXPECT_FALSE(GpioFunc::setPinFunc(1, 32));
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
        EXPECT_FALSE(GpioFunc::writePin(3, 1));
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
        EXPECT_FALSE(GpioFunc::setPinFunc(output1Line, 32)) << each;
        EXPECT_FALSE(GpioFunc::writePin(output1Line, 1)) << each;
    }
    EXPECT_EQ(log.count("I2C1:"), 1);
    EXPECT_EQ(log.count("line 32856"), 1);

    PacketServer bus(path(), answering(gpioDone));
    Configuration::get().i2c1 = "socket:" + path();
    I2CDevice device;
    EXPECT_FALSE(device.open("I2C2:", 100));
    EXPECT_TRUE(device.open("I2C1:", 100));
}

/** A board whose configuration lacks lines, or has one too many, is told so; a simulated chip has every number. */
TEST_F(LinesTest, LinesThatAreNotMappedOrThatNothingDrivesAreNamed)
{
    EXPECT_THAT(lineProblems(), ElementsAre());
    Configuration::get().gpioLines[4] = 5;
    EXPECT_THAT(lineProblems(), ElementsAre("gpio_lines.4 = 5: nothing in the engine drives line 4"));

    Configuration::get().gpio = "/dev/gpiochip3";
    Configuration::get().gpioLines = {};
    EXPECT_THAT(lineProblems(), SizeIs(5));
    for (const auto& each : unitLines)
        Configuration::get().gpioLines[each.line] = each.line % 100;
    EXPECT_THAT(lineProblems(), ElementsAre());
    Configuration::get().gpioLines.erase(dspStartLine);
    EXPECT_THAT(lineProblems(), ElementsAre(HasSubstr("which line of /dev/gpiochip3 is 32778 (start of the DSP")));
}
