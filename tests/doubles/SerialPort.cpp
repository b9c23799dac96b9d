#include "platform/devices/SerialPort.h"

#include "doubles/SerialPortDouble.h"

#include <map>
#include <mutex>

namespace Platform
{

struct SerialPort::Backend
{
    explicit Backend(SerialCallBack& callBack)
        : receiver(callBack)
    {
    }

    SerialCallBack& receiver;
    juce::String name;
};

namespace
{

/** One end of a port while it is open. Closing takes the lock, so that no delivery outlives it. */
struct Delivery
{
    std::mutex lock;
    SerialCallBack* receiver = nullptr;
};

struct Line
{
    std::shared_ptr<Delivery> delivery;
    int baudRate = 0;
    juce::MemoryBlock written;
    bool openFails = false;
    int writeLimit = -1;
    std::function<void(const juce::MemoryBlock&)> writeObserver;
    std::function<void()> openObserver;
};

std::mutex lock;
std::map<juce::String, Line> lines;

/** What the action answers about the named line, under the lock. */
template <typename Action>
auto withLine(const juce::String& name, Action action)
{
    const std::lock_guard guard(lock);
    return action(lines[name]);
}

} // namespace

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
    close();
    std::function<void()> observer;
    const bool connected = withLine(name,
                                    [&](Line& line)
                                    {
                                        line.baudRate = baudRate;
                                        if (line.openFails && !awaitDevice)
                                            return false;
                                        line.delivery = std::make_shared<Delivery>();
                                        line.delivery->receiver = &backend->receiver;
                                        backend->name = name;
                                        observer = line.openObserver;
                                        return !line.openFails;
                                    });
    if (connected && observer)
        observer();
    return connected;
}

void SerialPort::close()
{
    if (!isOpen())
        return;
    const auto delivery = withLine(backend->name, [](Line& line) { return std::exchange(line.delivery, nullptr); });
    backend->name.clear();
    if (delivery == nullptr)
        return;
    const std::lock_guard guard(delivery->lock);
    delivery->receiver = nullptr;
}

bool SerialPort::isOpen() const
{
    return backend->name.isNotEmpty();
}

bool SerialPort::isConnected() const
{
    return isOpen() && withLine(backend->name, [](const Line& line) { return !line.openFails; });
}

int SerialPort::write(const void* data, int length)
{
    if (!isConnected())
        return 0;
    return withLine(backend->name,
                    [&](Line& line)
                    {
                        const int taken = line.writeLimit < 0 ? length : std::min(length, line.writeLimit);
                        line.written.append(data, static_cast<size_t>(taken));
                        if (line.writeObserver)
                            line.writeObserver({ data, static_cast<size_t>(taken) });
                        return taken;
                    });
}

namespace doubles
{

void SerialPortDouble::reset()
{
    const std::lock_guard guard(lock);
    for (auto& [name, line] : lines)
        line = Line {
            .delivery = line.delivery, .baudRate = line.baudRate, .written = {}, .writeObserver = {}, .openObserver = {}
        };
}

bool SerialPortDouble::isOpen(const juce::String& name)
{
    return withLine(name, [](const Line& line) { return line.delivery != nullptr; });
}

int SerialPortDouble::getBaudRate(const juce::String& name)
{
    return withLine(name, [](const Line& line) { return line.baudRate; });
}

void SerialPortDouble::onOpen(const juce::String& name, std::function<void()> observer)
{
    withLine(name, [&](Line& line) { line.openObserver = std::move(observer); });
}

juce::MemoryBlock SerialPortDouble::takeWritten(const juce::String& name)
{
    return withLine(name, [](Line& line) { return std::exchange(line.written, {}); });
}

void SerialPortDouble::failOpen(const juce::String& name, bool fails)
{
    const auto back = withLine(name,
                               [fails](Line& line)
                               {
                                   const bool wasAway = std::exchange(line.openFails, fails);
                                   return wasAway && !fails ? line.delivery : nullptr;
                               });
    if (back == nullptr)
        return;
    const std::lock_guard guard(back->lock);
    if (back->receiver != nullptr)
        back->receiver->onDeviceBack();
}

void SerialPortDouble::limitWrites(const juce::String& name, int bytesPerWrite)
{
    withLine(name, [bytesPerWrite](Line& line) { line.writeLimit = bytesPerWrite; });
}

void SerialPortDouble::onWrite(const juce::String& name, std::function<void(const juce::MemoryBlock&)> observer)
{
    withLine(name, [&](Line& line) { line.writeObserver = std::move(observer); });
}

bool SerialPortDouble::receive(const juce::String& name, const void* data, int length)
{
    const auto delivery = withLine(name, [](const Line& line) { return line.openFails ? nullptr : line.delivery; });
    if (delivery == nullptr)
        return false;
    const std::lock_guard guard(delivery->lock);
    if (delivery->receiver == nullptr)
        return false;
    delivery->receiver->onReceive(data, length);
    return true;
}

} // namespace doubles

} // namespace Platform
