#include "check/Devices.h"

#include "check/Errors.h"
#include "platform/config/Configuration.h"
#include "platform/devices/Lines.h"
#include "support/PacketServer.h"
#include "support/Terminal.h"

#include <boost/crc.hpp>
#include <gmock/gmock.h>

using namespace Check;
using Platform::Configuration;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

namespace
{

auto isRow(State state, const std::string& found, const std::string& whatToDo)
{
    return AllOf(Field("state", &Row::state, state), Field("found", &Row::found, HasSubstr(found)),
                 Field("what to do", &Row::whatToDo, HasSubstr(whatToDo)));
}

class DevicesTest : public testing::Test
{
protected:
    DevicesTest()
    {
        folder.createDirectory();
        Errors::keep();
    }
    ~DevicesTest() override
    {
        // Lets go of the chip of this test.
        Configuration::get().gpio = "/dev/null";
        Platform::GpioFunc::look(0);
        Configuration::get() = before;
        folder.deleteRecursively();
    }

    juce::String path(const char* name) const { return folder.getChildFile(name).getFullPathName(); }

    const Configuration before = Configuration::get();

private:
    const juce::File folder = juce::File::getSpecialLocation(juce::File::tempDirectory)
                                  .getChildFile("headunit-check-" + juce::Uuid().toString());
};

/** A microcontroller that says something, or nothing, whenever it hears something. */
class Microcontroller
{
public:
    explicit Microcontroller(std::string toSay)
        : says(std::move(toSay))
        , thread(
              [this]
              {
                  constexpr std::size_t heartbeatLength = 9;
                  if (terminal.receive(heartbeatLength).size() == heartbeatLength)
                      terminal.send(says);
              })
    {
        Configuration::get().mcuPort = terminal.name;
    }
    ~Microcontroller() { thread.join(); }

    Terminal terminal;

private:
    const std::string says;
    std::thread thread;
};

/** Acknowledges the first frame. */
const std::string acknowledgement { '\xA0', '\x55', 1, 9, 0, 0, 0, 0, '\xFF' };
/** The microcontroller asks for the last source. */
const std::string question { '\xA0', '\x55', 7, 8, 0, 1, 1, 5 };

} // namespace

TEST_F(DevicesTest, TheMicrocontrollerAnswersOrTheRowSaysWhereToLook)
{
    struct Case
    {
        std::string says;
        State state;
        const char* found;
        const char* whatToDo;
    };
    for (const auto& [says, state, found, whatToDo] :
         { Case { "noise" + acknowledgement, State::ok, "acknowledges a heartbeat", "" },
           Case { {}, State::missing, "0 bytes and 0 whole frames", "power and wiring" },
           Case { "\x12\x34\x56", State::missing, "3 bytes and 0 whole frames", "set mcu.baud" },
           Case { question, State::missing, "8 bytes and 1 whole frames", "only the other direction works" } })
    {
        const Microcontroller mcu(says);
        EXPECT_THAT(link(), ElementsAre(isRow(state, found, whatToDo)));
    }
    Configuration::get().mcuPort = path("ttyS7");
    EXPECT_THAT(link(),
                ElementsAre(isRow(State::missing, "ttyS7: No such file", "let mcu.port name the right device")));
}

TEST_F(DevicesTest, AUnitWithoutAWiredRemoteLacksNothing)
{
    Configuration::get().wiredRemotePort = path("ttyS8");
    EXPECT_THAT(wiredRemote(), ElementsAre(isRow(State::note, "No such file", "nothing, on a unit without one")));
    const Terminal remote;
    Configuration::get().wiredRemotePort = remote.name;
    EXPECT_THAT(wiredRemote(), ElementsAre(isRow(State::ok, remote.name.toStdString(), "")));
}

/** The only block that is written is the order to take over words, where none wait: nothing that is heard changes. */
TEST_F(DevicesTest, TheDspIsAskedWithoutChangingWhatItPlays)
{
    constexpr std::array<std::uint8_t, 3> takeOver { 0xA4, 0, 0 };
    boost::crc_xmodem_t crc;
    crc.process_bytes(takeOver.data(), takeOver.size());
    const auto checksum = static_cast<std::uint16_t>(crc.checksum());
    enum Control : std::uint8_t { write = 0x0C, read = 0x10 };

    Configuration::get().spi2 = "socket:" + path("spi");
    EXPECT_THAT(dsp(), ElementsAre(isRow(State::missing, "No such file", "let bus.spi2 name the right device")));
    std::uint8_t status = 0, spoilt = 0;
    PacketServer chip(path("spi"),
                      [&](const Packet& request)
                      {
                          Packet reply { request[0] == write ? status : std::uint8_t {}, 0, 0, 0 };
                          if (request[0] == read)
                              reply.insert(reply.end(), { static_cast<std::uint8_t>(checksum >> 8 ^ spoilt),
                                                          static_cast<std::uint8_t>(checksum) });
                          return reply;
                      });
    EXPECT_THAT(dsp(), ElementsAre(isRow(State::ok, "confirms what is written", "")));
    for (const auto& request : chip.takeRequests())
        if (request[0] == write)
        {
            EXPECT_EQ(request, (Packet { write, 0, 0x1B, 0, 0, 0xA4, 0, 0 }));
        }
    spoilt = 0xFF;
    EXPECT_THAT(dsp(), ElementsAre(isRow(State::note, "as before its start", "headunit-ctl dsp")));
    status = 5;
    EXPECT_THAT(dsp(), ElementsAre(isRow(State::missing, "the device answers 5", "1 MHz")));
}

TEST_F(DevicesTest, TheVideoDecoderIsReadOnly)
{
    Configuration::get().i2c1 = "socket:" + path("i2c");
    EXPECT_THAT(videoDecoder(), ElementsAre(isRow(State::missing, "No such file", "let bus.i2c1 name")));
    Packet reply { 0, 0, 0, 0, 0x48 };
    PacketServer decoder(path("i2c"), [&](const Packet&) { return reply; });
    EXPECT_THAT(videoDecoder(), ElementsAre(isRow(State::ok, "answers", "")));
    reply = { 0xFF, 0xFF, 0xFF, 0xFF, 0 };
    EXPECT_THAT(videoDecoder(), ElementsAre(isRow(State::note, "I2C address 0x88", "check its wiring")));
    EXPECT_THAT(decoder.takeRequests(), Each(Packet { 0x88, 1, 1 }));
}

TEST_F(DevicesTest, LinesAreLookedAtAndLeftAsTheyAre)
{
    Configuration::get().gpio = "socket:" + path("gpio");
    Configuration::get().gpioLines = { { 32778, 6 }, { 99, 1 } };
    PacketServer chip(
        path("gpio"),
        [](const Packet& request)
        {
            constexpr std::uint8_t lacking = 6;
            return Packet { request[0] == lacking ? std::uint8_t { 2 } : std::uint8_t {}, 0, 0, 0, 1, 0, 0, 0 };
        });
    const auto rows = lines();
    const auto requests = chip.takeRequests();
    constexpr std::size_t operationAt = 4;
    constexpr std::uint8_t reading = 2;
    EXPECT_THAT(requests, testing::SizeIs(5));
    for (const auto& request : requests)
        EXPECT_EQ(request[operationAt], reading);
    EXPECT_THAT(rows, ElementsAre(isRow(State::ok, "line 32768", ""), isRow(State::ok, "line 32771", ""),
                                  isRow(State::ok, "line 32772", ""),
                                  isRow(State::missing, "line 6 (start of the DSP", "bus.gpio"),
                                  isRow(State::ok, "line 32856", ""),
                                  isRow(State::note, "nothing in the engine drives line 99", "board's plan")));
}
