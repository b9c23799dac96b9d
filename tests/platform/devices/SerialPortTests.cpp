#include "platform/devices/SerialPort.h"

#include "support/ErrorLog.h"
#include "support/Eventually.h"
#include "support/Terminal.h"

#include <atomic>
#include <filesystem>
#include <gtest/gtest.h>

using namespace Platform;

namespace
{

constexpr int baudRate = 115200;

class Receiver : public SerialCallBack
{
public:
    void onReceive(const void* data, int length) override
    {
        const std::lock_guard guard(lock);
        bytes.append(static_cast<const char*>(data), static_cast<size_t>(length));
        if (forbidden)
            calledWhileForbidden = true;
    }

    void onDeviceBack() override { ++timesBack; }

    bool waitForBytes(size_t length)
    {
        return eventually([&] { return take(false).size() >= length; });
    }

    std::string take(bool remove = true)
    {
        const std::lock_guard guard(lock);
        return remove ? std::exchange(bytes, {}) : bytes;
    }

    std::atomic<int> timesBack { 0 };
    std::atomic<bool> forbidden { false };
    std::atomic<bool> calledWhileForbidden { false };

private:
    std::mutex lock;
    std::string bytes;
};

std::string pattern(size_t length)
{
    std::string bytes(length, '\0');
    // Every byte value, and no short period that a lost block could hide in.
    for (size_t index = 0; index < length; ++index)
        bytes[index] = static_cast<char>(index + index / 256);
    return bytes;
}

std::ptrdiff_t openDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

} // namespace

TEST(SerialPortTest, EveryByteValuePassesUnchangedInOrderAndInBulk)
{
    const auto bytes = pattern(64 * 1024);
    const Terminal terminal;
    Receiver receiver;
    SerialPort port(receiver);
    ASSERT_TRUE(port.open(terminal.name, baudRate));

    std::thread device([&] { terminal.send(bytes); });
    EXPECT_TRUE(receiver.waitForBytes(bytes.size()));
    device.join();
    EXPECT_TRUE(receiver.take() == bytes);

    std::string atDevice;
    std::thread reader([&] { atDevice = terminal.receive(bytes.size()); });
    EXPECT_EQ(port.write(bytes.data(), static_cast<int>(bytes.size())), static_cast<int>(bytes.size()));
    reader.join();
    EXPECT_TRUE(atDevice == bytes);
}

TEST(SerialPortTest, RefusesWhatIsNoUsablePort)
{
    const Terminal terminal;
    const juce::TemporaryFile file;
    ASSERT_TRUE(file.getFile().create());
    const struct
    {
        juce::String device;
        int baud;
    } cases[] {
        { "/dev/no-such-port", baudRate }, { "/dev/null", baudRate }, { file.getFile().getFullPathName(), baudRate },
        { terminal.name, 12345 },          { terminal.name, -1 },
    };
    for (const auto& each : cases)
    {
        ErrorLog log;
        Receiver receiver;
        SerialPort port(receiver);
        const auto descriptors = openDescriptors();
        EXPECT_FALSE(port.open(each.device, each.baud));
        EXPECT_FALSE(port.isOpen());
        EXPECT_EQ(port.write("x", 1), 0);
        EXPECT_EQ(openDescriptors(), descriptors);
        EXPECT_EQ(log.count(each.device.toStdString()), 1);
        EXPECT_EQ(log.take().size(), 1u);
    }
}

TEST(SerialPortTest, AWriteThatNobodyTakesEndsShort)
{
    const Terminal terminal;
    ErrorLog log;
    Receiver receiver;
    SerialPort port(receiver);
    ASSERT_TRUE(port.open(terminal.name, baudRate));
    const auto bytes = pattern(1024 * 1024);
    const int written = port.write(bytes.data(), static_cast<int>(bytes.size()));
    EXPECT_GT(written, 0);
    EXPECT_LT(written, static_cast<int>(bytes.size()));
    EXPECT_EQ(log.count("nobody takes the bytes"), 1);
    // What was counted is what the device finds, and the port works on.
    EXPECT_TRUE(terminal.receive(static_cast<size_t>(written)) == bytes.substr(0, static_cast<size_t>(written)));
    EXPECT_EQ(port.write("again", 5), 5);
    EXPECT_EQ(terminal.receive(5), "again");
}

TEST(SerialPortTest, ClosingEndsAStalledWriteAtOnce)
{
    const Terminal terminal;
    ErrorLog log;
    Receiver receiver;
    SerialPort port(receiver);
    ASSERT_TRUE(port.open(terminal.name, baudRate));
    std::atomic<bool> started { false };
    int written = -1;
    const auto bytes = pattern(1024 * 1024);
    std::thread writer(
        [&]
        {
            started = true;
            written = port.write(bytes.data(), static_cast<int>(bytes.size()));
        });
    while (!started)
        std::this_thread::yield();
    port.close();
    writer.join();
    EXPECT_LT(written, static_cast<int>(bytes.size()));
    EXPECT_EQ(log.count("nobody takes the bytes"), 0);
    EXPECT_EQ(port.write("x", 1), 0);
}

TEST(SerialPortTest, NothingArrivesAfterCloseAndNothingLeaks)
{
    const Terminal terminal;
    Receiver receiver;
    std::atomic<bool> done { false };
    std::thread device(
        [&]
        {
            while (!done)
                terminal.send("x");
        });
    const auto descriptors = openDescriptors();
    for (int round = 0; round < 50; ++round)
    {
        SerialPort port(receiver);
        receiver.forbidden = false;
        EXPECT_TRUE(port.open(terminal.name, baudRate));
        EXPECT_TRUE(receiver.waitForBytes(1));
        port.close();
        receiver.forbidden = true;
        receiver.take();
    }
    done = true;
    {
        // Makes room, should the last byte have met a full line.
        SerialPort drain(receiver);
        receiver.forbidden = false;
        EXPECT_TRUE(drain.open(terminal.name, baudRate));
        device.join();
    }
    EXPECT_FALSE(receiver.calledWhileForbidden);
    EXPECT_EQ(openDescriptors(), descriptors);
}

/** The companion controller is restarted: its port vanishes, and comes back as another device under the same name. */
TEST(SerialPortTest, ADeviceThatVanishesIsOpenedAgainWhenItReturns)
{
    const juce::TemporaryFile place;
    const auto link = place.getFile();
    ErrorLog log;
    Receiver receiver;
    SerialPort port(receiver);

    auto first = std::make_unique<Terminal>();
    ASSERT_TRUE(juce::File(first->name).createSymbolicLink(link, true));
    ASSERT_TRUE(port.open(link.getFullPathName(), baudRate));
    first->send("before");
    EXPECT_TRUE(receiver.waitForBytes(6));

    first.reset();
    EXPECT_TRUE(eventually([&] { return log.count("lost") == 1; }));
    EXPECT_TRUE(port.isOpen());
    EXPECT_EQ(port.write("x", 1), 0);
    EXPECT_EQ(receiver.timesBack, 0);

    auto second = std::make_unique<Terminal>();
    link.deleteFile();
    ASSERT_TRUE(juce::File(second->name).createSymbolicLink(link, true));
    receiver.take();
    second->send("after");
    EXPECT_TRUE(receiver.waitForBytes(5));
    EXPECT_EQ(receiver.take(), "after");
    EXPECT_EQ(receiver.timesBack, 1);
    EXPECT_EQ(port.write("reply", 5), 5);
    EXPECT_EQ(second->receive(5), "reply");
    EXPECT_EQ(log.take().size(), 1u);

    second.reset();
    EXPECT_TRUE(eventually([&] { return log.count("lost") == 1; }));
    port.close();
    EXPECT_FALSE(port.isOpen());
}

/** The unit starts without the device, which is plugged in later. */
TEST(SerialPortTest, AnAwaitedDeviceIsOpenedWhenItAppears)
{
    const juce::TemporaryFile place;
    ErrorLog log;
    Receiver receiver;
    SerialPort port(receiver);
    EXPECT_FALSE(port.open(place.getFile().getFullPathName(), baudRate, true));
    EXPECT_TRUE(port.isOpen());
    EXPECT_FALSE(port.isConnected());
    EXPECT_EQ(port.write("x", 1), 0);

    const Terminal terminal;
    ASSERT_TRUE(juce::File(terminal.name).createSymbolicLink(place.getFile(), true));
    EXPECT_TRUE(eventually([&] { return port.isConnected(); }));
    terminal.send("hello");
    EXPECT_TRUE(receiver.waitForBytes(5));
    EXPECT_EQ(port.write("reply", 5), 5);
    EXPECT_EQ(terminal.receive(5), "reply");
    port.close();
    EXPECT_FALSE(port.isConnected());
    EXPECT_EQ(log.take().size(), 1u);
}
