#include "McuDevice.h"
#include "bench/TestEquipment.h"

#include <numeric>

namespace
{

using namespace Bench;

Bytes closed(Bytes frame)
{
    frame.push_back(static_cast<std::uint8_t>(std::accumulate(frame.begin(), frame.end(), 0)));
    return frame;
}

/** As the unit sends it. */
Bytes unitFrame(std::uint8_t sequence, const Bytes& message)
{
    Bytes frame { 0xAA, 0xEE, sequence, static_cast<std::uint8_t>(message.size() + 5) };
    frame.insert(frame.end(), message.begin(), message.end());
    return closed(frame);
}

TEST(TestEquipmentFrame, hasTheBytesOfTheWire)
{
    EXPECT_EQ(equipmentFrame(1, Bytes { 0x82, 0x01 }), (Bytes { 0xFF, 0xAA, 0x01, 0x07, 0x82, 0x01, 0x34 }));
    EXPECT_EQ(equipmentFrame(1, Bytes { 0x00, 0x03, 0x00, 0x14 }),
              (Bytes { 0xFF, 0xAA, 0x01, 0x09, 0x00, 0x03, 0x00, 0x14, 0xCA }));
    const Bytes wire { 0xAA, 0xEE, 0x07, 0x0A, 0x00, 0x00, 0x0E, 0x01, 0x01, 0xB9 };
    EXPECT_EQ(parseUnitFrame(wire), (UnitTestFrame { 7, { 0x00, 0x00, 0x0E, 0x01, 0x01 } }));
}

TEST(TestEquipmentFrame, refusesEachDamage)
{
    const auto whole = unitFrame(7, { 0x82, 0x02 });
    ASSERT_TRUE(parseUnitFrame(whole));
    for (std::size_t at = 0; at < whole.size(); ++at)
    {
        auto damaged = whole;
        damaged[at] ^= 0x10;
        EXPECT_FALSE(parseUnitFrame(damaged)) << "byte " << at;
        EXPECT_FALSE(parseUnitFrame(std::span(whole).first(at))) << "cut at " << at;
    }
    // What a wrong sum does not catch.
    for (const auto& wrong : { closed({ 0xAB, 0xED, 7, 7, 0x82, 0x02 }), closed({ 0xFF, 0xAA, 7, 7, 0x82, 0x02 }),
                               closed({ 0xAA, 0xEE, 7, 8, 0x82, 0x02 }), closed({ 0xAA, 0xEE, 7, 5 }) })
        EXPECT_FALSE(parseUnitFrame(wrong)) << hex(wrong);
}

TEST(TestEquipmentFrame, isToldInWords)
{
    const std::pair<Bytes, const char*> cases[] = {
        { { 0x82, 0x00 }, "left" },
        { { 0x82, 0x01 }, "entered" },
        { { 0x82, 0x02 }, "ready" },
        { { 0, 0, 12, 0, 1 }, "key 12 done" },
        { { 0, 0, 5, 0, 0 }, "key 5 refused" },
        { { 0, 1, 10, 1 }, "source 10 1" },
        { { 0, 2, 3 }, "states trigger spare" },
        { { 0, 2, 2 }, "states spare" },
        { { 0, 2, 0 }, "states none" },
        { { 0, 3, 0, 20 }, "volume 20" },
        { { 0, 4, 3, 'A', '1', '2' }, "id A12" },
        { { 0, 4, 4, 'A', '1', '2' }, "message 00 04 04 41 31 32" },
        { { 7, 3, 'V', '2', '\n', 0xC3, 0xA9 }, "text 3 \"V2?\u00e9\"" },
        { { 7, 5 }, "text 5 \"\"" },
        { { 0x82, 0x03 }, "message 82 03" },
        { { 0x82, 0x00, 0x00 }, "message 82 00 00" },
        { { 0, 0, 5, 0 }, "message 00 00 05 00" },
        { { 7 }, "message 07" },
    };
    for (const auto& [message, text] : cases)
        EXPECT_EQ(testMessageText(message), text);
}

class TestEquipmentDevice : public McuDevice
{
protected:
    TestEquipment equipment { journal, mcu };

    /** The unit sends a message; the bytes come as they are. */
    void tell(const Bytes& bytes)
    {
        put({ ++sequence, 25, bytes });
        EXPECT_EQ(get(), McuFrame::ack(sequence));
    }

    /** The content of the equipment's next frame; whether its sum holds is in `isWhole`. */
    Bytes heard()
    {
        const auto frame = getAndAcknowledge();
        EXPECT_EQ(frame.command, 25);
        const auto& bytes = frame.data;
        if (bytes.size() < 5)
            return {};
        EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 2), (Bytes { 0xFF, 0xAA }));
        EXPECT_EQ(bytes[3], bytes.size());
        isWhole = bytes == closed(Bytes(bytes.begin(), bytes.end() - 1));
        return { bytes.begin() + 4, bytes.end() - 1 };
    }

    std::uint8_t sequence = 0;
    bool isWhole = false; ///< the sum of the frame heard last
};

const Bytes acknowledged { 0x83, 0xFF };

TEST_F(TestEquipmentDevice, sendsItsCommands)
{
    equipment.enterTestMode();
    equipment.leaveTestMode();
    equipment.pressKey(14, 1);
    equipment.requestSource(10, 1);
    equipment.requestDeviceStates();
    equipment.setVolume(20);
    equipment.setDeviceId("ABC123456");
    equipment.requestText(3);
    equipment.askAgain();
    equipment.send(Bytes(200, 0x55));
    for (const auto& expected :
         { Bytes { 0x82, 1 }, Bytes { 0x82, 0 }, Bytes { 0, 0, 14, 1 }, Bytes { 0, 1, 10, 1 }, Bytes { 0, 2 },
           Bytes { 0, 3, 0, 20 }, Bytes { 0, 4, 9, 'A', 'B', 'C', '1', '2', '3', '4', '5', '6' }, Bytes { 7, 3 },
           Bytes { 0x83, 0xFC }, Bytes(97, 0x55) })
    {
        EXPECT_EQ(heard(), expected);
        EXPECT_TRUE(isWhole);
    }
}

TEST_F(TestEquipmentDevice, acknowledgesWhatItUnderstands)
{
    tell(unitFrame(0, { 0x82, 0x02 }));
    EXPECT_EQ(heard(), acknowledged);
    EXPECT_TRUE(sees("autotest", "ready"));

    auto damaged = unitFrame(1, { 0x82, 0x01 });
    damaged.back() ^= 1;
    tell(damaged);
    EXPECT_TRUE(sees("autotest", "damaged"));
    EXPECT_EQ(equipment.state().damaged, 1u);
    tell(unitFrame(1, { 0x82, 0x01 }));
    EXPECT_EQ(heard(), acknowledged) << "of the whole frame; the damaged one has none";
    EXPECT_EQ(equipment.state().received, 2u);
    EXPECT_EQ(equipment.state().sent, 2u);
}

TEST_F(TestEquipmentDevice, holdsItsAcknowledgements)
{
    equipment.hold(true);
    tell(unitFrame(0, { 0x82, 0x02 }));
    EXPECT_TRUE(sees("autotest", "ready"));
    EXPECT_TRUE(equipment.state().unacknowledged);
    equipment.askAgain();
    EXPECT_EQ(heard(), (Bytes { 0x83, 0xFC })) << "nothing before it";
    equipment.hold(false);
    EXPECT_EQ(heard(), acknowledged) << "what waited";
    equipment.hold(false);
    equipment.requestDeviceStates();
    EXPECT_EQ(heard(), (Bytes { 0, 2 })) << "nothing waits any more";
}

TEST_F(TestEquipmentDevice, damagesWhatItWasToldTo)
{
    equipment.hold(true);
    tell(unitFrame(0, { 0x82, 0x02 }));
    EXPECT_TRUE(sees("autotest", "ready"));
    equipment.damageNext(2);
    equipment.acknowledge();
    EXPECT_EQ(heard(), acknowledged);
    EXPECT_FALSE(isWhole);
    EXPECT_TRUE(equipment.state().unacknowledged);
    equipment.hold(false);
    EXPECT_EQ(heard(), acknowledged);
    EXPECT_TRUE(isWhole) << "one that goes by itself is spared";
    for (const bool whole : { false, true })
    {
        equipment.setVolume(1);
        EXPECT_EQ(heard(), (Bytes { 0, 3, 0, 1 }));
        EXPECT_EQ(isWhole, whole);
    }
}

} // namespace
