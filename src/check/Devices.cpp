#include "check/Devices.h"

#include "EngineApi/HostLink.h"
#include "EngineLayer/devices/VideoDecoder.h"
#include "EngineLayer/hostlink/HostDataFormat.h"
#include "EngineLayer/hostlink/HostFrameParser.h"
#include "EngineLayer/wiredremote/WiredRemoteProtocol.h"
#include "check/Errors.h"
#include "dsp/akm/ak7738Operator.h"
#include "platform/config/Configuration.h"
#include "platform/devices/SerialPort.h"
#include "platform/devices/UnitLines.h"

#include <array>
#include <atomic>

namespace Check
{

namespace
{

using Platform::Configuration;

/** What the microcontroller says. */
class Listener : public Platform::SerialCallBack, private EngineLayer::HostFrameParser::Sink
{
public:
    void onReceive(const void* data, int length) override
    {
        bytes += length;
        parser.appendReceived(data, length, *this);
    }

    /** False when the time was over. */
    bool awaitAnswer(int limitMs) { return answered.wait(limitMs); }

    std::atomic<int> bytes { 0 }, frames { 0 };

private:
    void onAcknowledgement(int, int) override { answered.signal(); }
    void onFrame(const std::uint8_t*, int) override { ++frames; }
    void onChecksumError() override {}

    EngineLayer::HostFrameParser parser;
    Platform::Event answered { true };
};

/** A frame may be lost, the first one behind what somebody else has left on the line: it is sent again. */
bool isAnswered(Platform::SerialPort& port, Listener& listener)
{
    constexpr int attempts = 2, limitMs = 500;
    auto frame = EngineLayer::HostDataFormat::obtainFrame();
    frame->build(EngineApi::EVENT_HEAT_BEAT, std::array<std::uint8_t, 1> {});
    for (int attempt = 1; attempt <= attempts; ++attempt)
    {
        frame->setSequence(attempt);
        port.write(frame->getBytes(), frame->getFrameLength());
        if (listener.awaitAnswer(limitMs))
            return true;
    }
    return false;
}

/** What to do about a device of this machine that cannot be opened, by the reason. */
std::string howToOpen(const std::string& reason, const std::string& group, const std::string& key)
{
    if (reason.find("Permission denied") != std::string::npos)
        return "adduser headunit " + group + ", and let the service reach the device (DeviceAllow)";
    return "enable it in the board's device tree, or let " + key + " name the right device";
}

const char* wiringOf(const Listener& listener)
{
    if (listener.frames > 0)
        return "check the line from the board to the microcontroller: only the other direction works";
    if (listener.bytes > 0)
        return "set mcu.baud to the microcontroller's speed; no getty and no kernel console may sit on the port";
    return "check power and wiring of the microcontroller, and that mcu.port is its port";
}

} // namespace

Rows link()
{
    const auto& configuration = Configuration::get();
    const auto place = configuration.mcuPort.toStdString() + " at " + std::to_string(configuration.mcuBaud) + " baud";
    Listener listener;
    Platform::SerialPort port(listener);
    if (!port.open(configuration.mcuPort, configuration.mcuBaud))
    {
        const auto reason = Errors::take(place + " cannot be opened");
        return { { "microcontroller", State::missing, reason, howToOpen(reason, "dialout", "mcu.port") } };
    }
    if (isAnswered(port, listener))
        return { { "microcontroller", State::ok, place + ", acknowledges a heartbeat", {} } };
    return { { "microcontroller", State::missing,
               place + ": no acknowledgement within a second; " + std::to_string(listener.bytes) + " bytes and " +
                   std::to_string(listener.frames) + " whole frames came in",
               wiringOf(listener) } };
}

Rows wiredRemote()
{
    const auto place = Configuration::get().wiredRemotePort;
    Listener listener;
    Platform::SerialPort port(listener);
    if (port.open(place, EngineLayer::WiredRemoteProtocol::baudRate))
        return { { "wired remote", State::ok, place.toStdString() + ", which does not say whether one is there", {} } };
    return { { "wired remote", State::note, Errors::take(place.toStdString() + " cannot be opened"),
               "nothing, on a unit without one: the engine goes on looking for it (wired_remote.port)" } };
}

Rows dsp()
{
    const auto place = Configuration::get().spi2.toStdString();
    using Probe = Dsp::ak7738Operator::Probe;
    switch (Dsp::ak7738Operator::probe())
    {
    case Probe::noBus:
    {
        const auto reason = Errors::take(place + " cannot be opened");
        return { { "DSP", State::missing, reason, howToOpen(reason, "spi", "bus.spi2") } };
    }
    case Probe::noTransfer:
        return { { "DSP", State::missing, Errors::take(place + ": a transfer fails"),
                   "the bus has to take 1 MHz and words of 8 bits: look at the kernel's log" } };
    case Probe::silent:
        return { { "DSP", State::note, place + " is open, and nobody confirms what is written: as before its start",
                   "start the engine and ask \"headunit-ctl dsp\"; with failures there check start line and wiring" } };
    case Probe::confirms:
        break;
    }
    return { { "DSP", State::ok, place + ", confirms what is written", {} } };
}

Rows videoDecoder()
{
    const auto place = Configuration::get().i2c1.toStdString();
    using Probe = EngineLayer::VideoDecoder::Probe;
    switch (EngineLayer::VideoDecoder::probe())
    {
    case Probe::noBus:
    {
        const auto reason = Errors::take(place + " cannot be opened");
        return { { "video decoder", State::missing, reason, howToOpen(reason, "i2c", "bus.i2c1") } };
    }
    case Probe::silent:
        return { { "video decoder", State::note, Errors::take(place + ": no answer"),
                   "it has power once the engine has run; if it is silent then, too, check its wiring" } };
    case Probe::answers:
        break;
    }
    return { { "video decoder", State::ok, place + ", answers", {} } };
}

Rows lines()
{
    const auto& configuration = Configuration::get();
    Rows rows;
    for (const auto& [line, use] : Platform::unitLines)
    {
        const auto result = Platform::GpioFunc::look(line);
        const auto place = configuration.gpio.toStdString() + " line " + std::to_string(configuration.chipLine(line)) +
                           " (" + use + ")";
        const auto reason = result.getErrorMessage().toStdString();
        rows.push_back({ "line " + std::to_string(line), result.wasOk() ? State::ok : State::missing,
                         place + (result.wasOk() ? "" : ": " + reason),
                         result.wasOk() ? ""
                         : reason.find("used by") != std::string::npos
                             ? "take the line from its user, or name another in [gpio_lines]"
                         : reason.find("no such line") != std::string::npos
                             ? "name the line of the chip in [gpio_lines]"
                             : howToOpen(reason, "gpio", "bus.gpio") });
    }
    for (const auto& problem : Platform::lineProblems())
        rows.push_back({ "gpio_lines", State::note, problem, "compare [gpio_lines] with the board's plan" });
    return rows;
}

} // namespace Check
