#include "lowlayer/HostcommDev.h"

#include "support/KernelFixture.h"
#include "support/LogCapture.h"
#include "support/McuLink.h"

using namespace LowLayer;
using Platform::doubles::SerialPortDouble;

namespace
{

class CollectingClient : public ClientCallBack
{
public:
    void onData(int kind, int length, juce::ReferenceCountedObject* data) override
    {
        const auto* buffer = dynamic_cast<BytePool*>(data);
        ASSERT_NE(buffer, nullptr);
        EXPECT_EQ(kind, hostBytesReceived);
        EXPECT_EQ(length, buffer->length());
        lengths.push_back(length);
        bytes.insert(bytes.end(), buffer->dataPointer(), buffer->dataPointer() + length);
    }

    std::vector<int> lengths;
    McuLink::Bytes bytes;
};

class HostcommDevTest : public KernelFixture
{
protected:
    HostcommDevTest()
    {
        add(&device, Kernel::hostcommDevId);
        device.setClient(&client);
    }
    ~HostcommDevTest() override { Platform::Configuration::get().systemDebug = false; }

    McuLink mcu;
    CollectingClient client;
    HostcommDev& device = *HostcommDev::getInstance();
};

McuLink::Bytes counting(int count)
{
    McuLink::Bytes bytes(static_cast<std::size_t>(count));
    std::iota(bytes.begin(), bytes.end(), static_cast<std::uint8_t>(0));
    return bytes;
}

} // namespace

TEST_F(HostcommDevTest, AReadIsCutIntoPiecesThatArriveInOrder)
{
    const std::pair<int, std::vector<int>> cases[] = {
        { 0, {} }, { 1, { 1 } }, { 32, { 32 } }, { 64, { 32, 32 } }, { 70, { 32, 32, 6 } },
    };
    for (const auto& [count, pieces] : cases)
    {
        client = {};
        mcu.sendBytes(counting(count));
        EXPECT_TRUE(client.bytes.empty()) << "nothing on the reader thread";
        run();
        EXPECT_EQ(client.lengths, pieces);
        EXPECT_EQ(client.bytes, counting(count));
    }
    client = {};
    device.clearClient();
    mcu.sendBytes(counting(40));
    run();
    device.setClient(&client);
    mcu.sendBytes(counting(3));
    run();
    EXPECT_EQ(client.bytes, counting(3)) << "what came while nobody listened is gone";
}

TEST_F(HostcommDevTest, AFloodThatIsNotWorkedOffIsLostAndCounted)
{
    const LogCapture log;
    for (std::size_t i = 0; i < HostcommDev::maxWaiting; ++i)
        mcu.sendBytes(counting(32));
    mcu.sendBytes(counting(40));
    mcu.sendBytes(counting(2));
    EXPECT_EQ(device.getLostBytes(), 42);
    EXPECT_EQ(log.take().size(), 1u);
    run();
    EXPECT_EQ(client.bytes.size(), HostcommDev::maxWaiting * 32);
    mcu.sendBytes(counting(1));
    run();
    EXPECT_EQ(client.lengths.back(), 1);
}

TEST_F(HostcommDevTest, AShortWriteAndAClosedPortAreFailures)
{
    const auto bytes = counting(10);
    EXPECT_TRUE(device.write(bytes.data(), 10));
    EXPECT_FALSE(device.write(nullptr, 10));
    SerialPortDouble::limitWrites(mcu.portName(), 4);
    EXPECT_FALSE(device.write(bytes.data(), 10));
    SerialPortDouble::limitWrites(mcu.portName(), -1);

    device.reopen();
    EXPECT_FALSE(device.write(bytes.data(), 10)) << "closed until the group thread has opened it";
    run();
    EXPECT_TRUE(device.write(bytes.data(), 10));
    EXPECT_EQ(SerialPortDouble::getBaudRate(mcu.portName()), Platform::CorvaneConfig::getMcuUartBandRate());
    device.onStop();
    EXPECT_FALSE(SerialPortDouble::isOpen(mcu.portName()));
    device.onRelease();
    EXPECT_FALSE(device.write(bytes.data(), 10));
}

TEST_F(HostcommDevTest, TrafficIsLoggedInDebugOnly)
{
    const LogCapture log;
    const McuLink::Bytes bytes { 0xA0, 0x55, 0x07 };
    device.write(bytes.data(), 3);
    mcu.sendBytes(bytes);
    EXPECT_TRUE(log.take().empty());

    Platform::Configuration::get().systemDebug = true;
    device.write(bytes.data(), 3);
    mcu.sendBytes(bytes);
    const auto lines = log.take();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "send: A0 55 07");
    EXPECT_EQ(lines[1].text, "recv: A0 55 07");
}
