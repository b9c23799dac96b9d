#include "bench/network/NetworkLines.h"

#include <gmock/gmock.h>

namespace
{

using namespace Bench;
using testing::HasSubstr;

const NetworkMessage volumes { 130582, 6, unitAddress, everybody, { 0x01, 0x50, 0xF3 } };
const NetworkMessage acknowledgement { 126208, 3, unitAddress, 35, { 0x02, 0x1A, 0xFE, 0x01, 0x00, 0x03, 0x30, 0xF5 } };

NetworkLineReader::Line read(std::string_view text)
{
    return NetworkLineReader().read(text);
}

/** The same message in each form, as other tools write it, too. The last frame of a packet brings the message. */
TEST(NetworkLines, areReadAsTheyAreWritten)
{
    using namespace std::chrono;
    const auto noon = sys_days(2026y / 11 / 25) + 12h + 123ms;
    struct Case
    {
        LineForm form;
        NetworkMessage message;
        std::vector<std::string> lines;
    };
    const Case cases[] = {
        { LineForm::commas, volumes, { "2026-11-25T12:00:00.123Z,6,130582,10,255,3,01,50,f3" } },
        { LineForm::commas, acknowledgement, { "2026-11-25T12:00:00.123Z,3,126208,10,35,8,02,1a,fe,01,00,03,30,f5" } },
        { LineForm::candump, volumes, { "(1795608000.123000) can0 19FE160A#0150F3" } },
        { LineForm::candump,
          acknowledgement,
          { "(1795608000.123000) can0 0DED230A#0008021AFE010003",
            "(1795608000.123000) can0 0DED230A#0130F5FFFFFFFFFF" } },
        { LineForm::raw, volumes, { "12:00:00.123 R 19FE160A 01 50 F3" } },
        { LineForm::raw,
          acknowledgement,
          { "12:00:00.123 R 0DED230A 00 08 02 1A FE 01 00 03", "12:00:00.123 R 0DED230A 01 30 F5 FF FF FF FF FF" } },
    };
    for (const auto& [form, message, lines] : cases)
    {
        EXPECT_EQ(NetworkLineWriter().write(message, noon, form), lines);
        NetworkLineReader reader;
        NetworkLineReader::Line line;
        for (const auto& each : lines)
        {
            EXPECT_FALSE(line.message) << each;
            line = reader.read(each);
            EXPECT_EQ(line.error, "");
        }
        EXPECT_EQ(line.message, message);
        EXPECT_EQ(line.time, form == LineForm::raw ? NetworkTime(12h + 123ms) : noon);
        EXPECT_EQ(reader.incomplete(), 0u);
    }
    for (const auto* same :
         { "2026-11-25-12:00:00.123,6,130582,10,255,3,01,50,F3\r",
           "  2026-11-25 12:00:00.123456Z,6,130582,10,255,3,01,50,f3 ",
           "2026-11-25T12:00:00.123Z,6,130582,10,35,3,01,50,f3", "(1795608000.123456)  slcan0 19fe160a#0150f3",
           "12:00:00.123 T 19fe160a 01 50 f3\r", "19FE160A 01 50 F3" })
        EXPECT_EQ(read(same).message, volumes) << read(same).error;
    EXPECT_EQ(read("2026-11-25T12:00:00Z,6,59904,35,10,0").message, (NetworkMessage { 59904, 6, 35, 10, {} }));
    EXPECT_EQ(read("18EA0A23").message, (NetworkMessage { 59904, 6, 35, 10, {} }));
    for (const auto* nothing : { "", "\r\n", "# 2026" })
        EXPECT_FALSE(read(nothing).message || !read(nothing).error.empty());
}

/** Each lie has its reason, which never grows with the line. */
TEST(NetworkLines, areRefusedWhenTheyLie)
{
    const std::string time = "2026-11-25T12:00:00Z,", head = time + "6,130582,10,255,";
    const std::pair<std::string, const char*> cases[] = {
        { head + "2,01,50,f3", "length 2, but 3 bytes" },
        { head + "4,01,50,f3", "length 4, but 3 bytes" },
        { head + "3,01,50,1f3", "'1f3' is no byte" },
        { head + "3,01,50,-1", "'-1' is no byte" },
        { head + "3,01,50,", "'' is no byte" },
        { head + "3,01," + std::string(900, '\x01'), "'????????????????????????...' is no byte" },
        { head + "0,", "'' is no byte" },
        { head + "-1", "no length" },
        { head, "no length" },
        { time + "8,1,10,255,1,01", "no priority from 0 to 7" },
        { time + "6,262144,10,255,1,01", "no PGN from 0 to 262143" },
        { time + "6,1,256,255,1,01", "no source" },
        { time + "6,1,10,256,1,01", "no destination" },
        { "2026-02-30T12:00:00Z,6,1,10,255,1,01", "no time" },
        { "2026-11-25T24:00:00Z,6,1,10,255,1,01", "no time" },
        { "2026-11-25T12:00:00.Z,6,1,10,255,1,01", "no time" },
        { "(1764072000.) can0 19FE160A#01", "no time such as (1764072000.123000)" },
        { "(99999999999999) can0 19FE160A#01", "no time such as (1764072000.123000)" },
        { "(1.5) can0 123#01", "no identifier" },
        { "(1.5) can0 3FFFFFFF#01", "no identifier" },
        { "(1.5) can0", "no identifier" },
        { "(1.5) can0 19FE160A#015", "'5' is no byte" },
        { "(1.5) can0 19FE160A#R", "'R' is no byte" },
        { "(1.5) can0 19FE160A#010203040506070809", "a frame of 9 bytes" },
        { "25:00:00.000 R 19FE160A 01", "no time such as 12:00:00.123" },
        { "12:00:00.000 X 19FE160A 01", "'X' is no direction" },
        { "12:00:00.000 R 19FE160A 01  02", "'' is no byte" },
        { "nonsense", "no identifier" },
        { "0DED0A23", "an empty frame of 126208 from 35" },
        { "0DED0A23 00", "a first frame of 126208 from 35 without a length" },
        { "0DED0A23 00 E0 01 02", "a first frame of 126208 from 35 without a length" },
        { "0DED0A23 01 02", "frame 1 of 126208 from 35 without those before it" },
    };
    for (const auto& [line, reason] : cases)
    {
        EXPECT_THAT(read(line).error, HasSubstr(reason)) << line;
        EXPECT_LT(read(line).error.size(), 100u);
        EXPECT_FALSE(read(line).message) << line;
    }
    std::string bytes;
    for (int count = 1; count <= 224; ++count)
    {
        bytes += ",00";
        EXPECT_EQ(read(head + std::to_string(count) + bytes).error.empty(), count <= 223);
    }
}

/** Two displays speak at once, one begins anew, and one frame is lost on the way. */
TEST(FastPackets, areWholeOrNot)
{
    const auto packet = [](int source, std::size_t size, unsigned sequence)
    {
        NetworkMessage message { 126208, 3, source, unitAddress, Bytes(size) };
        for (std::size_t i = 0; i < size; ++i)
            message.data[i] = static_cast<std::uint8_t>(i + static_cast<std::size_t>(source));
        return std::pair(message, framesOf(message, sequence));
    };
    FastPackets packets;
    for (const std::size_t size : { 0u, 6u, 7u, 13u, 14u, 223u })
    {
        const auto [one, framesOfOne] = packet(35, size, 7);
        const auto [other, framesOfOther] = packet(36, size, 7);
        EXPECT_EQ(framesOfOne.size(), size <= 6 ? 1 : 1 + (size - 6 + 6) / 7);
        FastPackets::Outcome first, second;
        for (std::size_t i = 0; i < framesOfOne.size(); ++i)
        {
            EXPECT_EQ(framesOfOne[i].data.size(), longestFrame);
            EXPECT_FALSE(first.message || second.message);
            first = packets.add(framesOfOne[i]);
            second = packets.add(framesOfOther[i]);
        }
        EXPECT_EQ(first.message, one);
        EXPECT_EQ(second.message, other);
    }
    EXPECT_EQ(packets.incomplete(), 0u);

    const auto [lost, framesOfLost] = packet(35, 20, 1);
    const auto [next, framesOfNext] = packet(35, 20, 2);
    packets.add(framesOfLost[0]);
    EXPECT_NE(packets.add(framesOfLost[2]).error, "") << "the second is missing";
    packets.add(framesOfLost[0]);
    EXPECT_NE(packets.add(framesOfNext[1]).error, "") << "it is of another packet";
    packets.add(framesOfLost[0]);
    packets.add(framesOfNext[0]);
    packets.add(framesOfNext[1]);
    EXPECT_EQ(packets.add(framesOfNext[2]).message, next);
    EXPECT_EQ(packets.incomplete(), 3u);

    for (int source = 0; source < 250; ++source)
        packets.add(packet(source, 20, 1).second[0]);
    EXPECT_EQ(packets.add(packet(0, 20, 1).second[1]).message, std::nullopt) << "given up for the others";
    EXPECT_EQ(packets.incomplete(), 253u);
}

} // namespace
