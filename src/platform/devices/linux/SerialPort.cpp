#if defined(__SANITIZE_THREAD__)
// Fences of Asio's completion handlers, which the sanitizer does not follow; none of them runs here. The setting counts
// where the fence stands, so it comes before the headers.
#pragma GCC diagnostic ignored "-Wtsan"
#endif

#include "platform/devices/SerialPort.h"

#include "platform/base/Logger.h"
#include "platform/base/Threads.h"
#include "platform/base/WakeUp.h"
#include "platform/config/Configuration.h"
#include "platform/record/Recorder.h"

#include <array>
#include <asio/io_context.hpp>
#include <asio/serial_port.hpp>
#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <thread>

namespace Platform
{

namespace
{

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr Log logger { "platform/SerialPort", "SerialPort" };

/** The unit's name of the wired remote's port. */
constexpr const char* wiredRemoteName = "COM5:";

/** A write that moves nothing for so long has no reader at the other end. */
constexpr milliseconds writeStall = 1000ms;
constexpr milliseconds shortestRetry = 100ms;
constexpr milliseconds longestRetry = 2000ms;
constexpr milliseconds forever = -1ms;
constexpr size_t largestRead = 4096;

juce::String deviceOf(const juce::String& name)
{
    return name == wiredRemoteName ? Configuration::get().wiredRemotePort : name;
}

juce::String errnoText(int error)
{
    return std::generic_category().message(error);
}

} // namespace

/**
    Asio opens and sets up the port; reading and writing wait in `poll`, together with the wake-up that ends them, so
    the io_context never runs. The reader thread alone replaces the port while it runs.
*/
struct SerialPort::Backend
{
    explicit Backend(SerialCallBack& callBack)
        : receiver(callBack)
    {
    }

    bool open(const juce::String& name, int baudRate, bool awaitDevice);
    void close();
    int write(const char* bytes, int length);

    std::atomic<bool> opened { false };
    std::atomic<bool> connected { false };
    juce::String portName; ///< as it was opened

private:
    enum class Wait { ready, closing, timeout };

    Wait waitFor(int descriptor, short events, milliseconds limit) const;
    juce::Result openPort();
    void dropPort();
    void run();
    bool receiveUntilLost();
    bool reopen();

    SerialCallBack& receiver;
    juce::String device;
    int baud = 0;

    asio::io_context context;
    std::mutex portLock; ///< held while the port is written to or replaced
    asio::serial_port port { context };

    WakeUp closing;
    std::jthread reader;
    milliseconds retry = shortestRetry;
    bool lossReported = false;
};

bool SerialPort::Backend::open(const juce::String& name, int baudRate, bool awaitDevice)
{
    close();
    portName = name;
    device = deviceOf(name);
    baud = baudRate;
    const auto result = openPort();
    if (result.failed())
    {
        logger().error("cannot open " + device + ": " + result.getErrorMessage());
        if (!awaitDevice)
            return false;
    }
    closing.clear();
    retry = shortestRetry;
    lossReported = result.failed();
    opened = true;
    reader = std::jthread([this] { run(); });
    return result.wasOk();
}

void SerialPort::Backend::close()
{
    if (!opened.exchange(false))
        return;
    closing.set();
    reader.join();
    dropPort();
}

juce::Result SerialPort::Backend::openPort()
{
    asio::error_code error;
    asio::serial_port candidate(context);
    // Opened non-blocking, without becoming the controlling terminal, and raw.
    candidate.open(device.toStdString(), error);
    if (error)
        return juce::Result::fail(error.message());
    fcntl(candidate.native_handle(), F_SETFD, FD_CLOEXEC);

    using Port = asio::serial_port_base;
    const auto set = [&candidate, &error](const auto& option)
    {
        candidate.set_option(option, error);
        return !error;
    };
    if (!set(Port::baud_rate(static_cast<unsigned>(baud))))
        return juce::Result::fail(juce::String(baud) + " baud: " + error.message());
    if (!set(Port::character_size(8)) || !set(Port::parity(Port::parity::none)) ||
        !set(Port::stop_bits(Port::stop_bits::one)) || !set(Port::flow_control(Port::flow_control::none)))
        return juce::Result::fail(error.message());

    const std::lock_guard guard(portLock);
    port = std::move(candidate);
    connected = true;
    return juce::Result::ok();
}

void SerialPort::Backend::dropPort()
{
    const std::lock_guard guard(portLock);
    connected = false;
    asio::error_code ignored; // Whatever close says, the descriptor is gone.
    port.close(ignored);
}

SerialPort::Backend::Wait SerialPort::Backend::waitFor(int descriptor, short events, milliseconds limit) const
{
    std::array<pollfd, 2> waiting { { { closing.getDescriptor(), POLLIN, 0 }, { descriptor, events, 0 } } };
    while (poll(waiting.data(), waiting.size(), static_cast<int>(limit.count())) < 0 && errno == EINTR)
    {
    }
    if (waiting[0].revents != 0)
        return Wait::closing;
    return waiting[1].revents != 0 ? Wait::ready : Wait::timeout;
}

void SerialPort::Backend::run()
{
    enterThread("serial");
    if (!connected && !reopen())
        return;
    while (receiveUntilLost())
    {
        dropPort();
        if (!reopen())
            return;
    }
}

/** False when the port is being closed. */
bool SerialPort::Backend::receiveUntilLost()
{
    std::array<char, largestRead> buffer;
    const int descriptor = port.native_handle();
    while (waitFor(descriptor, POLLIN, forever) != Wait::closing)
    {
        const auto count = ::read(descriptor, buffer.data(), buffer.size());
        if (count > 0)
        {
            retry = shortestRetry;
            lossReported = false;
            recordStep(Step::portBytes, portName, std::string_view(buffer.data(), static_cast<std::size_t>(count)));
            receiver.onReceive(buffer.data(), static_cast<int>(count));
            continue;
        }
        if (count < 0 && (errno == EAGAIN || errno == EINTR))
            continue;
        const auto reason = count == 0 ? juce::String("end of file") : errnoText(errno);
        // A device that comes and goes without a byte in between is reported once.
        if (!std::exchange(lossReported, true))
            logger().error("lost " + device + " (" + reason + "), trying to open it again");
        return true;
    }
    return false;
}

/** Tries again until the device is there; false when the port is being closed. */
bool SerialPort::Backend::reopen()
{
    while (waitFor(-1, 0, retry) != Wait::closing)
    {
        retry = std::min(retry * 2, longestRetry);
        if (openPort().failed())
            continue;
        logger().info(device + " is open now");
        recordStep(Step::portBack, portName);
        receiver.onDeviceBack();
        return true;
    }
    return false;
}

int SerialPort::Backend::write(const char* bytes, int length)
{
    const std::lock_guard guard(portLock);
    if (!opened || !port.is_open())
        return 0;
    const int descriptor = port.native_handle();
    int done = 0;
    while (done < length)
    {
        const auto count = ::write(descriptor, bytes + done, static_cast<size_t>(length - done));
        if (count >= 0)
        {
            done += static_cast<int>(count);
            continue;
        }
        const int error = errno;
        if (error == EINTR)
            continue;
        juce::String reason = errnoText(error);
        if (error == EAGAIN)
        {
            const auto outcome = waitFor(descriptor, POLLOUT, writeStall);
            if (outcome == Wait::ready)
                continue;
            reason = outcome == Wait::closing ? "closed meanwhile" : "nobody takes the bytes";
        }
        logger().error(device + ": " + juce::String(done) + " of " + juce::String(length) +
                       " bytes written: " + reason);
        break;
    }
    return done;
}

SerialPort::SerialPort(SerialCallBack& receiver)
    : backend(std::make_unique<Backend>(receiver))
{
}

SerialPort::~SerialPort()
{
    close();
}

bool SerialPort::open(const juce::String& name, int baudRate, bool awaitDevice)
{
    return recorded(
        Step::portOpen, [&] { return backend->open(name, baudRate, awaitDevice); }, name, baudRate, awaitDevice);
}

void SerialPort::close()
{
    if (!backend->opened)
        return;
    backend->close();
    recordStep(Step::portClose, backend->portName, true);
}

bool SerialPort::isOpen() const
{
    return backend->opened;
}

bool SerialPort::isConnected() const
{
    return recorded(
        Step::portConnected, [&] { return backend->connected.load(); }, backend->portName);
}

int SerialPort::write(const void* data, int length)
{
    const auto* bytes = static_cast<const char*>(data);
    return recorded(
        Step::portWrite, [&] { return backend->write(bytes, length); }, backend->portName,
        std::string_view(bytes, static_cast<std::size_t>(std::max(0, length))));
}

} // namespace Platform
