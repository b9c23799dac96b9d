#include "bench/mcu/TestEquipment.h"

#include <gtest/gtest.h>
#include <numeric>

namespace
{

using namespace Bench;

Bytes closed(Bytes frame)
{
    frame.push_back(static_cast<std::uint8_t>(std::accumulate(frame.begin(), frame.end(), 0)));
    return frame;
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
    const auto whole = closed({ 0xAA, 0xEE, 7, 7, 0x82, 0x02 });
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

} // namespace
