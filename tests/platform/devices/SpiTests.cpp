#include "platform/devices/SpiDevice.h"

#include "platform/config/Configuration.h"
#include "support/ErrorLog.h"
#include "support/PacketServer.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/spi/spidev.h>
#include <sys/ioctl.h>

using namespace Platform;
using testing::ElementsAre;

namespace
{

constexpr std::array<std::uint32_t, 10> record { 1000000, 8, 10, 100, 0, 0, 1, 1, 1, 0 };

/** Stands in for the spidev driver: what its requests say, and how the driver leaves the select line. */
struct Driver
{
    static int control(unsigned long request, void* argument)
    {
        if (request == failingRequest)
            return fail();
        if (_IOC_NR(request) == _IOC_NR(SPI_IOC_MESSAGE(1)))
            return transfer(static_cast<const spi_ioc_transfer*>(argument), _IOC_SIZE(request));
        if (request == SPI_IOC_RD_MODE32)
            *static_cast<__u32*>(argument) = mode;
        else if (request == SPI_IOC_WR_MODE32)
            mode = *static_cast<const __u32*>(argument);
        else if (request == SPI_IOC_WR_MAX_SPEED_HZ)
            clockHz = *static_cast<const __u32*>(argument);
        else if (request == SPI_IOC_WR_BITS_PER_WORD)
            wordBits = *static_cast<const __u8*>(argument);
        else
            return fail();
        return 0;
    }

    /** The wire: "v" and "^" are the edges of the select line, "(2)" two bytes read. */
    static inline std::string wire;
    static inline unsigned long failingRequest = 0;
    static inline __u32 mode = 0, clockHz = 0;
    static inline __u8 wordBits = 0;

private:
    static int fail()
    {
        errno = EIO;
        return -1;
    }

    static int transfer(const spi_ioc_transfer* transfers, size_t size)
    {
        const std::span message(transfers, size / sizeof(spi_ioc_transfer));
        for (const auto& each : message)
        {
            if (!low)
                wire += "v";
            low = true;
            for (__u32 index = 0; each.tx_buf != 0 && index < each.len; ++index)
                wire +=
                    juce::String::toHexString(reinterpret_cast<const std::uint8_t*>(each.tx_buf)[index]).toStdString();
            for (__u32 index = 0; each.rx_buf != 0 && index < each.len; ++index)
                reinterpret_cast<std::uint8_t*>(each.rx_buf)[index] = static_cast<std::uint8_t>(0xA0 + index);
            if (each.rx_buf != 0)
                wire += "(" + std::to_string(each.len) + ")";
            // Between the transfers of a message `cs_change` raises the line, after the last one it keeps it low.
            low = (each.cs_change != 0) == (&each == &message.back());
            if (!low)
                wire += "^";
        }
        return 0;
    }

    static inline bool low = false;
};

class SpiTest : public testing::Test
{
protected:
    SpiTest() { use("socket:" + path()); }
    ~SpiTest() override
    {
        Configuration::get().spi2 = previous;
        unlink(path().toRawUTF8());
    }

    static void use(const juce::String& spi2) { Configuration::get().spi2 = spi2; }
    juce::String path() const { return place.getFile().getFullPathName(); }

    ErrorLog log;
    SpiDevice device;

private:
    const juce::String previous = Configuration::get().spi2;
    juce::TemporaryFile place;
};

const Packet done { 0, 0, 0, 0 };

} // namespace

// The tests link with --wrap=ioctl: only requests of spidev come here, all others go on.
extern "C" int __real_ioctl(int descriptor, unsigned long request, void* argument);
extern "C" int __wrap_ioctl(int descriptor, unsigned long request, void* argument);
extern "C" int __wrap_ioctl(int descriptor, unsigned long request, void* argument)
{
    return _IOC_TYPE(request) == SPI_IOC_MAGIC ? Driver::control(request, argument)
                                               : __real_ioctl(descriptor, request, argument);
}

/** A block as the chip's port sends it, in two chunks, and the read of its CRC. */
TEST_F(SpiTest, RequestsToASimulatedDevice)
{
    PacketServer chip(path(), [](const Packet& request)
                      { return request[0] == 0x10 ? Packet { 0, 0, 0, 0, 0xBE, 0xEF } : done; });
    const std::array<std::uint8_t, 3> prefix { 0, 0, 0x72 };
    std::array<std::uint8_t, 2> crc {};
    for (int round = 1; round <= 2; ++round)
    {
        ASSERT_TRUE(device.open("SPI2:"));
        EXPECT_TRUE(device.configure(record) && device.select(true));
        EXPECT_TRUE(device.write(Packet(123, 0x55)) && device.write(Packet { 0xAA }) && device.select(false));
        EXPECT_TRUE(device.read(prefix, crc));
        device.close();
        EXPECT_FALSE(device.isOpen() || device.select(true) || device.write(prefix) || device.read(prefix, crc));
        EXPECT_EQ(chip.accepted, round);
        Packet longest { 0x0C, 0, 0x1B, 0, 0 };
        longest.resize(longest.size() + 123, 0x55);
        EXPECT_THAT(
            chip.takeRequests(),
            ElementsAre(Packet { 4, 0, 0x1B, 0, 0x40, 0x42, 0x0F, 0, 8, 0, 0, 0, 10, 0, 0, 0, 100, 0, 0, 0, 0, 0,
                                 0, 0, 0,    0, 0,    0,    1,    0, 0, 0, 1, 0, 0,  0, 1, 0, 0,   0, 0, 0, 0, 0 },
                        Packet { 0x24, 0, 0x1B, 0, 0, 0, 0, 0 }, longest, Packet { 0x0C, 0, 0x1B, 0, 0, 0xAA },
                        Packet { 0x24, 0, 0x1B, 0, 1, 0, 0, 0 },
                        Packet { 0x10, 0, 0x1B, 0, 3, 0, 0, 0x72, 2, 0, 0, 0 }));
        EXPECT_THAT(crc, ElementsAre(0xBE, 0xEF));
    }
    EXPECT_TRUE(log.take().empty());
}

/** Each step that fails is named once until it works again, however often the device is opened. */
TEST_F(SpiTest, FailuresAreReportedOnceUntilTheyEnd)
{
    std::atomic<int> badReply { 0 };
    const Packet replies[] { done, { 0xFB, 0xFF, 0xFF, 0xFF }, { 0, 0 }, Packet(99), {} };
    PacketServer chip(path(), [&](const Packet&) { return replies[badReply]; });
    for (badReply = 1; badReply < 4; ++badReply)
        for (int round = 0; round < 3; ++round)
        {
            ASSERT_TRUE(device.open("SPI2:"));
            EXPECT_FALSE(device.write(done)) << badReply;
            EXPECT_EQ(log.take().size(), badReply == 1 && round == 0 ? 1u : 0u);
        }
    std::array<std::uint8_t, 2> buffer { 7, 7 };
    badReply = 0;
    ASSERT_TRUE(device.open("SPI2:"));
    EXPECT_TRUE(device.write(done));
    EXPECT_FALSE(device.read(done, buffer)) << "the reply holds no data";
    EXPECT_FALSE(device.read(Packet(5), buffer)) << "the prefix is too long";
    EXPECT_THAT(buffer, ElementsAre(7, 7));
    EXPECT_EQ(log.take().size(), 1u);

    for (const auto& name : { "SPI1:", "", "SPI2" })
        EXPECT_FALSE(device.open(name));
    for (const auto& each : { "socket:" + path() + "x", juce::String("/dev/no-such-bus") })
    {
        use(each);
        EXPECT_FALSE(device.open("SPI2:") || device.isOpen() || device.configure(record)) << each;
    }
    EXPECT_EQ(log.take().size(), 1u);
}

TEST_F(SpiTest, ASilentDeviceTimesOut)
{
    PacketServer chip(path(), [](const Packet&) { return std::nullopt; });
    ASSERT_TRUE(device.open("SPI2:"));
    EXPECT_FALSE(device.select(true));
    EXPECT_EQ(log.count("timed out"), 1);
    EXPECT_FALSE(device.select(false)) << "a late reply could be taken for this one's";
}

/** The select line falls once for all chunks of a block, and rises with its end, a failure or the closing. */
TEST_F(SpiTest, TheKernelsDriverHoldsTheSelectLine)
{
    use("/dev/null"); // may be opened; the driver's requests are answered here
    Driver::mode = SPI_MODE_3 | SPI_LSB_FIRST;
    ASSERT_TRUE(device.open("SPI2:"));
    EXPECT_EQ(Driver::mode, SPI_LSB_FIRST);
    EXPECT_TRUE(device.configure(record));
    EXPECT_EQ(Driver::clockHz, 1000000u);
    EXPECT_EQ(Driver::wordBits, 8);

    std::array<std::uint8_t, 2> crc {};
    EXPECT_TRUE(device.select(false) && device.select(true));
    EXPECT_TRUE(device.write(Packet { 0xDE, 0xAD }) && device.write(Packet { 0xDA }) && device.select(false));
    EXPECT_TRUE(device.select(true) && device.read(Packet { 0x11, 0x72 }, crc) && device.select(false));
    EXPECT_TRUE(device.write(Packet { 0x33 }) && device.select(false));
    EXPECT_EQ(std::exchange(Driver::wire, {}), "vdeadda^v1172(2)^v33^");
    EXPECT_THAT(crc, ElementsAre(0xA0, 0xA1));

    EXPECT_TRUE(device.select(true) && device.write(Packet { 0x44 }));
    device.close();
    EXPECT_EQ(std::exchange(Driver::wire, {}), "v44^");

    auto unknownWord = record;
    unknownWord[1] = 256;
    ASSERT_TRUE(device.open("SPI2:"));
    EXPECT_FALSE(device.configure(unknownWord));
    Driver::failingRequest = SPI_IOC_MESSAGE(1);
    EXPECT_FALSE(device.select(true) && device.write(Packet { 0x55 }));
    Driver::failingRequest = SPI_IOC_RD_MODE32;
    EXPECT_FALSE(device.open("SPI2:")) << "no spidev device";
    Driver::failingRequest = 0;
}
