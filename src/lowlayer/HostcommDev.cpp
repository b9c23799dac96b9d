#include "lowlayer/HostcommDev.h"

#include "kernel/SystemEngine.h"
#include "platform/base/Counter.h"
#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"

#include <algorithm>
#include <utility>

namespace LowLayer
{

namespace
{

constexpr Platform::Log logger { "lowlayer\\HostcommDev", "HostcommDev" };

Platform::Counter bytesLost { "link.bytes-lost", "bytes of the microcontroller that found too many waiting" };

/** Line numbers under which the log is read and filtered. */
enum LogLine { lineSend = 103, lineReceive = 167 };

void logTraffic(LogLine line, const char* direction, const void* data, int length)
{
    if (Platform::CorvaneConfig::isSystemDebug())
        logger(line).debug(juce::String(direction) + Platform::hexPairs(data, length));
}

} // namespace

HostcommDev::~HostcommDev()
{
    // The reader thread uses the store.
    port.reset();
}

void HostcommDev::initialize()
{
    if (store == nullptr)
        store = std::make_unique<BytePoolStore>("received pieces", pieceLength);
    if (port == nullptr)
    {
        port = std::make_unique<Platform::SerialPort>(*this);
        openPort();
    }
}

void HostcommDev::onStop()
{
    if (port != nullptr)
        port->close();
}

void HostcommDev::onRelease()
{
    port.reset();
    if (store != nullptr)
        store->clear();
}

void HostcommDev::setClient(ClientCallBack* newClient)
{
    client = newClient;
}

void HostcommDev::clearClient()
{
    client = nullptr;
}

bool HostcommDev::write(const void* data, int length)
{
    if (port == nullptr || data == nullptr)
        return false;
    logTraffic(lineSend, "send: ", data, length);
    return port->write(data, length) == length;
}

void HostcommDev::reopen()
{
    if (port != nullptr)
        port->close();
    Kernel::postSystemMessage(getId(), msgReopen, 0, 0);
}

void HostcommDev::onReceive(const void* data, int length)
{
    if (data == nullptr)
        return;
    const Kernel::CauseScope cause({ Kernel::Cause::bytes, Platform::Clock::now() });
    logTraffic(lineReceive, "recv: ", data, length);
    if (!hasRoomFor(length))
        return;
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    for (int sent = 0; sent < length; sent += pieceLength)
        postPiece(bytes + sent, std::min(pieceLength, length - sent));
}

bool HostcommDev::hasRoomFor(int length)
{
    const auto waiting = Kernel::SystemEngine::getInstance()->countQueued(Kernel::hostcommDevId);
    if (waiting == 0)
        lossLogged = false;
    if (waiting < maxWaiting)
        return true;
    lostBytes += length;
    bytesLost += static_cast<std::uint64_t>(length);
    if (!std::exchange(lossLogged, true))
        logger().error("%d messages wait, %d received bytes and what follows are lost", static_cast<int>(waiting),
                       length);
    return false;
}

void HostcommDev::postPiece(const std::uint8_t* data, int length)
{
    auto buffer = store->obtain();
    buffer->assign(data, length);
    Kernel::postSystemMessage(Kernel::hostcommDevId, msgReceived, length, 0, std::move(buffer));
}

void HostcommDev::handleMessage(juce::int32 id, juce::int32 arg1, juce::int32, const Kernel::Payload& payload)
{
    if (id == msgReopen)
    {
        openPort();
    }
    else if (id == msgReceived)
    {
        if (client != nullptr)
            client->onData(hostBytesReceived, arg1, payload.get());
        if (auto* buffer = Kernel::payloadAs<BytePool>(payload))
            buffer->recycle();
    }
}

void HostcommDev::openPort()
{
    constexpr bool awaitDevice = true; // its driver may be later than the engine
    if (port != nullptr)
        port->open(Platform::CorvaneConfig::getMcuUartName(), Platform::CorvaneConfig::getMcuUartBandRate(),
                   awaitDevice);
}

} // namespace LowLayer
